#pragma once

#include "database/file/ExclusiveLock.h"
#include "database/file/StoreBackup.h"
#include "database/file/StoreFile.h"

#include <optional>

namespace sync::database {

/// Puts a backup in the place of a store, and keeps the earlier store.
///
/// A log that belongs to the earlier file must never stand beside the new one: SQLite would mix the two states. So the
/// earlier store first gets a second name, complete with the files beside it. If there are such files, a notice that
/// every opening refuses takes the store's place while they are removed. Then the new file takes it, by a rename. A
/// process that is killed leaves the earlier store, the notice or the new store; the next restore continues from there.
class StoreRestore
{
public:
    StoreRestore(StoreFile backup, StoreFile store);

    /// Call once. The new store is whole and checked for damage before anything changes. Fails if a process has the
    /// store open.
    [[nodiscard]] Failure Run();

    /// Fails where `Run` would, as far as that can be seen without creating a file, and sets `kept`. Call once, and not
    /// with `Run`.
    [[nodiscard]] Failure DryRun();

    /// The earlier store under its second name; nothing if there was none, or an earlier restore has kept it.
    std::optional<StoreFile> const& kept() const { return _kept; }

private:
    Failure Prepare();
    Failure CheckNames() const;
    Failure Replace();
    StoreBackup SourceOfCopy() const;
    StoreError CannotRestore(StoreError const& reason) const;
    bool HasEarlierStore() const;
    StoreFile NameToKeep() const;
    Failure Keep();
    Failure KeepFiles(StoreFile const& kept) const;
    Failure RemoveFilesBeside();
    Failure PutUpNotice();
    bool HasFilesBeside() const;

    StoreFile const _backup;
    StoreFile const _store;
    ExclusiveLock _lock;
    bool _wasInterrupted = false;
    std::optional<StoreFile> _kept;
};

} // namespace sync::database
