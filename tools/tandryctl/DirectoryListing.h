#pragma once

#include "ScanProblem.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>
#include <vector>

namespace tandryctl {

/// A regular file or a symbolic link on disk; for a link, size and times are those of the link itself. Times are in
/// milliseconds since 1970, UTC.
struct FileOnDisk
{
    QString name;
    qint64 size = 0;
    qint64 modifiedMsec = 0;
    /// Empty if the file system does not store creation times.
    std::optional<qint64> createdMsec;
    /// The link's target as stored in it; null for a regular file.
    QString linkTarget;
};

/// The entries of one directory, sorted by name. Symbolic links to directories are counted but not followed.
struct DirectoryListing
{
    QStringList directories;
    std::vector<FileOnDisk> files;
    int linksToDirectories = 0;
    int brokenLinks = 0;
    /// The number of sockets, pipes and devices, and of links to them.
    int specialFiles = 0;
    QVector<ScanProblem> problems;
    /// False if the directory may have entries that are missing here.
    bool complete = true;
};

/// Reads a directory. If it is missing or unreadable, returns an empty listing with a problem.
DirectoryListing ListDirectory(QString const& path);

} // namespace tandryctl
