#include "database/sqlite/FailedCommit.h"

#include "database/sqlite/LogTail.h"
#include "database/sqlite/SqliteHandle.h"

#include <sqlite3.h>

namespace sync::database {

namespace {

/// A commit ends with its last write to the log, the one with the mark, and with the flush after it. What fails
/// afterwards leaves a whole commit behind, which the next recovery of the log takes for a good one.
CommitOutcome SettleInLog(sqlite3* handle, int code)
{
    int erased = Execute(handle, "BEGIN IMMEDIATE");
    if (erased == SQLITE_OK) {
        erased = LogTail(handle).Erase();
        Execute(handle, "ROLLBACK");
    }
    switch (code) {
    case SQLITE_FULL:
    case SQLITE_IOERR_WRITE:
        return CommitOutcome::Gone; // the mark was never written
    default:
        return (code & 0xff) == SQLITE_BUSY || erased == SQLITE_OK ? CommitOutcome::Gone : CommitOutcome::Unknown;
    }
}

/// Another commit: it rolls back what a journal left behind asks for, and flushes the folder once more, with a change
/// of its own. A flush that is merely repeated may succeed though the system has given up what failed before.
bool CommitOnceMore(sqlite3* handle)
{
    if (Execute(handle, "BEGIN IMMEDIATE") != SQLITE_OK)
        return false;
    qint64 version = 0;
    int code = QueryNumber(handle, "PRAGMA user_version", version);
    QByteArray const change = "PRAGMA user_version = " + QByteArray::number(version) + "; COMMIT";
    if (code == SQLITE_OK)
        code = Execute(handle, change.constData());
    if (code != SQLITE_OK && sqlite3_get_autocommit(handle) == 0)
        Execute(handle, "ROLLBACK");
    return code == SQLITE_OK;
}

/// The deletion of the journal commits. The code tells on which side of it the commit failed.
CommitOutcome SettleWithJournal(sqlite3* handle, int code)
{
    switch (code) {
    case SQLITE_IOERR_DELETE_NOENT: // somebody else deleted it
    case SQLITE_IOERR_DIR_FSYNC:
    case SQLITE_IOERR_RDLOCK:
    case SQLITE_IOERR_UNLOCK:
        return CommitOnceMore(handle) ? CommitOutcome::Kept : CommitOutcome::Unknown;
    case SQLITE_IOERR_DELETE:
        return CommitOnceMore(handle) ? CommitOutcome::Gone : CommitOutcome::Unknown;
    case SQLITE_IOERR_TRUNCATE: // of the file, to more pages before the deletion or to fewer behind it
        static_cast<void>(CommitOnceMore(handle));
        return CommitOutcome::Unknown;
    default:
        return CommitOutcome::Gone; // SQLite rolls back, if not now then when the file is used next
    }
}

} // namespace

CommitOutcome SettleFailedCommit(sqlite3* handle, bool usesLog, int code)
{
    return usesLog ? SettleInLog(handle, code) : SettleWithJournal(handle, code);
}

} // namespace sync::database
