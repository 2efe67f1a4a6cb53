#pragma once

#include <QMetaType>
#include <QString>

namespace sync::database {

/// The kind of a failure. The kinds do not depend on the database behind the store.
enum class StoreErrorKind
{
    /// Another thread or process holds a lock. Trying again later may succeed.
    Locked,
    /// The disk is full, or a quota is used up.
    Full,
    /// The store cannot be written, was opened for reading only, or its file has several names (hard links).
    ReadOnly,
    /// The file is damaged, was cut while the store was open, or is no store.
    Damaged,
    /// The file was removed or replaced while the store was open, or its log or the log's index was, or was cut.
    Moved,
    /// The store does not accept the statement, the value or the operation at this point. Trying again fails again.
    Refused,
    /// A commit failed, and the disk failed again while the store determined its outcome: after a crash the transaction
    /// may be there or not. The next write that succeeds settles the outcome. Then read the rows, and write again only
    /// what is missing.
    OutcomeUnknown,
    /// The connection to a database server was lost.
    ConnectionLost,
    /// Any other failure: the file cannot be opened, an I/O error, lack of memory.
    Other,
    /// The store was written by an older program, and was opened for reading only. Opening it for writing upgrades it.
    OlderVersion,
    /// The store was written by a newer program.
    NewerVersion,
    /// A program ended without closing the store, which was opened for reading only. Opening it for writing once
    /// settles this.
    NotClosed,
};

/// The reason why an operation of a store failed.
struct StoreError
{
    /// The database's own code. With `SqliteDatabaseFactory`, SQLite's extended result code, even if the store itself
    /// refused the operation.
    int code = 0;
    /// The failure in plain words, with the file's name; never contains a bound value.
    QString text;
    /// The statement that failed, with its placeholders; null if no statement was running.
    QString statement;
    /// The kind of failure, for programs.
    StoreErrorKind kind = StoreErrorKind::Other;
};

} // namespace sync::database

Q_DECLARE_METATYPE(sync::database::StoreError)
