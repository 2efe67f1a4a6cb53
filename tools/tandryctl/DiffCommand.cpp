#include "CommandLine.h"
#include "Commands.h"
#include "DiskDifferences.h"
#include "Failure.h"
#include "Lookups.h"
#include "RootDiff.h"
#include "StoreDiff.h"
#include "Terminal.h"

#include <functional>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

struct Arguments
{
    std::optional<int> root;
    /// Another store to compare with instead of the disk.
    std::optional<QString> store;
};

QString WordOf(DiskDifference::Change change)
{
    switch (change) {
    case DiskDifference::Change::Added:
        return QStringLiteral("added");
    case DiskDifference::Change::Removed:
        return QStringLiteral("removed");
    case DiskDifference::Change::Changed:
        break;
    }
    return QStringLiteral("changed");
}

QString WordOf(EntryKind kind)
{
    return kind == EntryKind::Folder ? QStringLiteral("folder") : QStringLiteral("file");
}

QStringList ColumnsOf(DiskDifference const& difference)
{
    QStringList columns;
    if (difference.hasOtherSize)
        columns.append(QStringLiteral("size"));
    if (difference.hasOtherTime)
        columns.append(QStringLiteral("lastModifiedDateTime"));
    return columns;
}

Style StyleOfChange(QVariant const& change)
{
    QString const word = change.toString();
    if (word == WordOf(DiskDifference::Change::Added))
        return Style::Good;
    return word == WordOf(DiskDifference::Change::Removed) ? Style::Bad : Style::Attention;
}

Columns<DiskDifference> MakeDifferenceColumns()
{
    Columns<DiskDifference> columns{
        {"change", Shown::Always, [](DiskDifference const& d) { return WordOf(d.change); }},
        {"kind", Shown::Always, [](DiskDifference const& d) { return WordOf(d.kind); }},
        {"rootId", Shown::Always, [](DiskDifference const& d) { return d.rootId; }},
        {"clientPath", Shown::Always, [](DiskDifference const& d) { return d.path; }},
        {"columns", Shown::InFull, [](DiskDifference const& d) { return ColumnsOf(d); }},
    };
    columns[0].style = StyleOfChange;
    columns[3].cellWidth = CellWidth::MayBeShortened;
    return columns;
}

Columns<DiskDifference> const& DifferenceColumns()
{
    static Columns<DiskDifference> const columns = MakeDifferenceColumns();
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
    DiskDifferences differences;
    QVector<ScanProblem> problems;
    for (FolderConfiguration const& root : FindRoots(session, arguments.root))
        RootDiff(session, root, differences, problems).Run();
    qint64 const listed = session.output().ListEach<DiskDifference>(
        DifferenceColumns(),
        [&](std::function<void(DiskDifference const&)> const& take) { differences.ForEach(take); });
    if (listed == 0)
        session.output().ListNothing();
    session.Flush(); // so that the problems are the last lines on a terminal
    if (!problems.isEmpty())
        return ReportProblems(session, problems);
    if (listed > 0)
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
