#include "RootScan.h"

#include "Lookups.h"
#include "Paths.h"
#include "Progress.h"
#include "Session.h"
#include "Text.h"

#include "config/FileLink.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileLink;
using sync::config::FolderConfiguration;

namespace {

QDateTime AsUtc(qint64 msec)
{
    return QDateTime::fromMSecsSinceEpoch(msec, Qt::UTC);
}

} // namespace

ScanCounts& ScanCounts::operator+=(ScanCounts const& other)
{
    foldersAdded += other.foldersAdded;
    foldersThere += other.foldersThere;
    foldersChanged += other.foldersChanged;
    foldersPruned += other.foldersPruned;
    filesAdded += other.filesAdded;
    filesChanged += other.filesChanged;
    filesUnchanged += other.filesUnchanged;
    filesPruned += other.filesPruned;
    linksToDirectories += other.linksToDirectories;
    brokenLinks += other.brokenLinks;
    specialFiles += other.specialFiles;
    problems += other.problems;
    return *this;
}

RootScan::RootScan(Session& session, FolderConfiguration const& root, bool prune)
    : _session(session)
    , _root(root)
    , _rootPath(root.getClientPath())
    , _resolvedRootPath(QFileInfo(_rootPath).canonicalFilePath())
    , _prune(prune)
{}

ScanCounts RootScan::Run()
{
    if (!QFileInfo(_rootPath).isDir()) {
        // Not pruned: the disk may just not be mounted.
        _counts.problems.append(QStringLiteral("%1 is not a directory on disk; its records are unchanged")
                                    .arg(Label("root", _root.getId(), _rootPath)));
        return _counts;
    }
    _LoadRecords();
    _ReadDisk();
    if (_prune)
        _PlanPruning();
    _Write();
    return _counts;
}

void RootScan::_LoadRecords()
{
    // Two listings and a hash cost a fraction of a look-up for each entry on disk.
    for (FolderConfiguration const& folder :
         _session.Checked(_session.folders().GetFolderConfigurationsByRootId(_root.getId()))) {
        if (!_folders.contains(folder.getClientPath()))
            _folders.insert(folder.getClientPath(), {folder.getId(), folder.getParentId()});
    }
    _folders.insert(_rootPath, {_root.getId(), 0, true});

    QVector<FileConfiguration> const files = _session.Checked(
        _session.files().GetFileConfigurationsByRootFolderId(_root.getId(), sync::config::FileConfigurationTypeFile));
    _files.reserve(files.size());
    for (FileConfiguration const& file : files) {
        if (!_files.contains(file.clientPath))
            _files.insert(file.clientPath, {file.id, file.folderConfigurationId, file.size, file.lastModifiedDateTime});
    }
}

void RootScan::_ReadDisk()
{
    Progress progress(QStringLiteral("reading"), "files");
    std::vector<QString> pending{_rootPath}; // not recursive: a tree may be too deep for the stack
    while (!pending.empty()) {
        QString const path = std::move(pending.back());
        pending.pop_back();
        progress.Advance(_ReadDirectory(path, pending));
    }
}

qint64 RootScan::_ReadDirectory(QString const& path, std::vector<QString>& pending)
{
    DirectoryListing const listing = ListDirectory(path);
    _counts.linksToDirectories += listing.linksToDirectories;
    _counts.brokenLinks += listing.brokenLinks;
    _counts.specialFiles += listing.specialFiles;
    _counts.problems += listing.problems;
    if (!listing.complete)
        _incomplete.push_back(path);

    for (QString const& name : listing.directories)
        _CompareFolder(ChildPath(path, name), path);
    for (FileOnDisk const& file : listing.files)
        _CompareFile(path, file);
    for (auto name = listing.directories.crbegin(); name != listing.directories.crend(); ++name)
        pending.push_back(ChildPath(path, *name)); // in reverse, so that the first name is read first
    return qint64(listing.files.size());
}

void RootScan::_CompareFolder(QString const& path, QString const& parent)
{
    auto const known = _folders.find(path);
    if (known == _folders.end()) {
        _newFolders.push_back(path);
        return;
    }
    known->onDisk = true;
    ++_counts.foldersThere;
    auto const knownParent = _folders.constFind(parent);
    if (knownParent == _folders.constEnd() || knownParent->id != known->parentId)
        _misplacedFolders.emplace_back(path, parent);
}

void RootScan::_CompareFile(QString const& folder, FileOnDisk const& file)
{
    auto& planned = file.linkTarget.isNull() ? _plannedFiles : _plannedLinks;
    auto const known = _files.find(ChildPath(folder, file.name));
    if (known == _files.end()) {
        planned.push_back({folder, file, std::nullopt});
        return;
    }
    known->onDisk = true;
    auto const knownFolder = _folders.constFind(folder);
    bool const isInPlace = knownFolder != _folders.constEnd() && knownFolder->id == known->folderId;
    if (isInPlace && known->size == file.size && known->modified == AsUtc(file.modifiedMsec))
        ++_counts.filesUnchanged;
    else
        planned.push_back({folder, file, *known});
}

void RootScan::_PlanPruning()
{
    for (auto file = _files.cbegin(); file != _files.cend(); ++file) {
        if (!file->onDisk && !_MayBeOnDisk(file.key()))
            _filesToRemove.push_back(file->id);
    }
    for (auto folder = _folders.cbegin(); folder != _folders.cend(); ++folder) {
        if (!folder->onDisk && !_MayBeOnDisk(folder.key()))
            _foldersToRemove.push_back(folder->id);
    }
}

