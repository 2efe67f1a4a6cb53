# tandry_benchmark(<name> SOURCES <file>... [LIBRARIES <target>...])
#
# A Google Benchmark program over the three libraries, with a main of its own or of benchmark::benchmark_main's. The
# target `benchmarks` builds all of them, and scripts/bench runs them in the order in which they stand here.
function(tandry_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE
    Tandry::Configuration Tandry::Database Tandry::Interfaces benchmark::benchmark ${arg_LIBRARIES})
  add_dependencies(benchmarks ${name})
  set_property(GLOBAL APPEND_STRING PROPERTY TANDRY_BENCHMARKS "$<TARGET_FILE:${name}>\n")
endfunction()
