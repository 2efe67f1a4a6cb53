#pragma once

#include "database/sqlite/LogIndex.h"

#include <QtGlobal>

#include <optional>

struct sqlite3;

namespace sync::database {

/// SQLite's own count of the commits to a database, of all connections: in the index of the log, or with a journal in
/// the file's header.
///
/// `PRAGMA data_version` does not serve here: each connection has numbers of its own, so that nobody can tell whose
/// commit raised them, and a log that begins anew raises them too.
class CommitCounter
{
public:
    /// Counts nothing.
    CommitCounter() = default;
    /// REQUIRES: the handle has read from its database. The counter is valid as long as the handle.
    explicit CommitCounter(sqlite3* handle);

    /// Returns the number of the last commit, in a transaction of its own. Returns nothing if a lock prevents that, or
    /// if the file cannot be read.
    std::optional<quint32> Read() const;
    /// REQUIRES: a transaction on the handle, which for writing has written nothing yet.
    std::optional<quint32> ReadInTransaction() const;

    /// Whether another connection has SQLite's write lock. With a log, this takes a share of the lock for an instant.
    bool IsOtherWriting() const;

private:
    sqlite3* _handle = nullptr;
    LogIndex _index;
};

} // namespace sync::database
