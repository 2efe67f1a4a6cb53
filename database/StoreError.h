#pragma once

#include <QMetaType>
#include <QString>

namespace sync::database {

/// What kind of failure an error is; the same for every store, whatever its database.
enum class StoreErrorKind
{
    /// Another thread or process holds a lock. Trying again later may succeed.
    Locked,
    /// The disk is full, or a quota used up.
    Full,
    /// The store cannot be written, was opened for reading only, or its file has several names (hard links).
    ReadOnly,
    /// The file is damaged, was cut while the store was open, or is no store.
    Damaged,
    /// The file was removed or replaced while the store was open, or its log or the log's index was, or was cut.
    Moved,
    /// The store does not accept the statement, the value or the operation at this point. Trying again fails again.
    Refused,
    /// A commit failed, and the disk failed again when the store looked what became of it: a crash may still bring the
    /// transaction back or take it away. This is settled as soon as a later write has succeeded. Then read the rows,
    /// and write again only what is missing.
    OutcomeUnknown,
    /// The connection to a database server was lost.
    ConnectionLost,
    /// Any other failure: the file cannot be opened, an I/O error, lack of memory.
    Other,
    /// The store was written by an older program, and was opened for reading only. Opening it for writing upgrades it.
    OlderVersion,
    /// The store was written by a newer program.
    NewerVersion,
    /// A program has left the store without closing it, and it was opened for reading only. Opening it for writing once
    /// closes it.
    NotClosed,
};

/// Why a store could not carry out an operation.
struct StoreError
{
    /// The database's own code: with `SqliteDatabaseFactory` SQLite's extended result code, also where the store itself
    /// refused the operation.
    int code = 0;
    /// What happened, in plain words and with the file's name; never a bound value.
    QString text;
    /// The statement that failed, with its placeholders; null if no statement was running.
    QString statement;
    StoreErrorKind kind = StoreErrorKind::Other;
};

} // namespace sync::database

Q_DECLARE_METATYPE(sync::database::StoreError)
