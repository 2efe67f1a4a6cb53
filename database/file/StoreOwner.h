#pragma once

#include "database/sqlite/Failure.h"

namespace sync::database {

class StoreFile;

/// Fails if a log, its index or a journal beside the store belongs to another user than the store: SQLite would play
/// into the store what that user has put there.
///
/// Root's files pass: root may write to every file anyway, and SQLite, run by root, creates these files as root's
/// before it gives them to the store's owner.
[[nodiscard]] Failure CheckOwnersBeside(StoreFile const& file);

/// Fails if the files that this process creates beside the store would fail `CheckOwnersBeside`, so that no other
/// process could open the store as long as they are there.
[[nodiscard]] Failure CheckWriter(StoreFile const& file);

} // namespace sync::database
