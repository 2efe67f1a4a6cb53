include(GoogleTest)

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

# tandry_test(<name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...] [TIMEOUT <seconds>])
#
# A test program whose cases CTest runs one by one, in any order. The time zone is one with summer time, so that a
# conversion where there should be none shows, and the hash seed is fixed. A case with "Thread" in its name, or in its
# suite's, is labelled `threads` and so runs under the thread sanitizer too.
function(tandry_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()

  foreach(source IN LISTS arg_SOURCES)
    set_property(GLOBAL APPEND PROPERTY TANDRY_TEST_SOURCES "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
  endforeach()

  if(TANDRY_SANITIZE STREQUAL "thread")
    tandry_with_threads(sources ${arg_SOURCES})
    if(NOT sources)
      add_executable(${name} EXCLUDE_FROM_ALL ${arg_SOURCES})
      return()
    endif()
    set(arg_SOURCES ${sources})
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE TandryTestSupport ${arg_LIBRARIES})
  # Optimising the cases themselves gains nothing but a longer build.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Debug>:-O0>)
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    NO_PRETTY_VALUES
    TEST_LIST discovered
    PROPERTIES TIMEOUT ${arg_TIMEOUT})

  # The command above cuts a property that is a list to its first element, so these are set once the cases are known.
  set(properties "${CMAKE_CURRENT_BINARY_DIR}/${name}_properties.cmake")
  file(CONFIGURE OUTPUT "${properties}" @ONLY CONTENT [[
foreach(case IN LISTS discovered)
  set(labels @name@ @arg_LABELS@)
  if(case MATCHES "Thread")
    list(APPEND labels threads)
  endif()
  set_tests_properties("${case}" PROPERTIES
    LABELS "${labels}"
    ENVIRONMENT "TZ=Europe/Paris;QT_HASH_SEED=0;QT_LOGGING_RULES=;LC_ALL=C.UTF-8")
endforeach()
]])
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${properties}")
endfunction()
