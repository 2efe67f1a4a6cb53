#pragma once

#include "DirectoryListing.h"
#include "FolderPlace.h"
#include "RecordedPlaces.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVector>

#include <optional>
#include <utility>
#include <vector>

namespace tandryctl {

class GeneratedFiles;
class Progress;
class Session;

struct ScanOptions
{
    bool prune = false;
    /// Pruning more than this part of a root's records, in percent, needs a confirmation.
    int maxPrune = 10;
    /// Leaves out the file systems that are mounted below a root.
    bool oneFileSystem = false;
    /// Takes a folder that stands in the place of the recorded one for the recorded one from now on.
    bool acceptNewFolder = false;
};

/// The results of a scan.
struct ScanCounts
{
    // Folders below the root; the root itself is not counted.
    int foldersAdded = 0;
    /// Folders that were recorded before the scan.
    int foldersThere = 0;
    /// Of these, the ones whose parent has been corrected.
    int foldersChanged = 0;
    int foldersPruned = 0;
    int filesAdded = 0;
    int filesChanged = 0;
    int filesUnchanged = 0;
    int filesPruned = 0;
    /// Generated files that were deleted from the disk.
    int filesDeleted = 0;
    int linksToDirectories = 0;
    int brokenLinks = 0;
    int specialFiles = 0;
    /// The mounts below the root that were read, and those that were left out, each with its type and source.
    QStringList mounts;
    QStringList mountsLeftOut;

    // Left undone by an interrupted scan.
    bool isInterrupted = false;
    /// Found, but new or changed and not recorded.
    int foldersNotRecorded = 0;
    int filesNotRecorded = 0;
    int foldersNotRead = 0;

    /// Whether a confirmation was needed and there was no terminal to ask for it.
    bool couldNotAsk = false;
    QVector<ScanProblem> problems;

    ScanCounts& operator+=(ScanCounts const& other);
};

/// Updates the records of one root's folders and files from the disk.
///
/// Compares the disk with the store while it reads, and writes the differences in portions, each a client transaction
/// of its own: other programs wait for a short while only, the log stays small, and a scan that ends early has recorded
/// what it wrote. Prunes when the whole root has been read.
///
/// The root and each mount point below it are held against the file system that they were recorded on. Where another
/// folder stands in their place, usually because a disk is not mounted, nothing is read and nothing pruned.
class RootScan
{
public:
    RootScan(Session& session, sync::config::FolderConfiguration const& root, ScanOptions const& options);

    /// Runs the scan, up to an interruption. Throws if the store fails; the portions before are then recorded.
    ScanCounts Run();

private:
    struct KnownFolder
    {
        int id;
        int parentId;
        bool onDisk = false;
    };
    struct KnownFile
    {
        int id;
        int folderId;
        qint64 size;
        QDateTime modified;
        bool onDisk = false;
    };
    struct PlannedFile
    {
        QString folder;
        FileOnDisk onDisk;
        std::optional<KnownFile> known;
    };
    struct PlannedPruning
    {
        std::vector<int> files;
        std::vector<int> folders;
    };

    void _LoadRecords();
    /// Returns whether the folder is the one that was recorded, or may take its place; remembers it then, and reports
    /// it otherwise.
    bool _IsRecordedFolder(QString const& label, QString const& path, FolderPlace const& place);
    bool _HasRecordsBelow(QString const& path) const;
    /// Reports the mount points that are gone from the disk with their folders, or forgets them if that is accepted.
    void _FindMissingMountPoints();
    void _ReportOtherFolder(QString const& path, QString const& difference);
    void _ReadAndRecord();
    /// Compares a directory's entries, adds its sub-directories to `pending` and returns the number of its files.
    qint64 _ReadDirectory(QString const& path, std::vector<QString>& pending);
    /// Returns whether the directory is to be read, and notes a mount.
    bool _Enter(QString const& path);
    void _CompareFolder(QString const& path, QString const& parent);
    void _CompareFile(QString const& folder, FileOnDisk const& file);

    /// Records what is planned in portions, up to an interruption; links only if `withLinks`.
    void _Record(bool withLinks);
    /// Takes up to this many entries from the front of the plan; returns how many.
    template <class Planned, class Write>
    int _RecordSome(std::vector<Planned>& planned, int most, Progress& progress, Write const& write);
    size_t _PlannedEntries(bool withLinks) const;
    void _AddFolder(QString const& path);
    void _Reparent(QString const& path, QString const& parent);
    void _WriteFile(PlannedFile const& planned);
    void _Fill(sync::config::FileConfiguration& file, PlannedFile const& planned) const;
    QString _RecordedTarget(QString const& folder, QString const& linkTarget) const;

    void _Prune();
    PlannedPruning _PlanPruning() const;
    bool _MayBeOnDisk(QString const& path) const;
    bool _LiesInIncomplete(QString const& path) const;
    bool _IsPruningConfirmed(PlannedPruning const& planned, GeneratedFiles const& generated);
    void _RemoveRecords(PlannedPruning const& planned);

    void _CountWhatIsLeft(std::vector<QString> const& pending);

    Session& _session;
    sync::config::FolderConfiguration const _root;
    QString const _rootPath;
    QString const _resolvedRootPath;
    ScanOptions const _options;
    std::optional<FolderPlace> const _rootPlace;
    ScanCounts _counts;

    QHash<QString, KnownFolder> _folders;
    QHash<QString, KnownFile> _files;
    /// The number of records before the scan.
    qint64 _recordsBefore = 0;
    RecordedPlaces _recorded;
    /// Those that are to be recorded, or forgotten.
    std::vector<std::pair<QString, std::optional<FolderOrigin>>> _newOrigins;
    /// The directories whose contents are not known.
    std::vector<QString> _incomplete;

    std::vector<QString> _newFolders;
    std::vector<std::pair<QString, QString>> _misplacedFolders;
    std::vector<PlannedFile> _plannedFiles;
    std::vector<PlannedFile> _plannedLinks;
};

} // namespace tandryctl
