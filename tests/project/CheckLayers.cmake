# Fails when a file below ROOT includes a header that its folder may not see, or when one of the PUBLIC headers (paths as
# they are included) includes one that is not public and therefore missing from an installed package, or includes one by a
# path that does not begin at its own folder. QT_CORE is the folder with the headers of Qt Core.
cmake_minimum_required(VERSION 3.25)

# Every folder sees itself, the standard library, the system and Qt Core, a new one too. The rest are exceptions.
#
# layer(<folder> [SEES <header>...] [PUBLIC_OF <folder>...] [QT] [BESIDE])
#
# A folder and those below it that have no exceptions of their own see in addition: SEES, headers, as regular expressions;
# PUBLIC_OF, the public headers of these folders; QT, all of Qt; BESIDE, headers in the file's own folder by their bare
# names.
set(layers "")
macro(layer folder)
  list(APPEND layers ${folder})
  cmake_parse_arguments("layer_${folder}" "QT;BESIDE" "" "SEES;PUBLIC_OF" ${ARGN})
endmacro()

set(libraries interf database config models)
set(storeOptions "database/Compaction\\.h" "database/OpenOptions\\.h" "database/StoreError\\.h")

layer(core)
layer(interf)
layer(database SEES "interf/.*" "sqlite3\\.h")
layer(database/store SEES "database/(ScopeParticipant|StoreError|StoreFactory|TransactionalScope)\\.h" "interf/.*")
layer(database/sqlite SEES ${storeOptions} "database/store/(Failure|StoredValues)\\.h" "sqlite3\\.h")
layer(database/file SEES ${storeOptions} "database/sqlite/.*" "database/store/(Failure|StoreLog|StoreTables)\\.h" "sqlite3\\.h")
layer(config SEES "interf/.*" "core/.*" "database/TransactionalScope\\.h" "(QtXml/)?Q(Dom|Xml)[A-Z].*" "QtXml")
# QPromise is in the Core of Qt 6 only.
layer(models PUBLIC_OF interf config SEES "QPromise" "database/Store(Changes|Error|Factory)\\.h")
layer(postgres SEES "interf/.*" "database/store/.*" "libpq-fe\\.h" PUBLIC_OF database)
# What the tool shows of any statement, no client needs to know.
set(statementDetails "database/(StatementDetails|sqlite/SqliteValue)\\.h")
# Programs are clients like any other.
# Only the library's own readers can tell whether a document is broken, and its markers which files are temporary, so the
# findings use them.
layer(tools/findings PUBLIC_OF ${libraries}
  SEES "config/(FileLinks|NameValue|Stored)Document\\.h" "config/CommonConstants\\.h" "QDom[A-Z].*" ${statementDetails})
# What is in documents is replaced as the library would write it, except for its markers in names.
layer(tools/carry PUBLIC_OF ${libraries}
  SEES "tools/findings/.*" "config/(FileLinks|NameValue|Stored)Document\\.h" "config/CommonConstants\\.h" "QDom[A-Z].*")
layer(tools/tandryctl BESIDE QT SEES "CLI/.*" ${statementDetails} "tools/(carry|findings)/.*" PUBLIC_OF ${libraries})
# A module, so that the tool needs nothing of PostgreSQL.
layer(tools/tandryctl/server SEES "postgres/PostgresDatabaseFactory\\.h" "tools/tandryctl/ServerStore\\.h")
layer(tools/viewer QT SEES "tools/findings/.*" PUBLIC_OF ${libraries})
layer(examples BESIDE QT PUBLIC_OF ${libraries})
# A plugin, which nothing links with.
layer(qml QT PUBLIC_OF ${libraries})
# Installed, and built with the client's GoogleTest.
layer(tests/storesuite BESIDE SEES "gtest/.*" PUBLIC_OF ${libraries})
layer(tests/package SEES "storesuite/.*" "postgres/PostgresDatabaseFactory\\.h" PUBLIC_OF ${libraries})
# Tests and benchmarks reach for whatever they test and measure.
layer(tests SEES ".*")
layer(benchmarks SEES ".*")

