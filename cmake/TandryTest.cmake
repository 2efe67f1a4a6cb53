# The test files of a list that hold cases with threads, and what goes with them: the thread sanitizer runs nothing else.
function(tandry_with_threads result)
  set(kept)
  foreach(source IN LISTS ARGN)
    file(STRINGS "${source}" cases REGEX "^TEST.*Thread")
    if(cases)
      list(APPEND kept "${source}")
    endif()
  endforeach()
  if(kept)
    set(helpers ${ARGN})
    list(FILTER helpers EXCLUDE REGEX "Test\\.cpp$")
    list(APPEND kept ${helpers})
  endif()
  set(${result} "${kept}" PARENT_SCOPE)
endfunction()

# tandry_test(<name> [PROCESSES] SOURCES <file>... [LIBRARIES <target>...] [ALONE <pattern>...] [SLOW <pattern>...]
#   [TIMEOUT <seconds>] [APPLICATION <class>])
#
# A test program. CTest runs each suite in one process, its cases in random order: a failed run prints the seed, and
# GTEST_RANDOM_SEED repeats it. A case that ALONE matches, because it changes its process, has one to itself. Cases that
# SLOW matches are labelled `slow`: scripts/test leaves them out. Patterns are regular expressions, held against
# `Suite.Case`; `.` matches all, and then scripts/test does not build the program either. Cases with "Thread" in their name
# or their suite's are what runs under the thread sanitizer. With PROCESSES, for a program that starts many processes, all
# cases are labelled `processes`: the address sanitizer's run leaves them out and does not build the program.
#
# APPLICATION names the class of Qt's application object where that is not QCoreApplication, for tests with windows.
#
# The time zone is one with summer time, so that a conversion where there should be none shows, and the hash seed is
# fixed.
function(tandry_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "PROCESSES" "APPLICATION;TIMEOUT" "SOURCES;LIBRARIES;ALONE;SLOW")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(TANDRY_SANITIZE)
    # A suite is one process, and one that forks costs many times as much under a sanitizer.
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 6")
  endif()

  foreach(source IN LISTS arg_SOURCES)
    set_property(GLOBAL APPEND PROPERTY TANDRY_TEST_SOURCES "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
  endforeach()

  set(suites all)
  if(TANDRY_SANITIZE STREQUAL "thread")
    set(suites threads)
    tandry_with_threads(sources ${arg_SOURCES})
    if(NOT sources)
      add_executable(${name} EXCLUDE_FROM_ALL ${arg_SOURCES})
      return()
    endif()
    set(arg_SOURCES ${sources})
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE TandryTestSupport ${arg_LIBRARIES})
  set(environment TZ=Europe/Paris QT_HASH_SEED=0 QT_LOGGING_RULES= LC_ALL=C.UTF-8 GTEST_BRIEF=1 GTEST_SHUFFLE=1)
  if(arg_APPLICATION)
    list(APPEND environment ${TANDRY_WINDOW_ENVIRONMENT})
    set(main "${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp")
    target_sources(${name} PRIVATE "${main}")
    set_source_files_properties("${main}" PROPERTIES
      COMPILE_DEFINITIONS TANDRY_TEST_APPLICATION=${arg_APPLICATION}
      SKIP_UNITY_BUILD_INCLUSION ON)
  endif()
  if(NOT arg_SLOW STREQUAL ".")
    add_dependencies(quick_tests ${name})
  endif()
  set(labels ${name})
  if(arg_PROCESSES)
    list(APPEND labels processes)
  else()
    add_dependencies(asan_tests ${name})
  endif()
  # Optimising the cases themselves gains nothing but a longer build.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Debug>:-O0>)

  foreach(patterns IN ITEMS arg_ALONE arg_SLOW)
    list(TRANSFORM ${patterns} REPLACE "(.+)" "[[\\1]]")
    list(JOIN ${patterns} " " ${patterns})
  endforeach()
  file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${name}_suites.cmake" CONTENT
"include([[${PROJECT_SOURCE_DIR}/cmake/TandrySuites.cmake]])
tandry_suites(${name} PATH [[$<TARGET_FILE:${name}>]] SUITES_OF ${suites}
  LABELS ${labels}
  ALONE ${arg_ALONE}
  SLOW ${arg_SLOW}
  PROPERTIES
    TIMEOUT ${arg_TIMEOUT}
    ENVIRONMENT \"${environment}\")
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}_suites.cmake")
endfunction()
