#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "StatColumns.h"
#include "Text.h"

#include "config/FileConfiguration.h"
#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/ColumnReference.h"
#include "tools/findings/StoreStatus.h"

#include <map>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using tandry::findings::DiskEntry;
using tandry::findings::NamesOfValues;
using tandry::findings::ObjectSize;
using tandry::findings::RootStatus;
using tandry::findings::StoreStatus;

namespace {

QVariant Text(QString const& text)
{
    return text;
}

/// Returns "2 not synced: 12, 7: 3".
template <class Record>
QString StatusText(std::map<int, qint64> const& counts)
{
    QStringList texts;
    for (auto const& [status, count] : counts)
        texts.append(QStringLiteral("%1: %2").arg(NamesOfValues<Record>(QStringLiteral("syncStatus"))->InWords(status),
                                                  QString::number(count)));
    return texts.join(QStringLiteral(", "));
}

QVariantList StatusCounts(std::map<int, qint64> const& counts)
{
    QVariantList list;
    for (auto const& [status, count] : counts)
        list.append(QVariantMap{{QStringLiteral("syncStatus"), status}, {QStringLiteral("count"), count}});
    return list;
}

/// Returns "4", or "4 (2 not synced: 4)".
QString WithStatus(qint64 count, QString const& byStatus)
{
    return count == 0 ? QStringLiteral("0") : QStringLiteral("%1 (%2)").arg(QString::number(count), byStatus);
}

bool IsThere(RootStatus const& root)
{
    return root.onDisk == DiskEntry::Kind::Folder;
}

Columns<RootStatus> const& StatusColumns()
{
    using Root = RootStatus;
    static Columns<Root> const columns{
        {"id", Shown::Always, [](Root const& r) { return r.root.getId(); }},
        {"clientPath", Shown::Always, [](Root const& r) { return r.root.getClientPath(); }},
        {"isThere", Shown::Always, IsThere},
        {"folders", Shown::Always, [](Root const& r) { return r.folders; }},
        {"foldersByStatus", Shown::Always, [](Root const& r) { return StatusCounts(r.foldersByStatus); }},
        {"files", Shown::Always, [](Root const& r) { return r.files; }},
        {"filesByStatus", Shown::Always, [](Root const& r) { return StatusCounts(r.filesByStatus); }},
        {"bytes", Shown::Always, [](Root const& r) { return r.bytes; }},
        {"lastOperationTime", Shown::Always, [](Root const& r) { return r.lastOperation; }},
        {"lastSyncTime", Shown::Always, [](Root const& r) { return r.lastSync; }},
        {"outOfSync", Shown::Always, [](Root const& r) { return r.outOfSync; }},
        {"firstOutOfSync", Shown::Always, [](Root const& r) { return r.firstOutOfSync; }},
    };
    return columns;
}

void PrintRoot(Output& output, RootStatus const& root)
{
    output.PrintLine(Label("root", root.root.getId(), root.root.getClientPath()));
    auto const time = [](QDateTime const& value) {
        return value.isValid() ? QVariant(value) : Text(QStringLiteral("never"));
    };
    QVector<Line> lines{
        {QStringLiteral("  out of sync"), root.outOfSync},
        {QStringLiteral("  on disk"), Text(QLatin1String(IsThere(root) ? "there" : "no folder stands at this path"))},
        {QStringLiteral("  folders"),
         Text(WithStatus(root.folders, StatusText<FolderConfiguration>(root.foldersByStatus)))},
        {QStringLiteral("  files"), Text(WithStatus(root.files, StatusText<FileConfiguration>(root.filesByStatus)))},
        {QStringLiteral("  bytes"), root.bytes},
        {QStringLiteral("  last operation"), time(root.lastOperation)},
        {QStringLiteral("  last sync"), time(root.lastSync)},
    };
    for (QString const& path : root.firstOutOfSync)
        lines.append({QStringLiteral("  not in sync"), path});
    qint64 const more = root.outOfSync - root.firstOutOfSync.size();
    if (more > 0)
        lines.append({QString(), Text(QStringLiteral("and %1 more").arg(more))});
    output.PrintLines(lines);
}

ExitStatus Status(Session& session)
{
    StoreStatus const status = session.Checked(tandry::findings::ReadStatus(session.store()));
    if (status.roots.empty())
        throw Failure(FailureCode::NotFound, QStringLiteral("no roots on record"), QLatin1String(HowToAddARoot));
    if (session.output().format() == OutputFormat::Json) {
        session.output().List(StatusColumns(), status.roots);
        return ExitStatus::Done;
    }
    for (RootStatus const& root : status.roots)
        PrintRoot(session.output(), root);
    if (status.foldersWithoutRoot + status.filesWithoutRoot > 0)
        session.output().PrintLine(QStringLiteral("%1 and %2 name a root that is not on record; see 'tandryctl doctor'")
                                       .arg(Counted(status.foldersWithoutRoot, "folder", "folders"),
                                            Counted(status.filesWithoutRoot, "file", "files")));
    return ExitStatus::Done;
}

ExitStatus Stat(Session& session)
{
    static Columns<ObjectSize> const objectColumns{
        {"bytes", Shown::Always, [](ObjectSize const& o) { return o.bytes; }},
        {"rows", Shown::Always, [](ObjectSize const& o) { return o.rows; }},
        {"name", Shown::Always, [](ObjectSize const& o) { return o.name; }},
    };
    StoreFacts const facts = session.Checked(FactsOf(session.fileStore()));
    bool const isJson = session.output().format() == OutputFormat::Json;
    session.output().Show(StatColumns(isJson), facts);
    if (!isJson) {
        session.output().PrintLine(QString());
        session.output().List(objectColumns, facts.size.objects);
    }
    return ExitStatus::Done;
}

} // namespace

void AddStatusCommands(Command& top)
{
    top.Add("status", "Show what is on record of each root, and what is out of sync")
        .Remark("Shows, for each root, how many folders and files are out of sync, whether the folder is on disk, the\n"
                "number of folders and files by status, the bytes of the files, the last operation, the last\n"
                "synchronisation, and the first paths that are out of sync.")
        .Example("status", "see whether everything is synchronised")
        .Example("status --json", "the same for a program")
        .Run(StoreAccess::Read, Status);
    top.Add("stat", "Show how large the store is, by table and index")
        .Remark("Shows the store's file, its version and journal mode, the bytes of the file and its log, the free\n"
                "pages, and the rows and bytes of each table and index, the largest first. Reads the whole store.")
        .Example("stat", "find out what makes a store large")
        .OnlyOnFiles("ask the server, with pg_total_relation_size for each table of the schema tandry_NAME")
        .Run(StoreAccess::Read, Stat);
}

} // namespace tandryctl
