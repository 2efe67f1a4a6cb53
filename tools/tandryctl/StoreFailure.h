#pragma once

#include "Failure.h"

namespace sync::database {
struct StoreError;
}

namespace tandryctl {

/// Where a store is.
enum class StorePlace
{
    File,
    Server
};

/// Returns the failure of a command whose store failed, with what to do about this kind of error. `hintForOther`
/// replaces the hint for errors of the kind `Other` where the command knows more.
Failure StoreFailure(sync::database::StoreError const& error,
                     QString const& hintForOther = {},
                     StorePlace place = StorePlace::File);

/// Returns what to do where the temporary folder cannot hold what a command puts there.
QString AdviceOnTemporaryFolder();

/// Returns the failure of a command that could not copy its store to the temporary folder, with what to do about the
/// cause: the folder or the store.
Failure CopyFailure(sync::database::StoreError const& error);

/// Returns the failure of a command whose store is locked, with the processes that hold the lock on its file. The
/// calling process must have closed the store.
Failure WithLockHolders(Failure const& failure, QString const& storePath);

} // namespace tandryctl
