#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

namespace tandryctl {

/// The file system that a folder is on, and the folder's inode there: what tells a folder from another one that stands
/// in its place.
struct FolderOrigin
{
    /// Stays the same over reboots, unlike device numbers; see `FolderPlace::Origin`.
    QString fileSystem;
    /// 0 on file systems whose inodes change when they are mounted again.
    qint64 inode = 0;

    bool operator==(FolderOrigin const& other) const { return fileSystem == other.fileSystem && inode == other.inode; }
    bool operator!=(FolderOrigin const& other) const { return !(*this == other); }
};

/// A folder's place among the mounts.
class FolderPlace
{
public:
    /// Returns nothing if there is no such folder or if it cannot be examined.
    static std::optional<FolderPlace> Of(QString const& path);

    /// Whether a file system is mounted here, part of one included.
    bool isMountPoint() const { return _isMountPoint; }
    bool isOnSameFileSystem(FolderPlace const& other) const { return _device == other._device; }

    /// Returns the origin. The file system is named by the first of these that is known: the UUID under which the
    /// device is listed, an id that the file system keeps on its device, or its type and source, such as "nfs4
    /// server:/export".
    FolderOrigin Origin() const;
    /// Returns the type and the source of the mount for messages, such as "ext4 /dev/sdb1".
    QString MountText() const;

private:
    FolderPlace() = default;

    QString _path;
    quint64 _device = 0;
    quint64 _inode = 0;
    quint64 _mountId = 0;
    bool _isMountPoint = false;
};

} // namespace tandryctl
