#include "RootScan.h"

#include "GeneratedFiles.h"
#include "Interruption.h"
#include "Lookups.h"
#include "Paths.h"
#include "Progress.h"
#include "Session.h"
#include "StoreQueries.h"
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

/// Entries that are written in one transaction: enough for speed, and few enough for a short log.
constexpr int PortionEntries = 10'000;

/// A root with fewer records is pruned without a confirmation.
constexpr int FewRecords = 20;

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
    filesDeleted += other.filesDeleted;
    linksToDirectories += other.linksToDirectories;
    brokenLinks += other.brokenLinks;
    specialFiles += other.specialFiles;
    mounts += other.mounts;
    mountsLeftOut += other.mountsLeftOut;
    isInterrupted = isInterrupted || other.isInterrupted;
    foldersNotRecorded += other.foldersNotRecorded;
    filesNotRecorded += other.filesNotRecorded;
    foldersNotRead += other.foldersNotRead;
    couldNotAsk = couldNotAsk || other.couldNotAsk;
    problems += other.problems;
    return *this;
}

RootScan::RootScan(Session& session, FolderConfiguration const& root, ScanOptions const& options)
    : _session(session)
    , _root(root)
    , _rootPath(root.getClientPath())
    , _resolvedRootPath(QFileInfo(_rootPath).canonicalFilePath())
    , _options(options)
    , _rootPlace(FolderPlace::Of(_rootPath))
{
    _recorded.rootPath = _rootPath;
    _recorded.countRecords = [this] { return _recordsBefore; };
    _recorded.hasRecordsBelow = [this](QString const& path) { return _HasRecordsBelow(path); };
}

ScanCounts RootScan::Run()
{
    if (!_rootPlace) {
        // Not pruned: the disk may just not be mounted.
        _counts.problems.append({_rootPath,
                                 QStringLiteral("%1 is not a directory on disk and its records are unchanged")
                                     .arg(Label("root", _root.getId(), _rootPath)),
                                 QStringLiteral("mount its disk or put it back, then scan again")});
        return _counts;
    }
    _LoadRecords();
    if (!_IsRecordedFolder(Label("root", _root.getId(), _rootPath), _rootPath, *_rootPlace))
        return _counts;
    _ReadAndRecord();
    if (_options.prune && !_counts.isInterrupted)
        _Prune();
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
    _recordsBefore = _folders.size() - 1 + _files.size();

    auto const origins = _session.Checked(_session.queries().FolderOrigins());
    for (auto folder = _folders.cbegin(); folder != _folders.cend() && !origins.isEmpty(); ++folder) {
        if (auto const origin = origins.constFind(folder->id); origin != origins.cend())
            _recorded.origins.insert(folder.key(), *origin);
    }
}

bool RootScan::_IsRecordedFolder(QString const& label, QString const& path, FolderPlace const& place)
{
    FolderOrigin const now = place.Origin();
    auto const known = _recorded.origins.constFind(path);
    if (known != _recorded.origins.cend() && *known == now)
        return true;
    QString const difference = _recorded.DifferenceFromRecord(path, now);
    if (!difference.isEmpty() && !_options.acceptNewFolder) {
        _ReportOtherFolder(path, label + QLatin1Char(' ') + difference);
        _incomplete.push_back(path);
        return false;
    }
    bool const isRemembered = path == _rootPath || place.isMountPoint();
    _newOrigins.emplace_back(path, isRemembered ? std::make_optional(now) : std::nullopt);
    return true;
}

bool RootScan::_HasRecordsBelow(QString const& path) const
{
    auto const hasBelow = [&](auto const& records) {
        return std::any_of(records.keyBegin(), records.keyEnd(), [&](QString const& record) {
            return record != path && LiesIn(record, path, Qt::CaseSensitive);
        });
    };
    return hasBelow(_folders) || hasBelow(_files);
}

void RootScan::_FindMissingMountPoints()
{
    for (auto origin = _recorded.origins.cbegin(); origin != _recorded.origins.cend(); ++origin) {
        if (_folders.value(origin.key()).onDisk || _LiesInIncomplete(origin.key()))
            continue;
        if (_options.acceptNewFolder) {
            _newOrigins.emplace_back(origin.key(), std::nullopt);
            continue;
        }
        _ReportOtherFolder(origin.key(), _recorded.MissingMountPoint(origin.key()));
        _incomplete.push_back(origin.key());
    }
}

