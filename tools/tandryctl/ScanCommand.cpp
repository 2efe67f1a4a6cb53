#include "CommandLine.h"
#include "Commands.h"
#include "Lookups.h"
#include "RootScan.h"
#include "Terminal.h"
#include "Text.h"

#include <QElapsedTimer>

#include <algorithm>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

struct Arguments
{
    std::optional<int> root;
    bool prune = false;
};

struct ScannedRoot
{
    FolderConfiguration root;
    ScanCounts counts;
};

Columns<ScannedRoot> const& ScanColumns()
{
    using Root = ScannedRoot;
    static Columns<Root> const columns{
        {"id", Shown::Always, [](Root const& r) { return r.root.getId(); }},
        {"clientPath", Shown::Always, [](Root const& r) { return r.root.getClientPath(); }},
        {"foldersAdded", Shown::Always, [](Root const& r) { return r.counts.foldersAdded; }},
        {"foldersThere", Shown::Always, [](Root const& r) { return r.counts.foldersThere; }},
        {"foldersChanged", Shown::Always, [](Root const& r) { return r.counts.foldersChanged; }},
        {"foldersPruned", Shown::Always, [](Root const& r) { return r.counts.foldersPruned; }},
        {"filesAdded", Shown::Always, [](Root const& r) { return r.counts.filesAdded; }},
        {"filesChanged", Shown::Always, [](Root const& r) { return r.counts.filesChanged; }},
        {"filesUnchanged", Shown::Always, [](Root const& r) { return r.counts.filesUnchanged; }},
        {"filesPruned", Shown::Always, [](Root const& r) { return r.counts.filesPruned; }},
        {"linksToDirectories", Shown::Always, [](Root const& r) { return r.counts.linksToDirectories; }},
        {"brokenLinks", Shown::Always, [](Root const& r) { return r.counts.brokenLinks; }},
        {"specialFiles", Shown::Always, [](Root const& r) { return r.counts.specialFiles; }},
        {"problems", Shown::Always, [](Root const& r) { return r.counts.problems.size(); }},
    };
    return columns;
}

void PrintTotals(Output& output, ScanCounts const& counts, bool pruned, qint64 elapsedMsec)
{
    QString folders = QStringLiteral("folders: %1 added, %2 there").arg(counts.foldersAdded).arg(counts.foldersThere);
    if (counts.foldersChanged > 0)
        folders += QStringLiteral(" (%1 put back in place)").arg(counts.foldersChanged);
    QString files = QStringLiteral("files: %1 added, %2 changed, %3 unchanged")
                        .arg(counts.filesAdded)
                        .arg(counts.filesChanged)
                        .arg(counts.filesUnchanged);
    if (pruned) {
        folders += QStringLiteral(", %1 pruned").arg(counts.foldersPruned);
        files += QStringLiteral(", %1 pruned").arg(counts.filesPruned);
    }
    output.PrintLine(folders);
    output.PrintLine(files);

    QStringList leftOut;
    auto const leaveOut = [&](int count, char const* singular, char const* plural) {
        if (count > 0)
            leftOut.append(Counted(count, singular, plural));
    };
    leaveOut(counts.linksToDirectories, "link to a folder", "links to folders");
    leaveOut(counts.brokenLinks, "link to nothing", "links to nothing");
    leaveOut(counts.specialFiles, "special file", "special files");
    if (!leftOut.isEmpty())
        output.PrintLine(QStringLiteral("left out: ") + JoinWithAnd(leftOut));

    int const fileCount = counts.filesAdded + counts.filesChanged + counts.filesUnchanged;
    output.PrintLine(QStringLiteral("elapsed: %1 s, %2 files/s")
                         .arg(double(elapsedMsec) / 1000, 0, 'f', 3)
                         .arg(fileCount * 1000LL / std::max(elapsedMsec, qint64(1))));
}

ExitStatus Scan(Session& session, Arguments const& arguments)
{
    QElapsedTimer timer;
    timer.start();

    QVector<ScannedRoot> scanned;
    ScanCounts totals;
    for (FolderConfiguration const& root : FindRoots(session, arguments.root)) {
        scanned.append({root, RootScan(session, root, arguments.prune).Run()});
        totals += scanned.last().counts;
    }

    if (session.output().format() == OutputFormat::Json)
        session.output().List(ScanColumns(), scanned);
    PrintTotals(session.output(), totals, arguments.prune, timer.elapsed());
    session.Flush(); // so that the problems are the last lines on a terminal
    for (QString const& problem : qAsConst(totals.problems))
        PrintError(problem);
    return totals.problems.isEmpty() ? ExitStatus::Done : ExitStatus::NothingFound;
}

} // namespace

void AddScanCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("scan", "Record the folders and files on disk")
        .OptionalArgument("ROOT_ID", arguments->root, "Only this root")
        .Flag("--prune", arguments->prune, "Remove the records of files and folders that are no longer on disk")
        .Remark("Adds folders and files that are not on record yet, and marks files as out of sync whose size or\n"
                "modification time has changed. Symbolic links to folders are not followed; a link to a file is\n"
                "recorded as a file with a link. What cannot be read or recorded is listed at the end, and the exit\n"
                "status is then 1. Each root is written completely or not at all. With --prune, files that were\n"
                "generated from a missing file are deleted from the disk too.")
        .Example("scan", "record the contents of all roots")
        .Example("scan 1 --prune", "update root 1 and remove records of missing files")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Scan(session, *arguments); });
}

} // namespace tandryctl
