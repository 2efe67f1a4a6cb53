# Shows that the checks beside this file find what they are there for: each case is a small project in SCRATCH.
cmake_minimum_required(VERSION 3.25)

set(failed "")

# expect(<accepted|refused> <what it shows> <script> <argument>...)
function(expect answer title script)
  execute_process(COMMAND "${CMAKE_COMMAND}" ${ARGN} -P "${CMAKE_CURRENT_LIST_DIR}/${script}"
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE text)
  if(status EQUAL 0 AND answer STREQUAL "accepted")
    return()
  endif()
  # A script that broke by itself has not refused anything.
  if(NOT status EQUAL 0 AND answer STREQUAL "refused" AND text MATCHES "cross a layer|no test file found|no program lists|differs from")
    return()
  endif()
  list(APPEND failed "${title}: not ${answer}")
  set(failed "${failed}" PARENT_SCOPE)
endfunction()

# include_case(<accepted|refused> <file> <include line>), with config/Public.h and interf/Public.h as public headers
macro(include_case answer file line)
  file(REMOVE_RECURSE "${SCRATCH}")
  file(WRITE "${SCRATCH}/${file}" "#pragma once\n${line}\n")
  file(WRITE "${SCRATCH}/tools/tandryctl/Beside.h" "")
  expect(${answer} "${file} with ${line}" CheckLayers.cmake
    "-DROOT=${SCRATCH}" "-DPUBLIC=config/Public.h\;interf/Public.h\;database/Public.h")
endmacro()

include_case(accepted core/Cache.h "#include <QMutex>")
include_case(accepted core/Cache.h "#include \"core/Clock.h\"")
include_case(refused core/Cache.h "#include \"interf/Public.h\"")
include_case(refused core/Cache.h "#include \"config/Public.h\"")

include_case(accepted interf/Public.h "#include <QString>")
include_case(accepted interf/Other.cpp "#include \"interf/Public.h\"")
include_case(refused interf/Other.cpp "#include \"database/Public.h\"")
include_case(refused interf/Other.cpp "#include <sqlite3.h>")
include_case(refused interf/Other.cpp "#include <QDomDocument>")
include_case(refused interf/Other.cpp "#include <QtXml>")

include_case(accepted database/Query.cpp "#include <sqlite3.h>")
include_case(accepted database/Query.cpp "#include \"sqlite3.h\"")
include_case(refused database/Query.cpp "#include \"config/Public.h\"")
include_case(refused database/Query.cpp "#include \"core/Cache.h\"")
include_case(refused database/Query.cpp "#include <QSqlQuery>")
include_case(refused database/Query.cpp "#include <QtSql/QSqlQuery>")

include_case(accepted database/Query.cpp "#include \"database/file/Name.h\"")
include_case(accepted database/file/Name.cpp "#include \"database/sqlite/Handle.h\"")
include_case(accepted database/file/Name.cpp "#include \"database/OpenOptions.h\"")
include_case(refused database/file/Name.cpp "#include \"database/Query.h\"")
include_case(refused database/file/Name.cpp "#include \"interf/Public.h\"")
include_case(accepted database/sqlite/Handle.cpp "#include <sqlite3.h>")
include_case(accepted database/sqlite/Handle.cpp "#include \"database/StoreError.h\"")
include_case(refused database/sqlite/Handle.cpp "#include \"database/file/Name.h\"")
include_case(refused database/sqlite/Handle.cpp "#include \"database/Query.h\"")

include_case(accepted config/Manager.cpp "#include \"core/Cache.h\"")
include_case(accepted config/Manager.cpp "#include \"database/TransactionalScope.h\"")
include_case(accepted config/Manager.cpp "#include <QDomDocument>")
include_case(accepted config/Manager.cpp "#include <QXmlStreamReader>")
include_case(accepted config/Manager.cpp "#include \"moc_Manager.cpp\"")
include_case(refused config/Manager.cpp "#include \"database/Public.h\"")
include_case(refused config/Manager.cpp "#include \"database/ScopeParticipant.h\"")
include_case(refused config/Manager.cpp "#include <sqlite3.h>")
include_case(refused config/Manager.cpp "#include \"tests/support/Clock.h\"")

include_case(accepted config/Public.h "#include \"interf/Public.h\"")
include_case(refused config/Public.h "#include \"config/Internal.h\"")
include_case(refused config/Public.h "#include \"core/Cache.h\"")
include_case(refused config/Public.h "#include <config/Internal.h>")

include_case(refused config/Manager.cpp "#include \"Public.h\"")
include_case(refused config/Manager.cpp "#include \"../database/Query.h\"")
include_case(refused config/Manager.cpp "  #  include  \"database/Query.h\" // indented")
include_case(refused config/detail/Deep.cpp "#include \"database/Query.h\"")

include_case(accepted tools/tandryctl/Main.cpp "#include \"config/Public.h\"")
include_case(accepted tools/tandryctl/Main.cpp "#include \"Beside.h\"")
include_case(accepted tools/tandryctl/Main.cpp "#include <CLI/CLI.hpp>")
include_case(refused tools/tandryctl/Main.cpp "#include \"config/Internal.h\"")
include_case(refused tools/tandryctl/Main.cpp "#include <sqlite3.h>")
include_case(accepted examples/folders/main.cpp "#include \"database/Public.h\"")
include_case(refused examples/folders/main.cpp "#include \"config/Internal.h\"")

macro(registration_case answer title registered)
  expect(${answer} "${title}" CheckTestsRegistered.cmake
    "-DTESTS=${SCRATCH}" "-DREGISTERED=${registered}")
endmacro()

file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}")
registration_case(refused "a project without tests" "")
file(WRITE "${SCRATCH}/config/FirstTest.cpp" "")
file(WRITE "${SCRATCH}/config/Helper.cpp" "")
registration_case(accepted "one test, registered" "${SCRATCH}/config/FirstTest.cpp")
registration_case(refused "one test, not registered" "")
file(WRITE "${SCRATCH}/config/deep/SecondTest.cpp" "")
registration_case(refused "two tests, one registered" "${SCRATCH}/config/FirstTest.cpp")

macro(readme_case answer title readme)
  file(WRITE "${SCRATCH}/README.md" "${readme}")
  expect(${answer} "${title}" CheckReadmeExample.cmake
    "-DREADME=${SCRATCH}/README.md" "-DEXAMPLE=${SCRATCH}/main.cpp")
endmacro()

file(WRITE "${SCRATCH}/main.cpp" "int a[] = {1};\nint b;\n")
readme_case(accepted "the README's example, the same" "# Title\n\n```cpp\nint a[] = {1};\nint b;\n```\n\nText\n")
readme_case(refused "the README's example, another letter" "```cpp\nint a[] = {2};\nint b;\n```\n")
readme_case(refused "the README's example, cut short" "```cpp\nint a[] = {1};\n```\n")
readme_case(refused "a README without an example" "# Title\n")

file(REMOVE_RECURSE "${SCRATCH}")
if(failed)
  list(JOIN failed "\n  " text)
  message(FATAL_ERROR "checks that miss something or refuse too much:\n  ${text}")
endif()
