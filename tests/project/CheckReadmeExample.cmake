# Fails unless the first C++ block of README is the body of main in EXAMPLE, a file that is built and run: the same bytes
# but for the indentation.
cmake_minimum_required(VERSION 3.25)

# Sets `result` to the text between the first `opening` and the next `closing`, or to nothing.
function(text_between result text opening closing)
  set(${result} "" PARENT_SCOPE)
  string(FIND "${text}" "${opening}" start)
  if(NOT start EQUAL -1)
    string(LENGTH "${opening}" length)
    math(EXPR start "${start} + ${length}")
    string(SUBSTRING "${text}" ${start} -1 text)
    string(FIND "${text}" "${closing}" end)
    string(SUBSTRING "${text}" 0 ${end} text)
    set(${result} "${text}" PARENT_SCOPE)
  endif()
endfunction()

file(READ "${README}" readme)
file(READ "${EXAMPLE}" example)
text_between(block "${readme}" "```cpp\n" "```")
text_between(body "${example}" "int main()\n{\n" "\n}\n")
string(REGEX REPLACE "\n    " "\n" body "\n${body}\n")
if(block STREQUAL "" OR NOT body STREQUAL "\n${block}")
  message(FATAL_ERROR "the C++ block of ${README} differs from the body of main in ${EXAMPLE}")
endif()
