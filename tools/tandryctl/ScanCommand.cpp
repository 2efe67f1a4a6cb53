#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Interruption.h"
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
    ScanOptions options;
    std::optional<int> maxPrune;
};

struct ScannedRoot
{
    FolderConfiguration root;
    ScanCounts counts;
};

QVariant EntriesOf(QVector<ScanProblem> const& problems)
{
    QVariantList entries;
    for (ScanProblem const& problem : problems)
        entries.append(QVariantMap{{QStringLiteral("path"), problem.path},
                                   {QStringLiteral("message"), problem.failure.message()},
                                   {QStringLiteral("hint"), problem.failure.hint()}});
    return entries;
}

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
        {"filesDeleted", Shown::Always, [](Root const& r) { return r.counts.filesDeleted; }},
        {"linksToDirectories", Shown::Always, [](Root const& r) { return r.counts.linksToDirectories; }},
        {"brokenLinks", Shown::Always, [](Root const& r) { return r.counts.brokenLinks; }},
        {"specialFiles", Shown::Always, [](Root const& r) { return r.counts.specialFiles; }},
        {"mounts", Shown::Always, [](Root const& r) { return r.counts.mounts; }},
        {"mountsLeftOut", Shown::Always, [](Root const& r) { return r.counts.mountsLeftOut; }},
        {"interrupted", Shown::Always, [](Root const& r) { return r.counts.isInterrupted; }},
        {"foldersNotRecorded", Shown::Always, [](Root const& r) { return r.counts.foldersNotRecorded; }},
        {"filesNotRecorded", Shown::Always, [](Root const& r) { return r.counts.filesNotRecorded; }},
        {"foldersNotRead", Shown::Always, [](Root const& r) { return r.counts.foldersNotRead; }},
        {"problems", Shown::Always, [](Root const& r) { return r.counts.problems.size(); }},
        {"failed", Shown::InFull, [](Root const& r) { return EntriesOf(r.counts.problems); }},
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
    if (counts.filesDeleted > 0)
        output.PrintLine(QStringLiteral("deleted from the disk: ") +
                         Counted(counts.filesDeleted, "generated file", "generated files"));
    if (!counts.mounts.isEmpty())
        output.PrintLine(QStringLiteral("mounts inside: ") + JoinWithAnd(counts.mounts));

    QStringList leftOut;
    auto const leaveOut = [&](int count, char const* singular, char const* plural) {
        if (count > 0)
            leftOut.append(Counted(count, singular, plural));
    };
    leaveOut(counts.linksToDirectories, "link to a folder", "links to folders");
    leaveOut(counts.brokenLinks, "link to nothing", "links to nothing");
    leaveOut(counts.specialFiles, "special file", "special files");
    if (!counts.mountsLeftOut.isEmpty())
        leftOut.append(Counted(counts.mountsLeftOut.size(), "mount", "mounts") + QLatin1Char(' ') +
                       JoinWithAnd(counts.mountsLeftOut));
    if (!leftOut.isEmpty())
        output.PrintLine(QStringLiteral("left out: ") + JoinWithAnd(leftOut));

    int const fileCount = counts.filesAdded + counts.filesChanged + counts.filesUnchanged;
    output.PrintLine(QStringLiteral("elapsed: %1 s, %2 files/s")
                         .arg(double(elapsedMsec) / 1000, 0, 'f', 3)
                         .arg(fileCount * 1000LL / std::max(elapsedMsec, qint64(1))));
}

/// Tells what an interrupted scan has left, root by root.
void PrintInterruption(Output& output, QVector<ScannedRoot> const& scanned, QVector<FolderConfiguration> const& roots)
{
    for (ScannedRoot const& root : scanned) {
        ScanCounts const& counts = root.counts;
        if (counts.isInterrupted)
            output.PrintLine(QStringLiteral("interrupted in %1: %2 and %3 were found and not recorded, and %4 not read")
                                 .arg(Label("root", root.root.getId(), root.root.getClientPath()),
                                      Counted(counts.foldersNotRecorded, "folder", "folders"),
                                      Counted(counts.filesNotRecorded, "file", "files"),
                                      Counted(counts.foldersNotRead, "folder was", "folders were")));
    }
    for (int i = scanned.size(); i < roots.size(); ++i)
        output.PrintLine(QStringLiteral("not scanned: ") +
                         Label("root", roots.at(i).getId(), roots.at(i).getClientPath()));
    output.PrintLine(QStringLiteral("the next scan goes on from what is recorded"));
}

