#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQuestions.h"
#include "Text.h"

#include <QFileInfo>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

struct AddArguments
{
    QString path;
    std::optional<int> account;
};

struct RemoveArguments
{
    int id = 0;
    bool recursive = false;
};

ExitStatus AddFolder(Session& session, AddArguments const& arguments)
{
    QString const path = AbsolutePath(arguments.path);
    QFileInfo const onDisk(path);
    if (onDisk.exists() && !onDisk.isDir())
        throw Failure(ExitStatus::NothingFound, QStringLiteral("%1 is no folder; give one").arg(Quoted(path)));
    if (arguments.account)
        FindAccount(session, *arguments.account);
    auto const root = FindRootOf(path, session.Read(session.folders().GetAllRootFolders()), arguments.account);
    if (!root)
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 lies in no root; see 'tandryctl list roots'").arg(Quoted(path)));

    int const before = session.Read(session.questions().CountNaming("FolderConfiguration", "rootId", root->getId()));
    FolderConfiguration const folder = session.Read(session.folders().AddFolderAndParent(path, *root));
    if (folder.getId() == -1)
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 finds no place below %2; see 'tandryctl tree %3'")
                          .arg(Quoted(path),
                               Titled("root", root->getId(), root->getClientPath()),
                               QString::number(root->getId())));
    int const added =
        session.Read(session.questions().CountNaming("FolderConfiguration", "rootId", root->getId())) - before;

    QString sentence = added > 0 ? QStringLiteral("recorded ") : QStringLiteral("already on record: ");
    sentence += Titled("folder", folder.getId(), path);
    if (added > 1)
        sentence += QStringLiteral(" and %1 above it").arg(Counted(added - 1, "folder", "folders"));
    session.output().Report(sentence, FolderColumns(), folder);
    return ExitStatus::Done;
}

/// Without `recursive` the folder's own row goes and whatever belongs to it stays.
Removal RemovalOf(Session& session, FolderConfiguration const& folder, bool recursive)
{
    auto const count = [&](char const* table, char const* column) {
        StoreQuestions& questions = session.questions();
        return session.Read(recursive ? questions.CountNamingTree(table, column, folder.getId())
                                      : questions.CountNaming(table, column, folder.getId()));
    };
    Removal removal(Titled("folder", folder.getId(), folder.getClientPath()));
    auto const takeOrLeave = [&](int rows, char const* singular, char const* plural) {
        if (recursive)
            removal.Takes(rows, singular, plural);
        else
            removal.Leaves(rows, singular, plural);
    };
    takeOrLeave(recursive ? count("FolderConfiguration", "id") - 1 : count("FolderConfiguration", "parentId"),
                "sub-folder",
                "sub-folders");
    takeOrLeave(count("FileConfiguration", "folderConfigurationId"), "file", "files");
    removal.Leaves(count("GeneratedFileConfiguration", "folderConfigurationId"), "generated file", "generated files");
    removal.Leaves(count("BaseFileConfiguration", "folderConfigurationId"), "base file", "base files");
    removal.Leaves(count("Schedules", "folderConfigurationId"), "schedule", "schedules");
    return removal;
}

ExitStatus RemoveFolder(Session& session, RemoveArguments const& arguments)
{
    FolderConfiguration const folder = FindFolder(session, arguments.id);
    if (folder.isRoot())
        throw Failure(
            ExitStatus::NothingFound,
            QStringLiteral("%1 is a root; remove it with 'tandryctl root remove %2'")
                .arg(Titled("folder", folder.getId(), folder.getClientPath()), QString::number(folder.getId())));

    Removal const removal = RemovalOf(session, folder, arguments.recursive);
    session.ConfirmRemoval(removal.text());
    Bracket bracket(session);
    session.Wrote(arguments.recursive ? session.folders().RemoveFolderAndChildren(folder.getId())
                                      : session.folders().Remove(folder.getId()));
    bracket.Commit();
    session.output().Report(QStringLiteral("removed ") + removal.text(), FolderColumns(), folder);
    return ExitStatus::Done;
}

} // namespace

void AddFolderCommands(Command& top)
{
    Command folders = top.Add("folder", "Add and remove folders below the roots");

    auto const add = std::make_shared<AddArguments>();
    folders.Add("add", "Record a folder with those of its parents that are missing")
        .Argument("PATH", add->path, "The folder; it need not exist on disk yet")
        .Option("--account", add->account, "Look at the roots of this account only")
        .Remark("The path has to lie in a root. Its path on the server follows from the root's.")
        .Example("folder add ~/Documents/letters/2024", "record letters and 2024 below the root ~/Documents")
        .Run(StoreAccess::Write, [add](Session& session) { return AddFolder(session, *add); });

    auto const remove = std::make_shared<RemoveArguments>();
    folders.Add("remove", "Remove a folder from the store")
        .Argument("ID", remove->id, "The folder's id")
        .Flag("-r,--recursive", remove->recursive, "Take the folders below it and the files in them too")
        .Remark("Says what will go, and what would stay and belong to nothing, and asks first. Nothing on disk is\n"
                "touched.")
        .Example("folder remove 7 --recursive", "remove folder 7 with all below it after a question")
        .Example("folder remove 7 --yes", "remove its row alone, without a question")
        .Run(StoreAccess::Write, [remove](Session& session) { return RemoveFolder(session, *remove); });
}

} // namespace tandryctl
