#pragma once

#include <QtGlobal>

namespace sync::database {

/// Whether opening a store may create it and may write to it.
enum class OpenMode
{
    /// Opens the store; creates it if the file does not exist.
    OpenOrCreate,
    /// Opens the store; fails if the file does not exist.
    OpenExisting,
    /// Opens the store for reading: changes no byte of it and creates no file. Statements that write fail.
    ReadOnly,
};

/// How SQLite makes a transaction atomic. Both modes give the same guarantees.
enum class JournalMode
{
    /// A write-ahead log beside the file: readers and a writer do not block each other, and a durable write costs one
    /// flush.
    WriteAheadLog,
    /// A rollback journal that is deleted at each commit, for file systems on which a write-ahead log does not work.
    Rollback,
};

/// How a store is opened. Every member has a default that suits a client.
struct OpenOptions
{
    /// Whether the store may be created and written to.
    OpenMode mode = OpenMode::OpenOrCreate;
    /// How long a statement waits for a lock of another thread or process before it fails, in milliseconds.
    int busyTimeoutMsec = 5000;
    /// Applies to a new store; an existing store keeps its mode. Where a write-ahead log does not work, the store gets
    /// a rollback journal.
    JournalMode journalMode = JournalMode::WriteAheadLog;
    /// The size, in bytes, to which a write-ahead log may grow while queries read an old state of the store. At this
    /// size `next` of such a query fails, and the query must be run again. A write waits, as for a lock, until no query
    /// of any thread or process reads an old state, and then empties the log. A single transaction may exceed the size.
    qint64 logLimitBytes = qint64(1024) * 1024 * 1024;
};

} // namespace sync::database
