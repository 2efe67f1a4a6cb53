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

/// What a scan found and did.
struct ScanCounts
{
    /// Folders below the root, on record before the scan or because of it; the root itself is in neither.
    int foldersAdded = 0;
    int foldersThere = 0;
    /// Of those that were there: hung below their parent again.
    int foldersChanged = 0;
    int foldersPruned = 0;
    int filesAdded = 0;
    int filesChanged = 0;
    int filesUnchanged = 0;
    int filesPruned = 0;
    int linksToDirectories = 0;
    int brokenLinks = 0;
    int specials = 0;
    QStringList problems;

    ScanCounts& operator+=(ScanCounts const& other);
};

/// Brings one root's folders and files on record in line with the disk.
///
/// The disk is read and compared with the store first, and then all that differs is written in one bracket, so that
/// other programs wait for the writing alone.
class RootScan
{
public:
    RootScan(Session& session, sync::config::FolderConfiguration const& root, bool prune);

    /// Throws when the store fails, and then the root's records are as they were.
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

    void _LoadRecorded();
    void _ReadDisk();
    /// Returns how many files there are in it.
    qint64 _ReadDirectory(QString const& path, std::vector<QString>& open);
    void _CompareFolder(QString const& path, QString const& parent);
    void _CompareFile(QString const& folder, FileOnDisk const& file);
    void _PlanPruning();
    bool _MayBeOnDisk(QString const& path) const;

    void _Write();
    void _AddFolder(QString const& path);
    void _HangBelowParent(QString const& path, QString const& parent);
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
    std::vector<std::pair<QString, QString>> _strayFolders;
    std::vector<PlannedFile> _plannedFiles;
    std::vector<PlannedFile> _plannedLinks;
    std::vector<int> _goneFiles;
    std::vector<int> _goneFolders;
};

} // namespace tandryctl
