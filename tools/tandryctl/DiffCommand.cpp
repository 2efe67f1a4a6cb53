#include "CommandLine.h"
#include "Commands.h"
#include "DirectoryListing.h"
#include "Failure.h"
#include "FolderPlace.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordedPlaces.h"
#include "StoreDiff.h"
#include "StoreQueries.h"
#include "Terminal.h"
#include "Text.h"

#include "config/FileConfiguration.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <tuple>
#include <vector>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

struct Arguments
{
    std::optional<int> root;
    /// Another store to compare with instead of the disk.
    std::optional<QString> store;
};

/// A path at which the disk differs from the store.
struct Difference
{
    int rootId;
    /// "added", "removed" or "changed", as a scan with --prune would record it.
    char const* change;
    char const* kind;
    QString path;
    /// What has changed.
    QStringList columns;
};

constexpr char const* Added = "added";
constexpr char const* Removed = "removed";
constexpr char const* Changed = "changed";
constexpr char const* Folder = "folder";
constexpr char const* File = "file";

/// Compares one root's folders and files on disk with their records, by the rules of `RootScan`, and writes nothing.
class RootDiff
{
public:
    RootDiff(Session& session, FolderConfiguration const& root)
        : _session(session)
        , _root(root)
    {}

    /// Returns the differences in no order.
    std::vector<Difference> Find(QVector<ScanProblem>& problems)
    {
        _LoadRecords();
        std::vector<QString> pending{_root.getClientPath()}; // not recursive: a tree may be too deep for the stack
        while (!pending.empty()) {
            QString const path = pending.back();
            pending.pop_back();
            if (_IsRecordedFolder(path, problems))
                _CompareDirectory(path, pending, problems);
        }
        _FindMissingMountPoints(problems);
        for (QString const& path : qAsConst(_folders))
            _AddRemoved(Folder, path);
        for (auto file = _files.cbegin(); file != _files.cend(); ++file)
            _AddRemoved(File, file.key());
        return std::move(_differences);
    }

private:
    struct KnownFile
    {
        qint64 size;
        QDateTime modified;
    };

    /// Whether the folder at a path is the one on record, for the root and for mount points below it. If another one
    /// stands in its place, usually because a disk is not mounted, this is a problem, and nothing below it is compared.
    bool _IsRecordedFolder(QString const& path, QVector<ScanProblem>& problems)
    {
        auto const place = FolderPlace::Of(path); // one that cannot be examined is reported when it is read
        bool const mayDiffer =
            place && (path == _recorded.rootPath || place->isMountPoint() || _recorded.origins.contains(path));
        QString const difference = mayDiffer ? _recorded.DifferenceFromRecord(path, place->Origin()) : QString();
        if (difference.isEmpty())
            return true;
        _LeaveOut(path, QStringLiteral("%1 %2").arg(Quoted(path), difference), problems);
        return false;
    }

    void _FindMissingMountPoints(QVector<ScanProblem>& problems)
    {
        for (auto origin = _recorded.origins.cbegin(); origin != _recorded.origins.cend(); ++origin) {
            if (_folders.contains(origin.key()) && !_MayBeThere(origin.key()))
                _LeaveOut(origin.key(), _recorded.MissingMountPoint(origin.key()), problems);
        }
    }

    void _LeaveOut(QString const& path, QString const& reason, QVector<ScanProblem>& problems)
    {
        problems.append({path, reason, QStringLiteral("mount its disk, then compare again")});
        _incomplete.push_back(path);
    }

    void _LoadRecords()
    {
        QHash<int, FolderOrigin> const origins = _session.Checked(_session.queries().FolderOrigins());
        for (FolderConfiguration const& folder :
             _session.Checked(_session.folders().GetFolderConfigurationsByRootId(_root.getId()))) {
            if (folder.getId() != _root.getId())
                _folders.insert(folder.getClientPath());
            if (auto const origin = origins.constFind(folder.getId()); origin != origins.cend())
                _recorded.origins.insert(folder.getClientPath(), *origin);
        }
        for (FileConfiguration const& file : _session.Checked(_session.files().GetFileConfigurationsByRootFolderId(
                 _root.getId(), sync::config::FileConfigurationTypeFile))) {
            if (!_files.contains(file.clientPath)) // of twins, the first counts
                _files.insert(file.clientPath, {file.size, file.lastModifiedDateTime});
        }
        _recorded.rootPath = _root.getClientPath();
        _recorded.records = _folders.size() + _files.size();
        _recorded.hasRecordsBelow = [this](QString const& path) { return _HasRecordsBelow(path); };
    }

    bool _HasRecordsBelow(QString const& path) const
    {
        auto const isBelow = [&](QString const& record) {
            return record != path && LiesIn(record, path, Qt::CaseSensitive);
        };
        return std::any_of(_folders.begin(), _folders.end(), isBelow) ||
               std::any_of(_files.keyBegin(), _files.keyEnd(), isBelow);
    }

    void _CompareDirectory(QString const& path, std::vector<QString>& pending, QVector<ScanProblem>& problems)
    {
        DirectoryListing const listing = ListDirectory(path);
        problems += listing.problems;
        if (!listing.complete)
            _incomplete.push_back(path);
        for (QString const& name : listing.directories) {
            QString const child = ChildPath(path, name);
            if (!_folders.remove(child))
                _differences.push_back({_root.getId(), Added, Folder, child, {}});
            pending.push_back(child);
        }
        for (FileOnDisk const& file : listing.files)
            _CompareFile(ChildPath(path, file.name), file);
    }

