#include "database/file/StoreCreation.h"

#include "database/file/NewFile.h"
#include "database/file/StoreFile.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

namespace sync::database {

namespace {

/// Also writes through the log: only that shows whether one works in this place.
int SwitchToLog(sqlite3* handle)
{
    QByteArray mode;
    int code = QueryText(handle, "PRAGMA journal_mode = WAL", mode);
    if (code == SQLITE_OK && mode != "wal")
        code = SQLITE_CANTOPEN;
    if (code != SQLITE_OK)
        return code;
    QByteArray const write =
        "BEGIN IMMEDIATE; PRAGMA user_version = 0; PRAGMA user_version = " + QByteArray::number(schema::Version) +
        "; COMMIT;";
    code = Execute(handle, write.constData());
    if (code != SQLITE_OK)
        return code;
    return sqlite3_wal_checkpoint_v2(handle, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

Failure Fill(NewFile const& file, JournalMode mode)
{
    SqliteHandle handle;
    int code = file.Open(handle);
    if (code == SQLITE_OK)
        code = Execute(handle.get(), "PRAGMA encoding = 'UTF-8'");
    if (code == SQLITE_OK)
        code = schema::Create(handle.get());
    if (code == SQLITE_OK && mode == JournalMode::WriteAheadLog)
        code = SwitchToLog(handle.get());
    if (code != SQLITE_OK)
        return DescribeError(handle.get(), code, file.file().path());
    return {};
}

} // namespace

Failure CreateStore(StoreFile const& file, JournalMode mode)
{
    {
        NewFile created(file);
        bool isTaken = false; // by a store of another process or thread, which is as good
        if (Failure failure = created.CheckTarget(isTaken); failure || isTaken)
            return failure;
        if (Failure failure = created.Create())
            return failure;
        Failure failure = Fill(created, mode);
        if (!failure)
            return created.Publish(isTaken);
        if (mode == JournalMode::Rollback)
            return failure;
    }
    return CreateStore(file, JournalMode::Rollback); // the place may refuse no more than a log
}

} // namespace sync::database
