#pragma once

#include "database/Compaction.h"
#include "database/file/StoreHandle.h"

namespace sync::database {

/// Rebuilds a store's file without the pages that hold nothing.
///
/// SQLite copies all rows into memory, since temporary tables stay there, and from there over the file, in one
/// transaction. Compaction by small steps (`auto_vacuum`) would need pages of its own in each store, and would scatter
/// the rows; a new file in the place of the old one would end every program that has the store open.
class StoreCompaction
{
public:
    StoreCompaction(StoreFile file, int busyTimeoutMsec);

    /// Call once. After a failure the store is as it was, and so it is if the process is killed before the end of the
    /// transaction.
    [[nodiscard]] Failure Run(CompactionProgress const& progress, Compaction& compaction);

private:
    Failure Measure(Compaction& compaction);
    Failure CheckRoom() const;
    Failure Rebuild(CompactionProgress const& progress);
    Failure EmptyLog(bool& isPending);

    StoreHandle _store;
    qint64 _pageSize = 0;
    qint64 _pages = 0;
    qint64 _usedPages = 0;
};

} // namespace sync::database
