#pragma once

#include "database/SqliteHandle.h"
#include "database/StoreFile.h"

namespace sync::database {

/// Stands for a connection of this process that takes locks on a file, for as long as it lives.
///
/// POSIX drops all locks that a process holds on a file when it closes any descriptor of it. The engine sees to that
/// for the connections that take locks, but not for a handle on a file that "nobody writes": closing one would take the
/// locks away from a connection of another factory. So such a handle waits until the last of these has gone.
class LockKeeper
{
public:
    /// To be made before the connection takes its first lock, and to go after the connection.
    explicit LockKeeper(FileIdentity const& file);
    ~LockKeeper();

    /// Closes a handle that takes no locks, now or later.
    static void Close(FileIdentity const& file, SqliteHandle handle);

private:
    Q_DISABLE_COPY_MOVE(LockKeeper)

    FileIdentity const _file;
};

} // namespace sync::database
