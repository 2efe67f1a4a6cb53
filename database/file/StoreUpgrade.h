#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"
#include "database/sqlite/LockQueue.h"
#include "database/sqlite/SqliteHandle.h"

#include <optional>

namespace sync::database {

/// Brings a store of an older version up to date, one version after the other, before anything else uses it here.
///
/// Each step is one transaction, so a process that is killed leaves the store of one version or the next. Before the
/// first one the store is copied, as it is, to a new file beside it. Several processes may try at once.
class StoreUpgrade
{
public:
    StoreUpgrade(StoreFile file, int busyTimeoutMsec);

    /// Nothing when the store then has the current version; or else it is as it was, or has got as far as a version
    /// between. A store of a newer version is refused, unchanged.
    Failure Run();

private:
    struct Backup
    {
        StoreFile file;
        qint64 version;
    };

    Failure Open();
    Failure ReadVersion(qint64& version) const;
    Failure TakeStep();
    Failure TakeStepInTransaction(qint64 version);
    Failure BackUp(qint64 version);
    StoreFile BackupFile(qint64 version) const;
    void DropNeedlessBackup();
    StoreError Refuse(qint64 version, StoreError const& reason) const;
    Failure Describe(int code) const;

    StoreFile const _file;
    int const _busyTimeoutMsec;
    LockQueue _queue;
    SqliteHandle _handle;
    std::optional<Backup> _backup;
};

} // namespace sync::database
