#pragma once

#include <QtGlobal>

#include <functional>

namespace sync::database {

/// What a compaction has done.
struct Compaction
{
    /// The size of the store's file in bytes, with all that is in the log.
    qint64 bytesBefore = 0;
    /// The same after the compaction.
    qint64 bytesAfter = 0;
    /// Whether the file keeps its old size for the time being, because another thread or program still reads the store
    /// as it was. It shrinks when the log is next emptied.
    bool isPending = false;
};

/// Called from time to time with the number of pages that have been read, and the number of all that will be.
using CompactionProgress = std::function<void(qint64 pages, qint64 ofPages)>;

} // namespace sync::database