    void _CompareFile(QString const& path, FileOnDisk const& file)
    {
        auto const known = _files.find(path);
        if (known == _files.end()) {
            _differences.push_back({_root.getId(), Added, File, path, {}});
            return;
        }
        QStringList columns;
        if (known->size != file.size)
            columns.append(QStringLiteral("size"));
        if (known->modified != QDateTime::fromMSecsSinceEpoch(file.modifiedMsec, Qt::UTC))
            columns.append(QStringLiteral("lastModifiedDateTime"));
        if (!columns.isEmpty())
            _differences.push_back({_root.getId(), Changed, File, path, columns});
        _files.erase(known);
    }

    /// Whether the path lies in a directory that could not be read.
    bool _MayBeThere(QString const& path) const
    {
        return std::any_of(_incomplete.begin(), _incomplete.end(), [&](QString const& directory) {
            return LiesIn(path, directory, Qt::CaseSensitive);
        });
    }

    void _AddRemoved(char const* kind, QString const& path)
    {
        if (!_MayBeThere(path))
            _differences.push_back({_root.getId(), Removed, kind, path, {}});
    }

    Session& _session;
    FolderConfiguration const _root;
    /// What is on record and was not found on disk yet.
    QSet<QString> _folders;
    QHash<QString, KnownFile> _files;
    RecordedPlaces _recorded;
    /// The directories whose contents are not known.
    std::vector<QString> _incomplete;
    std::vector<Difference> _differences;
};

Style StyleOfChange(QVariant const& change)
{
    QString const word = change.toString();
    return word == QLatin1String(Added) ? Style::Good : word == QLatin1String(Removed) ? Style::Bad : Style::Attention;
}

Columns<Difference> MakeDifferenceColumns()
{
    Columns<Difference> columns{
        {"change", Shown::Always, [](Difference const& d) { return QString(QLatin1String(d.change)); }},
        {"kind", Shown::Always, [](Difference const& d) { return QString(QLatin1String(d.kind)); }},
        {"rootId", Shown::Always, [](Difference const& d) { return d.rootId; }},
        {"clientPath", Shown::Always, [](Difference const& d) { return d.path; }},
        {"columns", Shown::InFull, [](Difference const& d) { return d.columns; }},
    };
    columns[0].style = StyleOfChange;
    columns[3].cellWidth = CellWidth::MayBeShortened;
    return columns;
}

Columns<Difference> const& DifferenceColumns()
{
    static Columns<Difference> const columns = MakeDifferenceColumns();
    return columns;
}

/// In JSON, a failure is one object.
ExitStatus ReportProblems(Session& session, QVector<ScanProblem> const& problems)
{
    if (session.output().format() == OutputFormat::Json) {
        QStringList messages;
        for (ScanProblem const& problem : problems)
            messages.append(problem.failure.message());
        throw Failure(FailureCode::Incomplete, messages.join(QStringLiteral("; ")), problems.first().failure.hint());
    }
    for (ScanProblem const& problem : problems)
        PrintFailure(problem.failure, OutputFormat::Plain);
    return StatusOf(FailureCode::Incomplete);
}

ExitStatus Diff(Session& session, Arguments const& arguments)
{
    if (arguments.store)
        return DiffStores(session, *arguments.store);
    std::vector<Difference> differences;
    QVector<ScanProblem> problems;
    for (FolderConfiguration const& root : FindRoots(session, arguments.root)) {
        std::vector<Difference> const found = RootDiff(session, root).Find(problems);
        differences.insert(differences.end(), found.begin(), found.end());
    }
    std::sort(differences.begin(), differences.end(), [](Difference const& left, Difference const& right) {
        return std::tie(left.rootId, left.path) < std::tie(right.rootId, right.path);
    });
    session.output().List(DifferenceColumns(), differences);
    session.Flush(); // so that the problems are the last lines on a terminal
    if (!problems.isEmpty())
        return ReportProblems(session, problems);
    if (!differences.empty())
        return ExitStatus::NothingFound;
    session.output().PrintLine(QStringLiteral("the disk is as recorded"));
    return ExitStatus::Done;
}

} // namespace

void AddDiffCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("diff", "Compare the disk, or another store, with what is on record")
        .OptionalArgument("ROOT_ID", arguments->root, "Only this root")
        .Option("--with", arguments->store, "STORE", "Compare with the records of another store, not with the disk")
        .Excludes("--with", "ROOT_ID")
        .Remark("Lists the paths that are new on disk (added), gone from it (removed), or have another size or\n"
                "modification time than recorded (changed): what 'scan --prune' would record. Nothing is written. The\n"
                "exit status is 1 if there is a difference.\n\n"
                "With --with, lists the records that only the other store has (added), only this one (removed), or\n"
                "that differ (changed). Records are matched by path or name, and so are those that they refer to.")
        .Example("diff", "see what has changed on disk since the last scan")
        .Example("diff 1 --json", "the same for root 1 and a program, with the columns that differ")
        .Example("diff --with ~/backups/monday.db", "see in which records a backup differs from the store")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Diff(session, *arguments); });
}

} // namespace tandryctl
