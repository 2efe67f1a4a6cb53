#include "database/file/DroppedCommits.h"

#include "database/file/StoreHandle.h"
#include "database/sqlite/LogTail.h"

namespace sync::database {

int CountDroppedCommits(StoreFile const& file)
{
    if (!file.Exists(LogSuffix))
        return 0;
    StoreHandle store(file, 0); // a log that somebody is writing was not left behind
    Failure const failure = store.Open(OpenPurpose::Upgrade, StoreAccess::ReadWrite);
    if (failure || store.journalMode() != JournalMode::WriteAheadLog)
        return 0;
    if (Execute(store.get(), "BEGIN IMMEDIATE") != SQLITE_OK)
        return 0;
    int const commits = LogTail(store.get()).CountDroppedCommits().value_or(0);
    Execute(store.get(), "ROLLBACK");
    return commits;
}

} // namespace sync::database
