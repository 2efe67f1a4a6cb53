# Language, warnings and sanitizers, the same for every target of the project.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
# `autogen` makes all that moc makes, without compiling anything: scripts/tidy needs no more.
set(CMAKE_GLOBAL_AUTOGEN_TARGET ON)

# One folder for all programs and libraries, so that a program in the build tree finds the libraries beside it.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

set(TANDRY_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them: address,undefined or thread")
option(TANDRY_COVERAGE "Build with coverage counters" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_compile_options(-Wno-gnu-zero-variadic-macro-arguments) # Qt's logging macros
endif()
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
                        QT_NO_FOREACH QT_NO_KEYWORDS QT_DEPRECATED_WARNINGS)

if(TANDRY_SANITIZE)
  add_compile_options(-fsanitize=${TANDRY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TANDRY_SANITIZE})
endif()

if(TANDRY_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
