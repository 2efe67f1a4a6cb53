#pragma once

#include <optional>

#include <sys/stat.h>

namespace sync::database {

/// Which file a name stands for.
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
};

bool operator==(FileIdentity const& left, FileIdentity const& right);
inline bool operator!=(FileIdentity const& left, FileIdentity const& right)
{
    return !(left == right);
}

/// Tells whether a store's file was changed, without reading it.
struct FileStamp
{
    FileIdentity identity;
    off_t size = 0;
    timespec modified = {};
    bool hasLog = false;
};

bool operator==(FileStamp const& left, FileStamp const& right);
inline bool operator!=(FileStamp const& left, FileStamp const& right)
{
    return !(left == right);
}

/// Returns the identity of the file at a path; nothing if there is none, or none can be seen.
std::optional<FileIdentity> IdentityAt(char const* name) noexcept;
FileIdentity IdentityOf(struct stat const& status) noexcept;

} // namespace sync::database