bool RootScan::_MayBeOnDisk(QString const& path) const
{
    return std::any_of(_incomplete.begin(), _incomplete.end(), [&](QString const& directory) {
        return LiesIn(path, directory, Qt::CaseSensitive);
    });
}

void RootScan::_Write()
{
    size_t const total = _newFolders.size() + _misplacedFolders.size() + _plannedFiles.size() + _plannedLinks.size() +
                         _filesToRemove.size() + _foldersToRemove.size();
    if (total == 0)
        return;

    Progress progress(QStringLiteral("recording"), "records", qint64(total));
    ClientTransaction transaction(_session);
    for (QString const& path : _newFolders) {
        _AddFolder(path);
        progress.Advance();
    }
    for (auto const& [path, parent] : _misplacedFolders) {
        _Reparent(path, parent);
        progress.Advance();
    }
    // Links last, when their targets have been recorded.
    for (auto const* files : {&_plannedFiles, &_plannedLinks}) {
        for (PlannedFile const& planned : *files) {
            _WriteFile(planned);
            progress.Advance();
        }
    }
    for (int const id : _filesToRemove) {
        _session.CheckWritten(_session.files().RemoveFileConfigurationAndLinkedConfigurations(id));
        ++_counts.filesPruned;
        progress.Advance();
    }
    for (int const id : _foldersToRemove) {
        _session.CheckWritten(_session.folders().Remove(id));
        ++_counts.foldersPruned;
        progress.Advance();
    }
    transaction.Commit();
}

void RootScan::_AddFolder(QString const& path)
{
    if (!_folders.contains(QFileInfo(path).absolutePath()))
        return; // a problem of its parent has been reported
    FolderConfiguration const folder = _session.Checked(_session.folders().AddFolderAndParent(path, _root));
    if (folder.getId() == -1 || folder.getRootId() != _root.getId()) {
        _counts.problems.append(folder.getId() == -1 ? QStringLiteral("%1 cannot be recorded below %2")
                                                           .arg(Quoted(path), Label("root", _root.getId(), _rootPath))
                                                     : QStringLiteral("%1 is already recorded in root %2")
                                                           .arg(Quoted(path), QString::number(folder.getRootId())));
        return;
    }
    _folders.insert(path, {folder.getId(), folder.getParentId(), true});
    ++_counts.foldersAdded;
}

void RootScan::_Reparent(QString const& path, QString const& parent)
{
    auto const knownParent = _folders.constFind(parent);
    if (knownParent == _folders.constEnd())
        return;
    FolderConfiguration folder =
        _session.Checked(_session.folders().GetFolderConfigurationById(_folders.value(path).id));
    folder.setParentId(knownParent->id);
    _session.CheckWritten(_session.folders().Update(folder));
    ++_counts.foldersChanged;
}

void RootScan::_WriteFile(PlannedFile const& planned)
{
    if (!_folders.contains(planned.folder))
        return; // a problem of its folder has been reported

    FileConfiguration file;
    if (planned.known)
        file = _session.Checked(_session.files().GetFileConfigurationById(planned.known->id));
    _Fill(file, planned);
    if (planned.known) {
        _session.CheckWritten(_session.files().Update(file));
        ++_counts.filesChanged;
    }
    else {
        _session.CheckWritten(_session.files().Add(file));
        ++_counts.filesAdded;
    }
}

void RootScan::_Fill(FileConfiguration& file, PlannedFile const& planned) const
{
    FileOnDisk const& onDisk = planned.onDisk;
    file.name = onDisk.name;
    file.clientPath = ChildPath(planned.folder, onDisk.name);
    file.serverPath = ServerPathIn(_root, file.clientPath);
    file.folderConfigurationId = _folders.value(planned.folder).id;
    file.rootFolderId = _root.getId();
    file.size = onDisk.size;
    file.lastModifiedDateTime = AsUtc(onDisk.modifiedMsec);
    file.createdDateTime = onDisk.createdMsec ? AsUtc(*onDisk.createdMsec) : QDateTime();
    file.setSyncStatus(sync::config::FileSyncStatusNotSynced);
    if (!planned.known)
        file.productConfigurationId = _root.getProductConfigurationId();

    file.fileLinks.clear();
    if (!onDisk.linkTarget.isNull()) {
        FileLink link;
        link.path = _RecordedTarget(planned.folder, onDisk.linkTarget);
        file.fileLinks.append(link);
    }
}

QString RootScan::_RecordedTarget(QString const& folder, QString const& linkTarget) const
{
    // Files are recorded by paths without links, so a target behind another link is stored by its resolved path.
    QString const asWritten =
        QDir::cleanPath(linkTarget.startsWith(QLatin1Char('/')) ? linkTarget : ChildPath(folder, linkTarget));
    QString const resolved = QFileInfo(asWritten).canonicalFilePath();
    if (resolved.isEmpty() || !LiesIn(resolved, _resolvedRootPath, Qt::CaseSensitive))
        return linkTarget;
    QString const recorded = ChildPath(_rootPath, QDir(_resolvedRootPath).relativeFilePath(resolved));
    return recorded == asWritten ? linkTarget : recorded;
}

} // namespace tandryctl