# Sets `folder` to the longest of the layers that holds the file, or to the file's own folder.
function(find_layer file result)
  cmake_path(GET file PARENT_PATH own)
  set(folder "${own}")
  while(folder AND NOT folder IN_LIST layers)
    cmake_path(GET folder PARENT_PATH folder)
  endwhile()
  if(NOT folder)
    set(folder "${own}")
  endif()
  set(${result} "${folder}" PARENT_SCOPE)
endfunction()

# Sets `result` to whether a file of the layer may include the header.
function(sees folder file header quoted result)
  set(${result} TRUE PARENT_SCOPE)
  # moc's output is part of the file itself.
  if(header MATCHES "^moc_.*\\.cpp$|\\.moc$" OR header MATCHES "^${folder}/")
    return()
  endif()
  if(NOT quoted)
    if(header MATCHES "^((linux|sys)/)?[a-z0-9_]+(\\.h)?$" AND NOT header MATCHES "sqlite|libpq")
      return()
    endif()
    string(REGEX REPLACE "^QtCore/" "" class "${header}")
    if(class MATCHES "^[Qq][A-Za-z]+(\\.h)?$" AND (EXISTS "${QT_CORE}/${class}" OR layer_${folder}_QT))
      return()
    endif()
  endif()
  foreach(pattern IN LISTS layer_${folder}_SEES)
    if(header MATCHES "^(${pattern})$")
      return()
    endif()
  endforeach()
  foreach(library IN LISTS layer_${folder}_PUBLIC_OF)
    if(header MATCHES "^${library}/" AND header IN_LIST PUBLIC)
      return()
    endif()
  endforeach()
  cmake_path(GET file PARENT_PATH beside)
  if(layer_${folder}_BESIDE AND quoted AND NOT header MATCHES "\\.\\./" AND EXISTS "${ROOT}/${beside}/${header}")
    return()
  endif()
  set(${result} FALSE PARENT_SCOPE)
endfunction()

set(files "")
file(GLOB tops RELATIVE "${ROOT}" "${ROOT}/*")
list(FILTER tops EXCLUDE REGEX "^build")
foreach(top IN LISTS tops)
  if(IS_DIRECTORY "${ROOT}/${top}")
    file(GLOB_RECURSE found RELATIVE "${ROOT}" "${ROOT}/${top}/*.h" "${ROOT}/${top}/*.cpp")
    list(APPEND files ${found})
  endif()
endforeach()

set(wrong "")
foreach(file IN LISTS files)
  find_layer("${file}" folder)
  file(STRINGS "${ROOT}/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
  foreach(include IN LISTS includes)
    if(NOT include MATCHES "include[ \t]*([\"<])([^\">]+)[\">]")
      continue()
    endif()
    set(header "${CMAKE_MATCH_2}")
    if(CMAKE_MATCH_1 STREQUAL "\"")
      set(quoted TRUE)
    else()
      set(quoted FALSE)
    endif()
    # An installed header that names another one by its path alone might get a client's own file of that path.
    set(named "${header}")
    set(byPathAlone FALSE)
    if(file IN_LIST PUBLIC AND quoted)
      if(header IN_LIST PUBLIC)
        set(byPathAlone TRUE)
      endif()
      cmake_path(GET file PARENT_PATH own)
      cmake_path(SET header NORMALIZE "${own}/${header}")
    elseif(NOT quoted AND header MATCHES "^tandry/(.+)$")
      set(header "${CMAKE_MATCH_1}")
      set(quoted TRUE)
    endif()
    sees("${folder}" "${file}" "${header}" ${quoted} allowed)
    if(byPathAlone)
      list(APPEND wrong "${file}: ${named}, which is not named from the file's own folder")
    elseif(NOT allowed)
      list(APPEND wrong "${file}: ${named}")
    elseif(file IN_LIST PUBLIC AND header MATCHES "^(core|interf|database|config|models|postgres)/"
           AND NOT header IN_LIST PUBLIC)
      list(APPEND wrong "${file}: ${header}, which is not installed")
    endif()
  endforeach()
endforeach()
if(wrong)
  list(JOIN wrong "\n  " text)
  message(FATAL_ERROR "includes that cross a layer:\n  ${text}")
endif()
list(LENGTH files count)
message(STATUS "${count} files keep to their layers")
