#pragma once

#include <sqlite3.h>

#include <QByteArray>
#include <QtGlobal>

#include <memory>
#include <optional>

namespace sync::database {

struct CloseHandle
{
    void operator()(sqlite3* handle) const noexcept { sqlite3_close(handle); }
};

struct FinalizeStatement
{
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};

/// A connection of the engine; its statements must be gone before it is.
using SqliteHandle = std::unique_ptr<sqlite3, CloseHandle>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

/// Opens a file with the engine's flags and a URI or plain name. The handle is there on failure as well, to be asked
/// for the reason, unless memory ran out.
int OpenHandle(char const* name, int flags, SqliteHandle& handle);

/// Keeps what a file's schema may hold from doing harm: it could have been written by anybody.
void Distrust(sqlite3* handle);

/// Runs statements that give no rows, or whose rows don't matter.
int Execute(sqlite3* handle, char const* statements);

/// The first column of a statement's only row.
std::optional<qint64> QueryNumber(sqlite3* handle, char const* statement);
/// The same as text; a null text when there is none.
QByteArray QueryText(sqlite3* handle, char const* statement);

/// Prepares a statement of the store's own that will be run often.
int PrepareOwn(sqlite3* handle, char const* statement, StatementHandle& prepared);

} // namespace sync::database
