#include "database/file/SecretErasure.h"

#include "database/sqlite/SqliteHandle.h"

namespace sync::database {

void SecretErasure::NoticeChange(int action, char const* table) noexcept
{
    if (action != SQLITE_INSERT && qstrcmp(table, "ProductConfiguration") == 0)
        _isDue = true;
}

int SecretErasure::Run(sqlite3* handle) noexcept
{
    // A table that is emptied as a whole gives its pages back, and SQLite overwrites those.
    return Execute(handle,
                   "CREATE TEMP TABLE Kept AS SELECT * FROM main.ProductConfiguration;"
                   "DELETE FROM main.ProductConfiguration;"
                   "INSERT INTO main.ProductConfiguration SELECT * FROM temp.Kept ORDER BY id;"
                   "DROP TABLE temp.Kept;");
}

} // namespace sync::database
