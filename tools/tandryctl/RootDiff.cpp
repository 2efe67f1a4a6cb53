#include "RootDiff.h"

#include "FolderPlace.h"
#include "Paths.h"
#include "Session.h"
#include "StoreQueries.h"
#include "Text.h"

#include "config/FileConfiguration.h"
#include "config/RecordColumns.h"
#include "database/StoreFactory.h"
#include "tools/findings/FileRows.h"

#include <QDateTime>
#include <QHash>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FindRecordColumn;
using sync::config::FolderConfiguration;
using tandry::findings::FileColumn;
using tandry::findings::FileConditions;
using tandry::findings::FileRows;
using Change = DiskDifference::Change;

RootDiff::RootDiff(Session& session,
                   FolderConfiguration const& root,
                   DiskDifferences& differences,
                   QVector<ScanProblem>& problems)
    : _session(session)
    , _root(root)
    , _differences(differences)
    , _problems(problems)
{}

void RootDiff::Run()
{
    _LoadRecords();
    std::vector<QString> pending{_root.getClientPath()}; // not recursive: a tree may be too deep for the stack
    while (!pending.empty()) {
        QString const path = pending.back();
        pending.pop_back();
        while (_records.IsBeforeFolder(ChildPath(path, {})))
            _PassRecord();
        if (_IsRecordedFolder(path))
            _CompareDirectory(path, pending);
    }
    while (_records.current() != nullptr)
        _PassRecord();
    _FindMissingMountPoints();
}

void RootDiff::_LoadRecords()
{
    QHash<int, FolderOrigin> const origins = _session.Checked(_session.queries().FolderOrigins());
    bool const hasFolders = _session.queries().ReadFoldersOf(_root.getId(), [&](int id, QString const& path) {
        if (id != _root.getId())
            _records.Add(RecordedEntry::At(path, EntryKind::Folder));
        if (auto const origin = origins.constFind(id); origin != origins.cend())
            _places.origins.insert(path, *origin);
    });
    static_cast<void>(_session.Checked(hasFolders));

    FileConditions conditions;
    conditions.root = _root.getId();
    QVector<FileColumn const*> columns;
    for (char const* name : {"clientPath", "size", "lastModifiedDateTime"})
        columns.append(FindRecordColumn<FileConfiguration>(QLatin1String(name)));
    FileRows files(_session.store(), conditions, columns);
    files.Read([this](FileRows::Row const& row) {
        RecordedEntry file = RecordedEntry::At(row[0].toString(), EntryKind::File);
        file.size = row[1].toLongLong();
        file.modified = row[2].toDateTime();
        _records.Add(std::move(file));
    });
    static_cast<void>(_session.Checked(files.works()));
    _records.Begin();

    _places.rootPath = _root.getClientPath();
    _places.countRecords = [this] { return _records.Count(); };
    _places.hasRecordsBelow = [this](QString const& path) { // asked when the records before those are passed
        return _records.current() != nullptr && _records.current()->path.startsWith(ChildPath(path, {}));
    };
}

bool RootDiff::_IsRecordedFolder(QString const& path)
{
    auto const place = FolderPlace::Of(path); // one that cannot be examined is reported when it is read
    bool const mayDiffer =
        place && (path == _places.rootPath || place->isMountPoint() || _places.origins.contains(path));
    QString const difference = mayDiffer ? _places.DifferenceFromRecord(path, place->Origin()) : QString();
    if (difference.isEmpty())
        return true;
    _LeaveOut(path, QStringLiteral("%1 %2").arg(Quoted(path), difference));
    return false;
}

void RootDiff::_CompareDirectory(QString const& path, std::vector<QString>& pending)
{
    DirectoryListing const listing = ListDirectory(path);
    _problems += listing.problems;
    if (!listing.complete)
        _differences.LeaveOut(_root.getId(), path);
    for (QString const& name : listing.directories) {
        QString const child = ChildPath(path, name);
        if (_FindRecord(child, EntryKind::Folder) == nullptr)
            _AddDifference(Change::Added, EntryKind::Folder, child);
        else
            _records.Advance();
        pending.push_back(child);
    }
    for (FileOnDisk const& file : listing.files)
        _CompareFile(ChildPath(path, file.name), file);
}

void RootDiff::_CompareFile(QString const& path, FileOnDisk const& file)
{
    RecordedEntry const* const known = _FindRecord(path, EntryKind::File);
    if (known == nullptr) {
        _AddDifference(Change::Added, EntryKind::File, path);
        return;
    }
    DiskDifference difference{_root.getId(), path, Change::Changed, EntryKind::File};
    difference.hasOtherSize = known->size != file.size;
    difference.hasOtherTime = known->modified != QDateTime::fromMSecsSinceEpoch(file.modifiedMsec, Qt::UTC);
    if (difference.hasOtherSize || difference.hasOtherTime)
        _differences.Add(difference);
    _records.Advance();
}

RecordedEntry const* RootDiff::_FindRecord(QString const& path, EntryKind kind)
{
    RecordedEntry const wanted = RecordedEntry::At(path, kind);
    while (_records.IsBefore(wanted))
        _PassRecord();
    RecordedEntry const* const found = _records.current();
    return found != nullptr && found->kind == kind && found->path == path ? found : nullptr;
}

void RootDiff::_PassRecord()
{
    RecordedEntry const& record = *_records.current();
    if (record.kind == EntryKind::Folder && _places.origins.contains(record.path))
        _missingPlaces.insert(record.path);
    _AddDifference(Change::Removed, record.kind, record.path);
    _records.Advance();
}

void RootDiff::_FindMissingMountPoints()
{
    for (auto origin = _places.origins.cbegin(); origin != _places.origins.cend(); ++origin) {
        if (_missingPlaces.contains(origin.key()) && !_differences.MayBeThere(_root.getId(), origin.key()))
            _LeaveOut(origin.key(), _places.MissingMountPoint(origin.key()));
    }
}

void RootDiff::_LeaveOut(QString const& path, QString const& reason)
{
    _problems.append({path, reason, QStringLiteral("mount its disk, then compare again")});
    _differences.LeaveOut(_root.getId(), path);
}

void RootDiff::_AddDifference(Change change, EntryKind kind, QString const& path)
{
    _differences.Add({_root.getId(), path, change, kind});
}

} // namespace tandryctl
