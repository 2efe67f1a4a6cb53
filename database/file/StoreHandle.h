#pragma once

#include "database/OpenOptions.h"
#include "database/file/OpenFiles.h"
#include "database/file/StoreFile.h"
#include "database/sqlite/BusyHandler.h"
#include "database/sqlite/SqliteHandle.h"
#include "database/store/Failure.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace sync::database {

/// The purpose of a handle on a store.
enum class OpenPurpose
{
    /// A connection. The store must have the version of this library.
    Connection,
    /// The first connection of a factory. Also checks the file's length and the tables, and converts a store whose
    /// write-ahead log does not work in its place to a rollback journal.
    FirstConnection,
    /// An upgrade, of a store of any version.
    Upgrade,
    /// One look at the committed state of a store of any version, damaged or not.
    Snapshot,
};

enum class StoreAccess
{
    ReadWrite,
    /// Changes no byte of the store and creates no file.
    ReadOnly,
};

/// A SQLite handle on a store's file, with the journal mode, identity and stamp that its opening found. Closed with the
/// object.
class StoreHandle
{
public:
    /// The handle waits for locks for `busyTimeoutMsec` milliseconds.
    StoreHandle(StoreFile file, int busyTimeoutMsec);
    ~StoreHandle();
    Q_DISABLE_COPY_MOVE(StoreHandle)

    /// Opens the file, protects the handle from its schema, and reads it for the first time. Call once; the object is
    /// of no use if it fails.
    ///
    /// A write-ahead log that a killed program left behind is only checkpointed on close once the file has proved to be
    /// a store: for a connection when it is open, for other purposes by `AllowCheckpointOnClose`.
    [[nodiscard]] Failure Open(OpenPurpose purpose, StoreAccess access);

    sqlite3* get() const noexcept { return _handle.get(); }
    StoreFile const& file() const noexcept { return _file; }
    BusyHandler& busyHandler() noexcept { return _busyHandler; }

    /// Of a handle opened for a connection or an upgrade.
    JournalMode journalMode() const noexcept { return _journalMode; }
    /// The identity of the file at the path after the handle was opened.
    std::optional<FileIdentity> const& identity() const noexcept { return _openFiles.identity(); }

    /// Fails if the file, its log or the log's index was removed, replaced or cut.
    Failure CheckUnmoved() const { return _openFiles.Check(OpenFiles::Use::Reading); }
    /// The same, and fails if the file has a second name: other connections would not see the writes.
    Failure CheckWritable() const { return _openFiles.Check(OpenFiles::Use::Writing); }
    /// The same for the file alone.
    Failure CheckFileWritable() const { return _openFiles.CheckFile(OpenFiles::Use::Writing); }

    /// Whether SQLite reads the file as one that nobody changes.
    bool isImmutable() const noexcept { return _stamp.has_value(); }
    /// False if the rows that were read may not be one committed state: SQLite read the file as immutable, and it
    /// changed meanwhile.
    bool IsUnchanged() const noexcept { return !_stamp || _file.Stamp() == _stamp; }
    /// Fails if not `IsUnchanged`.
    Failure CheckUnchanged() const;

    void AllowCheckpointOnClose() noexcept;

    /// An error that SQLite reported to this handle; see `DescribeError`.
    StoreError Describe(int code, QString const& statement = {}, bool withMessage = false) const;

private:
    Failure OpenForWriting(OpenPurpose purpose);
    Failure ConnectForWriting(OpenPurpose purpose);
    Failure OpenForReading(OpenPurpose purpose);
    Failure ConnectForReading(OpenPurpose purpose);
    Failure Connect(QByteArray const& name, int flags, OpenPurpose purpose);
    Failure Configure(OpenPurpose purpose);
    Failure CheckStore(OpenPurpose purpose) const;
    Failure CheckLogIndexIsNotInUse() const;
    int ConvertToJournal();
    void Close() noexcept;

    StoreFile const _file;
    BusyHandler _busyHandler; // outlives the handle
    OpenFiles _openFiles;
    SqliteHandle _handle;
    JournalMode _journalMode = JournalMode::WriteAheadLog;
    std::optional<FileStamp> _stamp;
};

} // namespace sync::database
