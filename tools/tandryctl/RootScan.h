#pragma once

#include "DirectoryListing.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace tandryctl {

class Progress;
class Session;

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
    int linksToDirectories = 0;
    int brokenLinks = 0;
    int specialFiles = 0;
    QStringList problems;

    ScanCounts& operator+=(ScanCounts const& other);
};

/// Updates the records of one root's folders and files from the disk.
///
/// Reads the disk and compares it with the store before it writes the differences in one client transaction, so that
/// other programs wait for the writes only.
class RootScan
{
public:
    RootScan(Session& session, sync::config::FolderConfiguration const& root, bool prune);

    /// Runs the scan. Throws if the store fails; the root's records are then unchanged.
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

    void _LoadRecords();
    void _ReadDisk();
    /// Compares a directory's entries, adds its sub-directories to `pending` and returns the number of its files.
    qint64 _ReadDirectory(QString const& path, std::vector<QString>& pending);
    void _CompareFolder(QString const& path, QString const& parent);
    void _CompareFile(QString const& folder, FileOnDisk const& file);
    void _PlanPruning();
    bool _MayBeOnDisk(QString const& path) const;

    void _Write();
    void _AddFolder(QString const& path);
    void _Reparent(QString const& path, QString const& parent);
    void _WriteFile(PlannedFile const& planned);
    void _Fill(sync::config::FileConfiguration& file, PlannedFile const& planned) const;
    QString _RecordedTarget(QString const& folder, QString const& linkTarget) const;

    Session& _session;
    sync::config::FolderConfiguration const _root;
    QString const _rootPath;
    QString const _resolvedRootPath;
    bool const _prune;
    ScanCounts _counts;

    QHash<QString, KnownFolder> _folders;
    QHash<QString, KnownFile> _files;
    std::vector<QString> _incomplete;

    std::vector<QString> _newFolders;
    std::vector<std::pair<QString, QString>> _misplacedFolders;
    std::vector<PlannedFile> _plannedFiles;
    std::vector<PlannedFile> _plannedLinks;
    std::vector<int> _filesToRemove;
    std::vector<int> _foldersToRemove;
};

} // namespace tandryctl
