#include "database/sqlite/LogLimit.h"

#include "database/sqlite/SqliteHandle.h"

#include <sqlite3.h>

#include <algorithm>

namespace sync::database {

LogLimit::LogLimit(sqlite3* handle, qint64 bytes)
    : _index(handle)
{
    qint64 pageSize = 0;
    if (_index.isValid() && QueryNumber(handle, "PRAGMA page_size", pageSize) == SQLITE_OK)
        _frames = static_cast<quint32>(std::clamp<qint64>(bytes / (pageSize + FrameHeaderSize), 1, _frames));
}

int LogLimit::MakeRoom(sqlite3* handle) const
{
    if (position() < _frames)
        return SQLITE_OK;
    return sqlite3_wal_checkpoint_v2(handle, "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

} // namespace sync::database
