#include "database/SqliteProcess.h"

#include <sqlite3.h>

namespace sync::database {

bool DisableSqliteMemoryStatistics() noexcept
{
    return sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK;
}

} // namespace sync::database
