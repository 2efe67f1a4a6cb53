#include "database/sqlite/SqliteHandle.h"

namespace sync::database {

namespace {

/// The statement on its first row, or null.
StatementHandle StepOnce(sqlite3* handle, char const* statement)
{
    sqlite3_stmt* made = nullptr;
    sqlite3_prepare_v2(handle, statement, -1, &made, nullptr);
    StatementHandle prepared(made);
    if (made == nullptr || sqlite3_step(made) != SQLITE_ROW)
        prepared.reset();
    return prepared;
}

} // namespace

int OpenHandle(char const* name, int flags, SqliteHandle& handle)
{
    sqlite3* opened = nullptr;
    int const code = sqlite3_open_v2(name, &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    handle.reset(opened);
    return code;
}

void Distrust(sqlite3* handle)
{
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
}

int Execute(sqlite3* handle, char const* statements)
{
    return sqlite3_exec(handle, statements, nullptr, nullptr, nullptr);
}

std::optional<qint64> QueryNumber(sqlite3* handle, char const* statement)
{
    StatementHandle const prepared = StepOnce(handle, statement);
    if (prepared == nullptr)
        return std::nullopt;
    return sqlite3_column_int64(prepared.get(), 0);
}

QByteArray QueryText(sqlite3* handle, char const* statement)
{
    StatementHandle const prepared = StepOnce(handle, statement);
    if (prepared == nullptr)
        return {};
    return reinterpret_cast<char const*>(sqlite3_column_text(prepared.get(), 0));
}

int PrepareOwn(sqlite3* handle, char const* statement, StatementHandle& prepared)
{
    sqlite3_stmt* made = nullptr;
    int const code = sqlite3_prepare_v3(handle, statement, -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr);
    prepared.reset(made);
    return code;
}

} // namespace sync::database
