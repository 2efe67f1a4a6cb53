#pragma once

#include "database/sqlite/LogIndex.h"

#include <QtGlobal>

#include <limits>

struct sqlite3;

namespace sync::database {

/// How large a write-ahead log may become because somebody goes on reading an old state of the database.
///
/// A log is worked off up to the oldest state that is being read, and starts anew only when nobody reads from it any
/// more. So one listing that is left open, or listings that overlap without end, let it grow with every commit. At the
/// limit, readers of an old state have to begin anew, and writers wait until the log is empty.
class LogLimit
{
public:
    /// No limit, for a database without a log.
    LogLimit() = default;
    /// REQUIRES: the handle has read from a database with a log.
    LogLimit(sqlite3* handle, qint64 bytes);

    /// The last commit in the log. A reader notes it when it begins.
    quint32 position() const noexcept { return _index.lastFrame(); }

    /// Whether a reader that began at this position has to let go of the log.
    bool EndsReader(quint32 began) const noexcept
    {
        quint32 const now = position();
        return now >= _frames && now != began;
    }

    /// Empties the log if it has reached the limit; to be called before a write transaction. Waits for readers as the
    /// handle waits for locks. Returns SQLite's result code: SQLITE_BUSY or SQLITE_LOCKED when a reader stays.
    [[nodiscard]] int MakeRoom(sqlite3* handle) const;

private:
    LogIndex _index;
    quint32 _frames = std::numeric_limits<quint32>::max();
};

} // namespace sync::database
