# Installs the build into PREFIX, which is emptied first.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${PREFIX}")
unset(ENV{DESTDIR})
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}" COMMAND_ERROR_IS_FATAL ANY)
