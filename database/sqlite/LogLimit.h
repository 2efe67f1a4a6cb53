#pragma once

#include "database/sqlite/LogIndex.h"

#include <QtGlobal>

#include <limits>

struct sqlite3;

namespace sync::database {

/// Limits the size of a write-ahead log while queries read an old state of the database.
///
/// SQLite checkpoints a log up to the oldest state that is being read, and reuses it only when no query reads from it.
/// So a listing that is left open, or listings that overlap without end, let it grow with every commit. At the limit,
/// queries that read an old state fail and must be run again, and writers wait until the log is empty.
class LogLimit
{
public:
    /// No limit, for a database without a log.
    LogLimit() = default;
    /// REQUIRES: the handle has read from a database with a log.
    LogLimit(sqlite3* handle, qint64 bytes);

    /// The last commit in the log. A reader notes it when it begins.
    quint32 position() const noexcept { return _index.lastFrame(); }

    /// Whether a reader that began at this position must end.
    bool EndsReader(quint32 began) const noexcept
    {
        quint32 const now = position();
        return now >= _frames && now != began;
    }

    /// Empties the log if it has reached the limit. Call this before a write transaction. Waits for readers as the
    /// handle waits for locks. Returns SQLite's result code: SQLITE_BUSY or SQLITE_LOCKED if a reader does not end.
    [[nodiscard]] int MakeRoom(sqlite3* handle) const;

private:
    LogIndex _index;
    quint32 _frames = std::numeric_limits<quint32>::max();
};

} // namespace sync::database
