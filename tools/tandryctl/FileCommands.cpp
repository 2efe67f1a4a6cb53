#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "FileLookup.h"
#include "GeneratedFiles.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "Text.h"

#include "config/FileLink.h"

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FileLink;

namespace {

struct Arguments
{
    QString file;
    std::optional<int> type;
};

struct RemoveArguments
{
    int id = 0;
};

/// A link and its target, which has the id -1 if it is not on record.
struct ResolvedLink
{
    FileLink link;
    FileConfiguration target;
};

QVector<ResolvedLink> Resolve(Session& session, FileConfiguration const& file)
{
    QVector<ResolvedLink> links;
    for (FileLink const& link : file.fileLinks)
        links.append({link, session.Checked(session.files().GetFileConfiguration(link, file.clientPath))});
    return links;
}

QVariant TargetOf(ResolvedLink const& link)
{
    return link.target.id == -1 ? QVariant() : QVariant(link.target.clientPath);
}

QString DescribeLinks(QVector<ResolvedLink> const& links)
{
    QStringList targets;
    for (ResolvedLink const& link : links) {
        QVariant const target = TargetOf(link);
        targets.append(target.isValid()
                           ? QStringLiteral("%1 (file %2)").arg(target.toString(), QString::number(link.target.id))
                           : QStringLiteral("%1 (not on record)").arg(link.link.path));
    }
    return targets.join(QStringLiteral(", "));
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    FileConfiguration const file = FindFile(session, arguments.file, FileConfigurationType(arguments.type.value_or(0)));
    auto const folder = session.Checked(session.folders().GetFolderConfigurationById(file.folderConfigurationId));
    QVector<Extra> extras{{"folder", folder.getClientPath()}};
    extras += AccountAndServerOf(session, folder);
    extras.append({"linksTo", DescribeLinks(Resolve(session, file))});
    session.output().Show(FileColumns(), file, extras);
    return ExitStatus::Done;
}

ExitStatus ShowLinks(Session& session, Arguments const& arguments)
{
    static Columns<ResolvedLink> const columns{
        {"fileId", Shown::Always, [](ResolvedLink const& l) { return l.link.fileId; }},
        {"path", Shown::Always, [](ResolvedLink const& l) { return l.link.path; }},
        {"refId", Shown::InFull, [](ResolvedLink const& l) { return l.link.refId; }},
        {"serverFileId", Shown::InFull, [](ResolvedLink const& l) { return l.link.serverFileId; }},
        {"linksTo", Shown::Always, TargetOf},
    };
    FileConfiguration const file = FindFile(session, arguments.file, FileConfigurationType(arguments.type.value_or(0)));
    return List(session, columns, Resolve(session, file), "links", "'tandryctl scan' records the links on disk");
}

ExitStatus Remove(Session& session, RemoveArguments const& arguments)
{
    FileConfiguration const file =
        FindFile(session, QString::number(arguments.id), sync::config::FileConfigurationTypeFile);
    GeneratedFiles generated(session);
    generated.AddOf(file.id);
    generated.List();

    Removal removal(Label("file", file.id, file.clientPath));
    removal.AddRemoved(session.Checked(session.files().GetGeneratedFileConfigurationsByParentFileId(file.id)).size(),
                       "generated file",
                       "generated files");
    auto const withDeletion = [&](int count) {
        return count == 0
                   ? removal.text()
                   : removal.text() + QStringLiteral(", and %1 from the disk").arg(Counted(count, "file", "files"));
    };
    session.ConfirmRemoval(withDeletion(generated.count()));
    ClientTransaction transaction(session);
    generated.RemoveRecords(file.id);
    transaction.Commit();

    QVector<ScanProblem> problems;
    int const deleted = generated.Delete(problems);
    session.output().Report(QStringLiteral("removed ") + withDeletion(deleted), FileColumns(), file);
    QStringList undeleted;
    for (ScanProblem const& problem : qAsConst(problems))
        undeleted.append(problem.failure.message());
    if (!problems.isEmpty())
        throw Failure(
            FailureCode::Incomplete, undeleted.join(QStringLiteral("; ")), QStringLiteral("delete it yourself"));
    return ExitStatus::Done;
}

} // namespace

void AddFileCommands(Command& top)
{
    Command files = top.Add("file", "Show and remove files");

    auto const arguments = std::make_shared<Arguments>();
    files.Add("show", "Show everything about a file")
        .Argument("ID|PATH", arguments->file, "The file's id or its path; ./7 is the path of a file named 7")
        .Choice("--type", arguments->type, FileTypeNames(), "KIND", "file, generated or base; file by default")
        .Remark("Shows all columns, and the folder, the account, the server and the targets of the links.")
        .Example("file show ~/Documents/a.txt", "show the record of a.txt")
        .Example("file show 12 --json", "print the record of file 12 as JSON")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    files.Add("links", "List a file's links and their targets")
        .Argument("ID|PATH", arguments->file, "The file's id or its path")
        .Choice("--type", arguments->type, FileTypeNames(), "KIND", "file, generated or base; file by default")
        .Remark("A link out of the root or to a file that is not on record has the fileId -1.")
        .Example("file links ~/Documents/shortcut", "show the target of a symbolic link")
        .Run(StoreAccess::Read, [arguments](Session& session) { return ShowLinks(session, *arguments); });

    auto const remove = std::make_shared<RemoveArguments>();
    files.Add("remove", "Remove a file and the files generated from it")
        .Argument("ID", remove->id, "The file's id")
        .Remark("Shows what will be removed and asks for confirmation. The file itself stays on disk; files that were\n"
                "generated from it are deleted from the disk too.")
        .Example("file remove 12", "remove file 12 after confirmation")
        .Run(StoreAccess::Write, [remove](Session& session) { return Remove(session, *remove); });
}

} // namespace tandryctl
