#include "database/file/FileIdentity.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

namespace sync::database {

static_assert(sizeof(off_t) == 8 && sizeof(time_t) == 8, "cmake/TandryOptions.cmake asks for types of 64 bits");

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
std::optional<FileStatus> StatusAt(char const* name) noexcept
{
#ifdef STATX_INO
    struct statx asked = {};
    if (::statx(AT_FDCWD, name, 0, STATX_INO | STATX_NLINK | STATX_SIZE, &asked) == 0)
        return FileStatus{{::makedev(asked.stx_dev_major, asked.stx_dev_minor), static_cast<ino_t>(asked.stx_ino)},
                          asked.stx_nlink,
                          static_cast<off_t>(asked.stx_size)};
#endif
    struct stat status = {}; // an old kernel, or a sandbox, may not know statx
    if (::stat(name, &status) != 0)
        return std::nullopt;
    return FileStatus{IdentityOf(status), status.st_nlink, status.st_size};
}

std::optional<FileIdentity> IdentityAt(char const* name) noexcept
{
    std::optional<FileStatus> const status = StatusAt(name);
    return status ? std::optional(status->identity) : std::nullopt;
}

FileIdentity IdentityOf(struct stat const& status) noexcept
{
    return {status.st_dev, status.st_ino};
}

} // namespace sync::database
