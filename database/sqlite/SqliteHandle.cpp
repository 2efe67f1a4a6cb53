#include "database/sqlite/SqliteHandle.h"

namespace sync::database {

namespace {

/// Calls `read` with the statement on its first row.
template <class Read>
int QueryRow(sqlite3* handle, char const* statement, Read const& read)
{
    sqlite3_stmt* prepared = nullptr;
    int code = sqlite3_prepare_v2(handle, statement, -1, &prepared, nullptr);
    StatementHandle const owner(prepared);
    if (code == SQLITE_OK)
        code = sqlite3_step(prepared);
    if (code == SQLITE_ROW)
        read(prepared);
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

} // namespace

int OpenHandle(char const* name, int flags, SqliteHandle& handle)
{
    sqlite3* opened = nullptr;
    int const code = sqlite3_open_v2(name, &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    handle.reset(opened);
    return code;
}

void Harden(sqlite3* handle)
{
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
}

int Execute(sqlite3* handle, char const* statements)
{
    return sqlite3_exec(handle, statements, nullptr, nullptr, nullptr);
}

int QueryNumber(sqlite3* handle, char const* statement, qint64& value)
{
    return QueryRow(handle, statement, [&](sqlite3_stmt* row) { value = sqlite3_column_int64(row, 0); });
}

int QueryText(sqlite3* handle, char const* statement, QByteArray& value)
{
    return QueryRow(handle, statement, [&](sqlite3_stmt* row) {
        value = reinterpret_cast<char const*>(sqlite3_column_text(row, 0));
    });
}

int PreparePersistent(sqlite3* handle, char const* statement, StatementHandle& prepared)
{
    sqlite3_stmt* made = nullptr;
    int const code = sqlite3_prepare_v3(handle, statement, -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr);
    prepared.reset(made);
    return code;
}

} // namespace sync::database
