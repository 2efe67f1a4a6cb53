#pragma once

#include <QStringList>

namespace sync::benchmarks {

/// What the library sets on each of its connections, so that the others are as durable, as careful and as well supplied
/// with memory as it is. The journal's mode stands in the file, and what the library sets for the whole process holds
/// for all of them anyway.
inline QStringList ConnectionTerms()
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
