#include "database/file/StorePresence.h"

#include "database/file/StoreFile.h"

#include <limits>

#include <fcntl.h>

namespace sync::database {

namespace {

int OpenFolder(StoreFile const& file)
{
    return ::open(file.folder().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

struct flock LockOn(FileIdentity const& identity, int type)
{
    struct flock lock = {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(identity.inode & static_cast<ino_t>(std::numeric_limits<off_t>::max()));
    lock.l_len = 1;
    return lock;
}

} // namespace

StorePresence::StorePresence(StoreFile const& file)
    : _folder(OpenFolder(file))
{
    std::optional<FileIdentity> const identity = file.Identity();
    if (!_folder.isValid() || !identity)
        return;
    // Belongs to the descriptor and not to the process: others of the same folder may be closed meanwhile.
    struct flock lock = LockOn(*identity, F_RDLCK);
    ::fcntl(_folder.get(), F_OFD_SETLK, &lock);
}

bool StorePresence::IsAnnounced(StoreFile const& file)
{
    Descriptor const folder(OpenFolder(file));
    std::optional<FileIdentity> const identity = file.Identity();
    if (!folder.isValid() || !identity)
        return false;
    struct flock lock = LockOn(*identity, F_WRLCK);
    return ::fcntl(folder.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace sync::database
