#pragma once

#include "database/store/Failure.h"

#include <optional>

#include <sys/types.h>

namespace sync::database {

class StoreFile;

/// The user to whom a file belongs.
struct FileOwner
{
    uid_t user = 0;
    gid_t group = 0;
};

/// Returns nothing if there is no such file, or if this process may not look it up.
std::optional<FileOwner> OwnerOf(StoreFile const& file);

/// Gives a file that this process has created to an owner, as far as it is root and the file system has owners.
void GiveTo(FileOwner owner, int descriptor);

/// Fails if a log, its index or a journal beside the store belongs to another user than the store: SQLite would apply
/// to the store whatever that user has put there.
///
/// Root's files pass: root may write to every file anyway, and SQLite, run by root, creates these files as root's
/// before it gives them to the store's owner.
[[nodiscard]] Failure CheckOwnersBeside(StoreFile const& file);

/// Fails if the files that this process creates beside the store would fail `CheckOwnersBeside`, so that no other
/// process could open the store as long as they are there.
[[nodiscard]] Failure CheckWriter(StoreFile const& file);

/// Removes all rights to the store and to the files beside it, except those of the owner, if the file system has
/// rights: SQLite gives the files that it creates beside the store the rights of the store.
void TakeRightsOfOthers(StoreFile const& file);

} // namespace sync::database
