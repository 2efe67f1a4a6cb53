# A CMake package and pkg-config files, by which clients find the installed libraries, whatever the prefix.

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
if(TARGET Tandry::Postgres)
  install(EXPORT TandryPostgresTargets NAMESPACE Tandry:: DESTINATION "${packageDir}" COMPONENT Development)
  tandry_pkg_config(Postgres
    DESCRIPTION "Configuration store of a folder-synchronisation client in a PostgreSQL database"
    REQUIRES "tandry-database = ${PROJECT_VERSION}")
endif()
tandry_pkg_config(Configuration
  DESCRIPTION "Records and managers of a folder-synchronisation client's configuration store"
  REQUIRES "tandry-interfaces = ${PROJECT_VERSION}")
tandry_pkg_config(Models
  DESCRIPTION "Item models and change notices of a folder-synchronisation client's configuration store"
  REQUIRES "tandry-configuration = ${PROJECT_VERSION}" "tandry-database = ${PROJECT_VERSION}")