/// In JSON the objects of the roots name the problems.
ExitStatus ReportProblems(Session& session, ScanCounts const& counts)
{
    if (counts.problems.isEmpty())
        return counts.isInterrupted ? ExitStatus::NothingFound : ExitStatus::Done;
    FailureCode const code = counts.couldNotAsk ? FailureCode::Unconfirmed : FailureCode::Incomplete;
    if (session.output().format() == OutputFormat::Json)
        throw Failure(code,
                      QStringLiteral("the scan met %1").arg(Counted(counts.problems.size(), "problem", "problems")),
                      QStringLiteral("see what 'failed' holds of each root"));
    for (ScanProblem const& problem : counts.problems)
        PrintFailure(problem.failure, OutputFormat::Plain);
    return StatusOf(code);
}

ExitStatus Scan(Session& session, Arguments const& arguments)
{
    ScanOptions options = arguments.options;
    options.maxPrune = arguments.maxPrune.value_or(options.maxPrune);
    if (options.maxPrune < 0 || options.maxPrune > 100)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("%1 is not a percentage").arg(options.maxPrune),
                      QStringLiteral("give --max-prune a number from 0 to 100"));

    Interruption const interruption;
    QElapsedTimer timer;
    timer.start();

    QVector<FolderConfiguration> const roots = FindRoots(session, arguments.root);
    QVector<ScannedRoot> scanned;
    ScanCounts totals;
    for (FolderConfiguration const& root : roots) {
        if (Interruption::IsRequested())
            break;
        scanned.append({root, RootScan(session, root, options).Run()});
        totals += scanned.last().counts;
    }

    if (session.output().format() == OutputFormat::Json)
        session.output().List(ScanColumns(), scanned);
    PrintTotals(session.output(), totals, options.prune, timer.elapsed());
    if (totals.isInterrupted || scanned.size() < roots.size())
        PrintInterruption(session.output(), scanned, roots);
    session.Flush(); // so that the problems are the last lines on a terminal
    return ReportProblems(session, totals);
}

} // namespace

void AddScanCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("scan", "Record the folders and files on disk")
        .OptionalArgument("ROOT_ID", arguments->root, "Only this root")
        .Flag(
            "--prune", arguments->options.prune, "Remove the records of files and folders that are gone from the disk")
        .Number("--max-prune", arguments->maxPrune, "Prune up to N percent of a root without asking; 10 by default")
        .Flag("--one-file-system", arguments->options.oneFileSystem, "Leave out what is mounted below the roots")
        .Flag("--accept-new-folder",
              arguments->options.acceptNewFolder,
              "Record a folder that stands in the place of another one")
        .Remark(
            "Adds folders and files that are not on record yet, and marks files as out of sync whose size or\n"
            "modification time has changed. Symbolic links to folders are not followed; a link to a file is\n"
            "recorded as a file with a link. What cannot be read or recorded is listed at the end, and the exit\n"
            "status is then 1. Entries are recorded in portions: after Ctrl-C the next scan goes on from there.\n\n"
            "A root, and each mount point in it, remembers its file system. If another folder stands in its place,\n"
            "usually because a disk is not mounted, its records stay as they are, with or without --prune.\n\n"
            "With --prune, records are removed when all of a root has been read, and none below a folder that\n"
            "could not be read. Files that were generated from a missing file are deleted from the disk too; each\n"
            "is named first. Asks for confirmation if there are such, or if more than a tenth of the records of a\n"
            "root would go that has 20 or more.")
        .Example("scan", "record the contents of all roots")
        .Example("scan 1 --prune", "update root 1 and remove records of missing files")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Scan(session, *arguments); });
}

} // namespace tandryctl
