#pragma once

#include "database/file/StoreHandle.h"

#include <optional>

namespace sync::database {

/// Upgrades a store of an older version, one version after the other, before this process uses it.
///
/// Each step is one transaction, so that a process that is killed leaves the store at one version or the next. Before
/// the first step the store is copied to a new file beside it, unless an earlier attempt has left the same copy.
/// Several processes may try at once.
class StoreUpgrade
{
public:
    StoreUpgrade(StoreFile file, int busyTimeoutMsec);

    /// On success the store has the current version. On failure it is as it was, or at a version between, or the error
    /// is of the kind `OutcomeUnknown`: then it may be at either side of the last step. A store of a newer version is
    /// refused and unchanged.
    [[nodiscard]] Failure Run();

private:
    struct Backup
    {
        StoreFile file;
        qint64 version;
        bool isNew; // rather than one that an earlier attempt has left
    };

    Failure ReadVersion(qint64& version) const;
    Failure RunStep();
    Failure RunStepInTransaction(qint64 version);
    Failure Commit(qint64 version);
    Failure BackUp(qint64 version);
    void RemoveNeedlessBackup();
    StoreError CannotUpgrade(qint64 version, StoreError const& reason) const;

    int const _busyTimeoutMsec;
    StoreHandle _store;
    std::optional<Backup> _backup;
};

} // namespace sync::database
