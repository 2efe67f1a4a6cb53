# The Qt that everything is built with. Targets are written as Qt${TANDRY_QT}::Core; TANDRY_QT_XML has the targets that read
# and write documents. Libraries, packages and the folder of headers have TANDRY_SUFFIX in their names, so that those for both
# Qts can stand in one prefix.

set(TANDRY_QT 5 CACHE STRING "Major version of Qt: 5 or 6")
set_property(CACHE TANDRY_QT PROPERTY STRINGS 5 6)

if(TANDRY_QT STREQUAL "5")
  set(TANDRY_QT_MINIMUM 5.15)
  set(TANDRY_QT_XML Qt5::Xml)
  set(TANDRY_SUFFIX "")
elseif(TANDRY_QT STREQUAL "6")
  set(TANDRY_QT_MINIMUM 6.4)
  set(TANDRY_QT_XML Qt6::Xml Qt6::Core5Compat) # the second one has the reader of Qt 5
  set(TANDRY_SUFFIX "-qt6")
else()
  message(FATAL_ERROR "TANDRY_QT is \"${TANDRY_QT}\"; it has to be 5 or 6")
endif()

# tandry_find_qt(<component>...)
macro(tandry_find_qt)
  find_package(Qt${TANDRY_QT} ${TANDRY_QT_MINIMUM} REQUIRED COMPONENTS ${ARGN})
endmacro()

# Clients include headers as "config/..." and as <tandry/config/...>.
set(TANDRY_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/tandry")
if(TANDRY_SUFFIX)
  set(TANDRY_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/tandry${TANDRY_SUFFIX}/tandry")
endif()
cmake_path(GET TANDRY_INCLUDEDIR PARENT_PATH TANDRY_INCLUDEDIR_ABOVE)
set(TANDRY_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Tandry${TANDRY_SUFFIX}")

string(REPLACE "Qt${TANDRY_QT}::" "" TANDRY_QT_COMPONENTS "${TANDRY_QT_XML}")
tandry_find_qt(Core ${TANDRY_QT_COMPONENTS})
