#include "database/file/FileIdentity.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

namespace sync::database {

bool operator==(FileIdentity const& left, FileIdentity const& right)
{
    return left.device == right.device && left.inode == right.inode;
}

bool operator==(FileStamp const& left, FileStamp const& right)
{
    return left.identity == right.identity && left.size == right.size && left.hasLog == right.hasLog &&
           left.modified.tv_sec == right.modified.tv_sec && left.modified.tv_nsec == right.modified.tv_nsec;
}

/// Asks for no times: a file system with multigrain timestamps stores a fine-grained time at the next write only if the
/// time was asked for since the last one.
std::optional<FileIdentity> IdentityAt(char const* name) noexcept
{
#ifdef STATX_INO
    struct statx asked = {};
    if (::statx(AT_FDCWD, name, 0, STATX_INO, &asked) == 0)
        return FileIdentity{::makedev(asked.stx_dev_major, asked.stx_dev_minor), static_cast<ino_t>(asked.stx_ino)};
#endif
    struct stat status = {}; // an old kernel, or a sandbox, may not know statx
    if (::stat(name, &status) != 0)
        return std::nullopt;
    return IdentityOf(status);
}

FileIdentity IdentityOf(struct stat const& status) noexcept
{
    return {status.st_dev, status.st_ino};
}

} // namespace sync::database
