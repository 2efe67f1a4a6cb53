#include "database/file/StoreCommit.h"

#include "database/file/StoreHandle.h"
#include "database/sqlite/FailedCommit.h"
#include "database/store/StoreLog.h"

namespace sync::database {

bool LeftJournalBehind(StoreHandle const& store) noexcept
{
    if (store.journalMode() == JournalMode::WriteAheadLog || !store.file().Exists(JournalSuffix))
        return false;
    // The journal of another connection that is writing right now comes with a lock.
    sqlite3_file* file = nullptr;
    sqlite3_file_control(store.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    int isLocked = 0;
    return file->pMethods->xCheckReservedLock(file, &isLocked) != SQLITE_OK || isLocked == 0;
}

Failure SettleStoreCommit(StoreHandle const& store, StoreError error, QString const& advice)
{
    if (LeftJournalBehind(store))
        return error; // every other handle obeys the journal
    bool const usesLog = store.journalMode() == JournalMode::WriteAheadLog;
    switch (SettleFailedCommit(store.get(), usesLog, error.code)) {
    case CommitOutcome::Gone:
        return error;
    case CommitOutcome::Kept:
        qCWarning(StoreLog).noquote() << error.text
                                      << "when a transaction was committed, which is durable all the same";
        return {};
    case CommitOutcome::Unknown:
        error.kind = StoreErrorKind::OutcomeUnknown;
        error.text += QStringLiteral("; it is not known whether the transaction is kept: ") + advice;
        return error;
    }
    return error;
}

} // namespace sync::database
