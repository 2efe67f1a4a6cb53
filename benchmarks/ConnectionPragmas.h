#pragma once

#include <QStringList>

namespace sync::benchmarks {

/// The pragmas that the library runs on each of its connections, so that every backend is as durable and has the same
/// cache. The file keeps the journal mode, and settings of the process apply to all backends.
inline QStringList ConnectionPragmas()
{
    return {QStringLiteral("PRAGMA cache_size = -8192"),
            QStringLiteral("PRAGMA mmap_size = 0"),
            QStringLiteral("PRAGMA temp_store = MEMORY"),
            QStringLiteral("PRAGMA cell_size_check = ON"),
            QStringLiteral("PRAGMA secure_delete = ON"),
            QStringLiteral("PRAGMA wal_autocheckpoint = 1000"),
            QStringLiteral("PRAGMA journal_size_limit = 8388608"),
            QStringLiteral("PRAGMA synchronous = FULL"),
            QStringLiteral("PRAGMA busy_timeout = 5000")};
}

} // namespace sync::benchmarks
