#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQueries.h"
#include "Text.h"

#include <QDir>
#include <QFileInfo>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

struct AddArguments
{
    QString directory;
    QString serverPath;
    std::optional<int> account;
    std::optional<QString> name;
};

struct RemoveArguments
{
    int id = 0;
};

QString NameOfDirectory(QString const& path)
{
    QString const name = QFileInfo(path).fileName();
    return name.isEmpty() ? path : name; // the file system's root
}

ExitStatus AddRoot(Session& session, AddArguments const& arguments)
{
    QString const directory = AbsolutePath(arguments.directory);
    if (!QFileInfo(directory).isDir())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("%1 is not an existing directory").arg(Quoted(directory)),
                      QStringLiteral("make it first, or give another one"));
    if (arguments.serverPath.isEmpty())
        throw EmptyServerPath();

    ClientTransaction transaction(session); // keeps other programs from adding an overlapping root after the check
    if (arguments.account)
        FindAccount(session, *arguments.account);
    if (auto const conflict = FindRootConflict(directory, session.Checked(session.folders().GetAllRootFolders())))
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 %2 %3")
                          .arg(Quoted(directory),
                               QLatin1String(conflict->relation),
                               Label("root", conflict->root.getId(), conflict->root.getClientPath())),
                      QStringLiteral("roots must not overlap: add another directory or remove that root"));

    FolderConfiguration root;
    root.setParentId(0);
    root.setName(arguments.name.value_or(NameOfDirectory(directory)));
    root.setClientPath(directory);
    root.setServerPath(QDir::cleanPath(arguments.serverPath));
    if (arguments.account)
        root.setAuthenticationId(*arguments.account);
    session.CheckWritten(session.folders().Add(root));
    if (auto const place = FolderPlace::Of(directory))
        session.CheckWritten(session.queries().SetFolderOrigin(root.getId(), place->Origin()));
    transaction.Commit();

    session.output().Report(QStringLiteral("recorded %1; 'tandryctl scan %2' records what is in it")
                                .arg(Label("root", root.getId(), directory), QString::number(root.getId())),
                            FolderColumns(),
                            root);
    return ExitStatus::Done;
}

ExitStatus RemoveRoot(Session& session, RemoveArguments const& arguments)
{
    FolderConfiguration const root = FindRoot(session, arguments.id);
    int const id = root.getId();
    auto const countReferences = [&](char const* table, char const* column) {
        return session.Checked(session.queries().CountReferences(table, column, id));
    };

    Removal removal(Label("root", id, root.getClientPath()));
    removal.AddRemoved(countReferences("FolderConfiguration", "rootId") - 1, "folder", "folders");
    removal.AddRemoved(countReferences("FileConfiguration", "rootFolderId"), "file", "files");
    removal.AddRemoved(
        countReferences("GeneratedFileConfiguration", "rootFolderId"), "generated file", "generated files");
    removal.AddOrphaned(countReferences("BaseFileConfiguration", "rootFolderId"), "base file", "base files");
    removal.AddOrphaned(
        session.Checked(session.queries().CountReferencesToTree("Schedules", "folderConfigurationId", id)),
        "schedule",
        "schedules");
    session.ConfirmRemoval(removal.text());

    ClientTransaction transaction(session);
    session.CheckWritten(session.files().RemoveGeneratedFileConfigurationsByRootFolderId(id));
    session.CheckWritten(session.folders().CleanRootFolder(id));
    session.CheckWritten(session.queries().RemoveOriginsOfMissingFolders());
    transaction.Commit();
    session.output().Report(QStringLiteral("removed ") + removal.text(), FolderColumns(), root);
    return ExitStatus::Done;
}

} // namespace

void AddRootCommands(Command& top)
{
    Command roots = top.Add("root", "Add, move and remove roots");

    auto const add = std::make_shared<AddArguments>();
    roots.Add("add", "Record an existing directory as a root")
        .Argument("DIR", add->directory, "The directory")
        .Required("--server-path", add->serverPath, "PATH", "The server path that it is synchronised with")
        .Option("--account", add->account, "The account that it belongs to")
        .Option("--name", add->name, "NAME", "The name to show; by default the directory's name")
        .Remark(
            "Refuses a directory that is a root, lies inside one or encloses one. Records only the directory itself:\n"
            "'tandryctl scan' records its contents.")
        .Example("root add ~/Documents --server-path /home/documents", "record a directory")
        .Example("root add /srv/team --server-path /team --account 2", "record a directory for account 2")
        .Run(StoreAccess::Write, [add](Session& session) { return AddRoot(session, *add); });

    AddRootMoveCommand(roots);

    auto const remove = std::make_shared<RemoveArguments>();
    roots.Add("remove", "Remove a root with all its folders and files on record")
        .Argument("ID", remove->id, "The root's id")
        .Remark("Shows what will be removed and asks for confirmation. Deletes nothing on disk.")
        .Example("root remove 1", "remove root 1 after confirmation")
        .Example("root remove 1 --yes", "remove it without confirmation")
        .Run(StoreAccess::Write, [remove](Session& session) { return RemoveRoot(session, *remove); });
}

} // namespace tandryctl
