#pragma once

#include <optional>

#include <sys/stat.h>

namespace sync::database {

/// Identifies a file, whatever its names.
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

inline bool operator<(FileIdentity const& left, FileIdentity const& right)
{
    return left.device != right.device ? left.device < right.device : left.inode < right.inode;
}

/// A file's identity, number of names and size, as found by its name.
struct FileStatus
{
    FileIdentity identity;
    /// How many names (hard links) the file has.
    nlink_t names = 0;
    off_t size = 0;
};

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

/// Return nothing if there is no file at the path, or if this process may not look it up.
std::optional<FileStatus> StatusAt(char const* name) noexcept;
std::optional<FileIdentity> IdentityAt(char const* name) noexcept;
FileIdentity IdentityOf(struct stat const& status) noexcept;

} // namespace sync::database
