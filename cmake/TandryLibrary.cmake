# In the build tree too, clients include headers as <tandry/config/...>.
set(TANDRY_BUILD_INCLUDEDIR "${PROJECT_BINARY_DIR}/generated/include")
file(MAKE_DIRECTORY "${TANDRY_BUILD_INCLUDEDIR}")
file(CREATE_LINK "${PROJECT_SOURCE_DIR}" "${TANDRY_BUILD_INCLUDEDIR}/tandry" SYMBOLIC)

# tandry_library(<name> FOLDER <folder> SOURCES <file>... [HEADERS <file>...] [EXPORT <set>])
#
# A shared library Tandry<name> with the alias Tandry::<name>; Tandry<name>Export.h in its folder says what it exports.
# HEADERS are the public ones, installed below TANDRY_INCLUDEDIR/<folder>; all other headers stay in the source tree. EXPORT
# is for a library that is packaged apart from the others.
function(tandry_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER;EXPORT" "SOURCES;HEADERS")
  set(target Tandry${name})
  if(NOT arg_EXPORT)
    set(arg_EXPORT TandryTargets)
  endif()
  list(APPEND arg_HEADERS ${target}Export.h)

  add_library(${target} SHARED ${arg_SOURCES} ${arg_HEADERS})
  add_library(Tandry::${name} ALIAS ${target})

  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<BUILD_INTERFACE:${TANDRY_BUILD_INCLUDEDIR}>"
    "$<INSTALL_INTERFACE:${TANDRY_INCLUDEDIR}>"
    "$<INSTALL_INTERFACE:${TANDRY_INCLUDEDIR_ABOVE}>")
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
    install(FILES ${arg_HEADERS}
      DESTINATION ${TANDRY_INCLUDEDIR}/${arg_FOLDER} COMPONENT Development)
  endif()

  list(TRANSFORM arg_HEADERS PREPEND "${arg_FOLDER}/")
  set_property(GLOBAL APPEND PROPERTY TANDRY_PUBLIC_HEADERS ${arg_HEADERS})
endfunction()
