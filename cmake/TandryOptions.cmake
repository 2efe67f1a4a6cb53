# The options of the project, and the language, warnings and sanitizers of all its targets.

include(CMakeDependentOption)

# A project that includes this one gets the libraries, and nothing else that it does not ask for.
option(TANDRY_BUILD_TOOLS "Build tandryctl" ${PROJECT_IS_TOP_LEVEL})
# It needs Qt Widgets, and shows what the tools' library finds.
cmake_dependent_option(TANDRY_BUILD_VIEWER "Build tandry-viewer; takes Qt Widgets" ${PROJECT_IS_TOP_LEVEL} TANDRY_BUILD_TOOLS OFF)
# Nothing else needs PostgreSQL.
option(TANDRY_BUILD_POSTGRES "Build the store on PostgreSQL; takes libpq" OFF)
option(TANDRY_BUILD_QML "Build the QML module; it is left out without Qt's development files for QML" ${PROJECT_IS_TOP_LEVEL})
option(TANDRY_INSTALL "Install what is built" ${PROJECT_IS_TOP_LEVEL})
# For work on this project itself; the presets switch them on.
cmake_dependent_option(TANDRY_BUILD_TESTS "Build the tests" OFF PROJECT_IS_TOP_LEVEL OFF)
cmake_dependent_option(TANDRY_BUILD_EXAMPLES "Build the example clients" OFF PROJECT_IS_TOP_LEVEL OFF)
cmake_dependent_option(TANDRY_BUILD_BENCHMARKS "Build the benchmarks" OFF PROJECT_IS_TOP_LEVEL OFF)
cmake_dependent_option(TANDRY_BUILD_FUZZERS "Build the fuzzers; takes clang" OFF PROJECT_IS_TOP_LEVEL OFF)
cmake_dependent_option(TANDRY_WARNINGS_AS_ERRORS "Fail on warnings" ${TANDRY_BUILD_TESTS} PROJECT_IS_TOP_LEVEL OFF)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)

if(PROJECT_IS_TOP_LEVEL)
  # `autogen` makes all that moc makes, without compiling anything: scripts/tidy needs no more.
  set(CMAKE_GLOBAL_AUTOGEN_TARGET ON)

  # One folder for all programs and libraries, so that they are easy to find in the build tree.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

  get_property(multiConfiguration GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(NOT CMAKE_BUILD_TYPE AND NOT multiConfiguration)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
  endif()

  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_compile_options(-Wno-gnu-zero-variadic-macro-arguments) # Qt's logging macros
  endif()
endif()
# The preset dev compiles each source alone, with the warnings that this takes away: among sources that are compiled at once
# the first ones count as headers, and their names reach into the next ones.
macro(tandry_join_sources)
  set(CMAKE_UNITY_BUILD ON)
  add_compile_options(-Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endmacro()
if(CMAKE_UNITY_BUILD)
  tandry_join_sources()
endif()
if(TANDRY_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()

set(TANDRY_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them: address,undefined or thread")
option(TANDRY_COVERAGE "Build with coverage counters" OFF)

add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
                        QT_NO_FOREACH QT_NO_KEYWORDS QT_DEPRECATED_WARNINGS)

# Sizes and times of files have 64 bits everywhere; no public header names their types.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

if(TANDRY_SANITIZE)
  add_compile_options(-fsanitize=${TANDRY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TANDRY_SANITIZE})
endif()
# For programs with windows: Qt's platform plugins do not free their screens.
set(TANDRY_WINDOW_ENVIRONMENT ASAN_OPTIONS=detect_leaks=0)

if(TANDRY_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
