#pragma once

#include "FolderPlace.h"

#include <QMap>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace tandryctl {

/// The file systems that a root and the mount points below it were recorded on: what tells a folder that stands at a
/// path now from the recorded one, usually because a disk is not mounted.
struct RecordedPlaces
{
    QString rootPath;
    /// By the path of the folder.
    QMap<QString, FolderOrigin> origins;
    /// Returns the number of records below the root.
    std::function<qint64()> countRecords;
    /// Returns whether there are records below a path.
    std::function<bool(QString const& path)> hasRecordsBelow;

    /// Returns what tells the folder from the recorded one, as the predicate of a sentence; an empty text if nothing
    /// does.
    QString DifferenceFromRecord(QString const& path, FolderOrigin const& now) const;

    /// Returns a sentence about a mount point that is missing on disk.
    QString MissingMountPoint(QString const& path) const;
};

} // namespace tandryctl