void RootScan::_ReportOtherFolder(QString const& path, QString const& difference)
{
    _counts.problems.append({path,
                             difference,
                             QStringLiteral("its records are unchanged: mount its disk, or give --accept-new-folder if "
                                            "it is to be recorded as it is now")});
}

void RootScan::_ReadAndRecord()
{
    Progress progress(QStringLiteral("reading"), "files");
    std::vector<QString> pending{_rootPath}; // not recursive: a tree may be too deep for the stack
    while (!pending.empty() && !Interruption::IsRequested()) {
        QString const path = std::move(pending.back());
        pending.pop_back();
        if (_Enter(path))
            progress.Advance(_ReadDirectory(path, pending));
        if (_PlannedEntries(false) >= PortionEntries)
            _Record(false);
    }
    if (pending.empty()) {
        _FindMissingMountPoints();
        _Record(true); // links last, when their targets are on record
    }
    if (Interruption::IsRequested())
        _CountWhatIsLeft(pending);
}

bool RootScan::_Enter(QString const& path)
{
    auto const place = path == _rootPath ? std::nullopt : FolderPlace::Of(path);
    if (!place) // one that cannot be examined is reported when it is read
        return true;
    bool const isLeftOut = _options.oneFileSystem && !place->isOnSameFileSystem(*_rootPlace);
    if (isLeftOut)
        _incomplete.push_back(path);
    else if ((place->isMountPoint() || _recorded.origins.contains(path)) &&
             !_IsRecordedFolder(QStringLiteral("the folder ") + Quoted(path), path, *place))
        return false;
    if (isLeftOut || place->isMountPoint())
        (isLeftOut ? _counts.mountsLeftOut : _counts.mounts)
            .append(QStringLiteral("%1 (%2)").arg(Quoted(path), Printable(place->MountText())));
    return !isLeftOut;
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

size_t RootScan::_PlannedEntries(bool withLinks) const
{
    return _newFolders.size() + _newOrigins.size() + _misplacedFolders.size() + _plannedFiles.size() +
           (withLinks ? _plannedLinks.size() : 0);
}

template <class Planned, class Write>
int RootScan::_RecordSome(std::vector<Planned>& planned, int most, Progress& progress, Write const& write)
{
    auto const end = planned.begin() + std::min(most, int(planned.size()));
    auto entry = planned.begin();
    for (; entry != end && !Interruption::IsRequested(); ++entry) {
        write(*entry);
        progress.Advance();
    }
    auto const count = int(entry - planned.begin());
    planned.erase(planned.begin(), entry);
    return count;
}

void RootScan::_Record(bool withLinks)
{
    Progress progress(QStringLiteral("recording"), "records", qint64(_PlannedEntries(withLinks)));
    while (_PlannedEntries(withLinks) > 0 && !Interruption::IsRequested()) {
        ClientTransaction transaction(_session);
        int left = PortionEntries;
        left -= _RecordSome(_newFolders, left, progress, [&](QString const& path) { _AddFolder(path); });
        left -= _RecordSome(_newOrigins, left, progress, [&](auto const& folder) {
            auto const known = _folders.constFind(folder.first);
            if (known != _folders.cend()) // else a problem of the folder has been reported
                _session.CheckWritten(_session.queries().SetFolderOrigin(known->id, folder.second));
        });
        left -= _RecordSome(
            _misplacedFolders, left, progress, [&](auto const& folder) { _Reparent(folder.first, folder.second); });
        for (auto* files : {&_plannedFiles, withLinks ? &_plannedLinks : nullptr}) {
            if (files != nullptr)
                left -= _RecordSome(*files, left, progress, [&](PlannedFile const& file) { _WriteFile(file); });
        }
        transaction.Commit();
    }
}

void RootScan::_CountWhatIsLeft(std::vector<QString> const& pending)
{
    _counts.isInterrupted = true;
    _counts.foldersNotRecorded = int(_newFolders.size());
    _counts.filesNotRecorded = int(_plannedFiles.size() + _plannedLinks.size());
    _counts.foldersNotRead = int(pending.size());
}

void RootScan::_Prune()
{
    PlannedPruning const planned = _PlanPruning();
    if (planned.files.empty() && planned.folders.empty())
        return;
    GeneratedFiles generated(_session);
    for (int const id : planned.files)
        generated.AddOf(id);
    generated.List();
    if (_IsPruningConfirmed(planned, generated))
        _RemoveRecords(planned);
}

RootScan::PlannedPruning RootScan::_PlanPruning() const
{
    PlannedPruning planned;
    for (auto file = _files.cbegin(); file != _files.cend(); ++file) {
        if (!file->onDisk && !_MayBeOnDisk(file.key()))
            planned.files.push_back(file->id);
    }
    for (auto folder = _folders.cbegin(); folder != _folders.cend(); ++folder) {
        if (!folder->onDisk && !_MayBeOnDisk(folder.key()))
            planned.folders.push_back(folder->id);
    }
    return planned;
}

bool RootScan::_MayBeOnDisk(QString const& path) const
{
    return _LiesInIncomplete(path) || std::any_of(_incomplete.begin(), _incomplete.end(), [&](auto const& directory) {
               return LiesIn(directory, path, Qt::CaseSensitive); // a parent of records that stay
           });
}

bool RootScan::_LiesInIncomplete(QString const& path) const
{
    return std::any_of(_incomplete.begin(), _incomplete.end(), [&](QString const& directory) {
        return LiesIn(path, directory, Qt::CaseSensitive);
    });
}

bool RootScan::_IsPruningConfirmed(PlannedPruning const& planned, GeneratedFiles const& generated)
{
    auto const count = qint64(planned.files.size() + planned.folders.size());
    bool const isMuch = _recordsBefore >= FewRecords && count * 100 > _recordsBefore * _options.maxPrune;
    if (!isMuch && generated.count() == 0)
        return true;

    QString const root = Label("root", _root.getId(), _rootPath);
    QString what = QStringLiteral("%1 and %2 of %3, %4 of its %5 records")
                       .arg(Counted(qint64(planned.files.size()), "file", "files"),
                            Counted(qint64(planned.folders.size()), "folder", "folders"),
                            root,
                            QString::number(count),
                            QString::number(_recordsBefore));
    if (generated.count() > 0)
        what += QStringLiteral(", and delete %1 from the disk")
                    .arg(Counted(generated.count(), "generated file", "generated files"));
    switch (_session.AskFor(QStringLiteral("Prune %1?").arg(what))) {
    case Consent::Given:
        return true;
    case Consent::Denied:
        _counts.problems.append({_rootPath,
                                 QStringLiteral("nothing was pruned in ") + root,
                                 QStringLiteral("answer y to prune its records")});
        return false;
    case Consent::CannotAsk:
        break;
    }
    _counts.couldNotAsk = true;
    _counts.problems.append({_rootPath,
                             QStringLiteral("this would prune ") + what,
                             QStringLiteral("without a terminal to confirm it, give --yes") +
                                 QLatin1String(generated.count() == 0 ? " or a higher --max-prune" : "")});
    return false;
}

void RootScan::_RemoveRecords(PlannedPruning const& planned)
{
    Progress progress(QStringLiteral("pruning"), "records", qint64(planned.files.size() + planned.folders.size()));
    auto file = planned.files.begin();
    auto folder = planned.folders.begin();
    while ((file != planned.files.end() || folder != planned.folders.end()) && !Interruption::IsRequested()) {
        GeneratedFiles generated(_session);
        ClientTransaction transaction(_session);
        int left = PortionEntries;
        for (; file != planned.files.end() && left > 0; ++file, --left) {
            generated.RemoveRecords(*file);
            ++_counts.filesPruned;
            progress.Advance();
        }
        for (; folder != planned.folders.end() && left > 0; ++folder, --left) {
            _session.CheckWritten(_session.folders().Remove(*folder));
            ++_counts.foldersPruned;
            progress.Advance();
        }
        _session.CheckWritten(_session.queries().RemoveOriginsOfMissingFolders());
        transaction.Commit();
        _counts.filesDeleted += generated.Delete(_counts.problems);
    }
    _counts.isInterrupted = Interruption::IsRequested();
}

void RootScan::_AddFolder(QString const& path)
{
    if (!_folders.contains(QFileInfo(path).absolutePath()))
        return; // a problem of its parent has been reported
    FolderConfiguration const folder = _session.Checked(_session.folders().AddFolderAndParent(path, _root));
    if (folder.getId() == -1 || folder.getRootId() != _root.getId()) {
        bool const isElsewhere = folder.getId() != -1;
        int const root = isElsewhere ? folder.getRootId() : _root.getId();
        _counts.problems.append({path,
                                 QStringLiteral("%1 %2 root %3")
                                     .arg(Quoted(path),
                                          isElsewhere ? QStringLiteral("is already recorded in")
                                                      : QStringLiteral("cannot be recorded below"),
                                          QString::number(root)),
                                 See(QStringLiteral("tree %1").arg(root))});
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
