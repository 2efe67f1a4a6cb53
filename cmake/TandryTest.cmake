include(GoogleTest)

# tandry_test(<name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...] [TIMEOUT <seconds>])
#
# A test program whose cases CTest runs one by one, in any order. The time zone is one with summer time, so that a
# conversion where there should be none shows, and the hash seed is fixed.
function(tandry_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()

  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE TandryTestSupport ${arg_LIBRARIES})
  if(NOT arg_LABELS)
    set(arg_LABELS ${name})
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES
      TIMEOUT ${arg_TIMEOUT}
      LABELS "${arg_LABELS}"
      ENVIRONMENT "TZ=Europe/Paris;QT_HASH_SEED=0;QT_LOGGING_RULES=;LC_ALL=C.UTF-8")

  foreach(source IN LISTS arg_SOURCES)
    set_property(GLOBAL APPEND PROPERTY TANDRY_TEST_SOURCES "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
  endforeach()
endfunction()
