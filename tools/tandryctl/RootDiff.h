#pragma once

#include "DirectoryListing.h"
#include "DiskDifferences.h"
#include "RecordedPlaces.h"
#include "RecordsInOrder.h"
#include "ScanProblem.h"

#include "config/FolderConfiguration.h"

#include <QSet>
#include <QString>
#include <QVector>

#include <vector>

namespace tandryctl {

class Session;

/// Compares one root's folders and files on disk with their records, by the rules of `RootScan`, and writes nothing.
///
/// Records and disk are read in the same order, so that memory holds one directory, the names of those that are still
/// to be read, and a fixed number of records.
class RootDiff
{
public:
    RootDiff(Session& session,
             sync::config::FolderConfiguration const& root,
             DiskDifferences& differences,
             QVector<ScanProblem>& problems);

    /// Throws if the store or the temporary folder fails.
    void Run();

private:
    void _LoadRecords();
    /// Whether the folder at a path is the one on record, for the root and for mount points below it. If another one
    /// stands in its place, usually because a disk is not mounted, this is a problem, and nothing below it is compared.
    bool _IsRecordedFolder(QString const& path);
    void _CompareDirectory(QString const& path, std::vector<QString>& pending);
    void _CompareFile(QString const& path, FileOnDisk const& file);
    /// Returns the record of an entry on disk; null if there is none. The records before it are not on disk.
    RecordedEntry const* _FindRecord(QString const& path, EntryKind kind);
    /// Takes the current record as one that is not on disk.
    void _PassRecord();
    void _FindMissingMountPoints();
    void _LeaveOut(QString const& path, QString const& reason);
    void _AddDifference(DiskDifference::Change change, EntryKind kind, QString const& path);

    Session& _session;
    sync::config::FolderConfiguration const _root;
    DiskDifferences& _differences;
    QVector<ScanProblem>& _problems;
    RecordsInOrder _records;
    RecordedPlaces _places;
    /// The folders with a place on record that are not on disk.
    QSet<QString> _missingPlaces;
};

} // namespace tandryctl
