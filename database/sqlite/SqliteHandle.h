#pragma once

#include <sqlite3.h>

#include <QByteArray>
#include <QtGlobal>

#include <memory>

namespace sync::database {

struct CloseHandle
{
    void operator()(sqlite3* handle) const noexcept { sqlite3_close(handle); }
};

struct FinalizeStatement
{
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};

/// A database connection of SQLite's; its statements must be finalized before it is closed.
using SqliteHandle = std::unique_ptr<sqlite3, CloseHandle>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// All functions that return an int return SQLite's extended result code.

/// Opens a file by its plain name or URI. The handle is set on failure as well, to be asked for the reason, unless
/// memory ran out.
[[nodiscard]] int OpenHandle(char const* name, int flags, SqliteHandle& handle);

/// Prevents the file's schema, which is not trusted, from running functions and from changing itself.
void Harden(sqlite3* handle);

/// Runs statements without looking at their rows.
int Execute(sqlite3* handle, char const* statements);

/// Sets the value to the first column of a statement's first row; leaves it unchanged if there is none.
[[nodiscard]] int QueryNumber(sqlite3* handle, char const* statement, qint64& value);
[[nodiscard]] int QueryText(sqlite3* handle, char const* statement, QByteArray& value);

/// Prepares a statement that will run often.
[[nodiscard]] int PreparePersistent(sqlite3* handle, char const* statement, StatementHandle& prepared);

} // namespace sync::database
