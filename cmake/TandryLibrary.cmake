include(GenerateExportHeader)

# tandry_library(<name> FOLDER <folder> SOURCES <file>... [HEADERS <file>...] [EXPORT <set>])
#
# A shared library Tandry<name> with the alias Tandry::<name> and an export header <folder>/Tandry<name>Export.h.
# HEADERS are the public ones, installed below TANDRY_INCLUDEDIR/<folder>; all other headers stay in the source tree. EXPORT
# is for a library that is packaged apart from the others.
function(tandry_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER;EXPORT" "SOURCES;HEADERS")
  set(target Tandry${name})
  if(NOT arg_EXPORT)
    set(arg_EXPORT TandryTargets)
  endif()
  set(generated "${PROJECT_BINARY_DIR}/generated")

  add_library(${target} SHARED ${arg_SOURCES} ${arg_HEADERS})
  add_library(Tandry::${name} ALIAS ${target})

  string(TOUPPER ${name} upper)
  generate_export_header(${target}
    EXPORT_MACRO_NAME TANDRY_${upper}_EXPORT
    EXPORT_FILE_NAME "${generated}/${arg_FOLDER}/${target}Export.h")

  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<BUILD_INTERFACE:${generated}>"
    "$<INSTALL_INTERFACE:${TANDRY_INCLUDEDIR}>")
  target_compile_features(${target} PUBLIC cxx_std_17)
  if(NOT TANDRY_SANITIZE AND NOT TANDRY_COVERAGE)
    # The check of the binary interface reads the layouts of classes in the debug information.
    target_compile_options(${target} PRIVATE "$<$<CONFIG:Debug>:-g>")
  endif()
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    OUTPUT_NAME ${target}${TANDRY_SUFFIX}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})

  if(TANDRY_INSTALL)
    install(TARGETS ${target} EXPORT ${arg_EXPORT}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)
    install(FILES ${arg_HEADERS} "${generated}/${arg_FOLDER}/${target}Export.h"
      DESTINATION ${TANDRY_INCLUDEDIR}/${arg_FOLDER} COMPONENT Development)
  endif()

  list(TRANSFORM arg_HEADERS PREPEND "${arg_FOLDER}/")
  set_property(GLOBAL APPEND PROPERTY TANDRY_PUBLIC_HEADERS ${arg_HEADERS} "${arg_FOLDER}/${target}Export.h")
endfunction()
