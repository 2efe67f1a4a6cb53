#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tandryctl {

/// A file as the file system tells of it; of a symbolic link, the link itself. Times in milliseconds UTC since 1970.
struct FileOnDisk
{
    QString name;
    qint64 size = 0;
    qint64 modifiedMsec = 0;
    /// Nothing where the file system keeps no time of birth.
    std::optional<qint64> createdMsec;
    /// Where a symbolic link points, as it stands there; null for a regular file.
    QString linkTarget;
};

/// What stands directly in one directory, in the order of names. Symbolic links to directories are counted and not
/// followed.
struct DirectoryListing
{
    QStringList directories;
    std::vector<FileOnDisk> files;
    int linksToDirectories = 0;
    int brokenLinks = 0;
    /// Sockets, pipes and devices, and links to them.
    int specials = 0;
    /// What could not be read or can't be recorded, in words for the user.
    QStringList problems;
    /// False when there may be more in the directory than stands here.
    bool complete = true;
};

/// A directory that is gone or can't be read gives an empty listing with a problem.
DirectoryListing ListDirectory(QString const& path);

} // namespace tandryctl
