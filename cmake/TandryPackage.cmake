# A CMake package and pkg-config files, by which clients find the installed libraries, whatever the prefix; and Debian
# packages: `cpack --config build/release/CPackConfig.cmake`.

include(CMakePackageConfigHelpers)

set(packageDir "${CMAKE_INSTALL_LIBDIR}/cmake/Tandry")
configure_package_config_file(cmake/TandryConfig.cmake.in "${PROJECT_BINARY_DIR}/generated/TandryConfig.cmake"
  INSTALL_DESTINATION "${packageDir}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/generated/TandryConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/generated/TandryConfig.cmake"
    "${PROJECT_BINARY_DIR}/generated/TandryConfigVersion.cmake"
  DESTINATION "${packageDir}" COMPONENT Development)
install(EXPORT TandryTargets NAMESPACE Tandry:: DESTINATION "${packageDir}" COMPONENT Development)

# tandry_pkg_config(<library> DESCRIPTION <text> REQUIRES <module>... [CFLAGS <flag>...])
function(tandry_pkg_config library)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "REQUIRES;CFLAGS")
  string(TOLOWER "tandry-${library}" module)
  list(JOIN arg_REQUIRES ", " requires)
  list(JOIN arg_CFLAGS " " cflags)
  file(RELATIVE_PATH prefixFromHere "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  string(REGEX REPLACE "/$" "" prefixFromHere "${prefixFromHere}")
  configure_file(cmake/tandry.pc.in "${PROJECT_BINARY_DIR}/generated/${module}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/generated/${module}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)
endfunction()

# Debian's Qt refuses code that is not position-independent.
tandry_pkg_config(Interfaces
  DESCRIPTION "Abstract interfaces of a folder-synchronisation client's configuration store"
  REQUIRES "Qt5Core >= 5.15"
  CFLAGS -I\${includedir}/tandry -include interf/UnistdWithoutSync.h -fPIC)
tandry_pkg_config(Database
  DESCRIPTION "Configuration store of a folder-synchronisation client in an SQLite file"
  REQUIRES "tandry-interfaces = ${PROJECT_VERSION}")
tandry_pkg_config(Configuration
  DESCRIPTION "Records and managers of a folder-synchronisation client's configuration store"
  REQUIRES "tandry-interfaces = ${PROJECT_VERSION}")

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tandry developers <tandry@localhost>")
set(CPACK_PACKAGE_VENDOR "The Tandry developers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: libraries")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers and build files")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "${PROJECT_DESCRIPTION}: command-line tool")
if(TARGET tandryctl)
  list(APPEND CPACK_COMPONENTS_ALL Tool)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtandry${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtandry-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tandryctl)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS Runtime)
# The tool's libraries are of this very build, so their packages are told above and not looked up.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
