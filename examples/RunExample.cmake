# Runs PROGRAM with ARGUMENTS in the emptied folder SCRATCH, and fails unless its output equals the file EXPECTED.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}")
execute_process(COMMAND "${PROGRAM}" ${ARGUMENTS} WORKING_DIRECTORY "${SCRATCH}"
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "ended with ${status}:\n${errors}")
endif()
file(READ "${EXPECTED}" expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "printed\n${output}instead of\n${expected}")
endif()
file(REMOVE_RECURSE "${SCRATCH}")
