#include "database/EngineSetup.h"

#include "database/EngineMutex.h"

#include <sqlite3.h>

namespace sync::database {

namespace {

[[maybe_unused]] const bool isSetUp = SetUpEngine();

} // namespace

bool SetUpEngine() noexcept
{
    return sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK &&
           sqlite3_config(SQLITE_CONFIG_MUTEX, &EngineMutexMethods()) == SQLITE_OK;
}

} // namespace sync::database
