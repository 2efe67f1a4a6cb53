#pragma once

#include "database/file/Descriptor.h"

namespace sync::database {

class StoreFile;

/// Tells the other processes of the machine that a store is open, as long as the object lives.
///
/// SQLite holds no lock between the transactions of a store with a rollback journal. So each open store holds a lock on
/// its folder, at the offset of the file's inode number. A lock on the file itself would need a descriptor of our own,
/// and closing that would release the locks that SQLite holds. Nothing is written and no file is created, so this works
/// for stores that are opened for reading too. Where the system refuses the lock, nothing is announced.
class StorePresence
{
public:
    explicit StorePresence(StoreFile const& file);

    /// Returns whether a process of this machine, this one included, has announced the store at the path.
    static bool IsAnnounced(StoreFile const& file);

private:
    Descriptor const _folder;
};

} // namespace sync::database
