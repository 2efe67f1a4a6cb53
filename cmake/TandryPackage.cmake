# A CMake package and pkg-config files, by which clients find the installed libraries, whatever the prefix.

include(CMakePackageConfigHelpers)

set(package "Tandry${TANDRY_SUFFIX}")
configure_package_config_file(cmake/TandryConfig.cmake.in "${PROJECT_BINARY_DIR}/generated/${package}Config.cmake"
  INSTALL_DESTINATION "${TANDRY_PACKAGE_DIR}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/generated/${package}ConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/generated/${package}Config.cmake"
    "${PROJECT_BINARY_DIR}/generated/${package}ConfigVersion.cmake"
  DESTINATION "${TANDRY_PACKAGE_DIR}" COMPONENT Development)
install(EXPORT TandryTargets NAMESPACE Tandry:: DESTINATION "${TANDRY_PACKAGE_DIR}" COMPONENT Development)

# tandry_pkg_config(<library> DESCRIPTION <text> REQUIRES <module>... [CFLAGS <flag>...])
function(tandry_pkg_config library)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "REQUIRES;CFLAGS")
  string(TOLOWER "tandry-${library}${TANDRY_SUFFIX}" module)
  if(TANDRY_SUFFIX)
    string(APPEND arg_DESCRIPTION ", for Qt ${TANDRY_QT}")
  endif()
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
  REQUIRES "Qt${TANDRY_QT}Core >= ${TANDRY_QT_MINIMUM}"
  CFLAGS -I\${includedir}/tandry -I\${includedir} -include tandry/interf/UnistdWithoutSync.h -fPIC)
tandry_pkg_config(Database
  DESCRIPTION "Configuration store of a folder-synchronisation client in an SQLite file"
  REQUIRES "tandry-interfaces${TANDRY_SUFFIX} = ${PROJECT_VERSION}")
if(TARGET Tandry::Postgres)
  install(EXPORT TandryPostgresTargets NAMESPACE Tandry:: DESTINATION "${TANDRY_PACKAGE_DIR}" COMPONENT Development)
  tandry_pkg_config(Postgres
    DESCRIPTION "Configuration store of a folder-synchronisation client in a PostgreSQL database"
    REQUIRES "tandry-database${TANDRY_SUFFIX} = ${PROJECT_VERSION}")
endif()
tandry_pkg_config(Configuration
  DESCRIPTION "Records and managers of a folder-synchronisation client's configuration store"
  REQUIRES "tandry-interfaces${TANDRY_SUFFIX} = ${PROJECT_VERSION}")
tandry_pkg_config(Models
  DESCRIPTION "Item models and change notices of a folder-synchronisation client's configuration store"
  REQUIRES "tandry-configuration${TANDRY_SUFFIX} = ${PROJECT_VERSION}"
           "tandry-database${TANDRY_SUFFIX} = ${PROJECT_VERSION}")
