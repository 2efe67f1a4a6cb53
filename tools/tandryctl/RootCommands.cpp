#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQuestions.h"
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
    return name.isEmpty() ? path : name; // only the file system's own root has none
}

ExitStatus AddRoot(Session& session, AddArguments const& arguments)
{
    QString const directory = AbsolutePath(arguments.directory);
    if (!QFileInfo(directory).isDir())
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 is no directory; give one that exists").arg(Quoted(directory)));
    if (arguments.serverPath.isEmpty())
        throw Failure(ExitStatus::WrongUsage, QStringLiteral("the server path is empty; give one, such as /docs"));

    Bracket bracket(session); // so that no other program records an overlapping root between the look and the write
    if (arguments.account)
        FindAccount(session, *arguments.account);
    if (auto const conflict = FindRootConflict(directory, session.Read(session.folders().GetAllRootFolders())))
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 %2 %3; roots must lie apart, so add another directory or remove that root")
                          .arg(Quoted(directory),
                               QLatin1String(conflict->relation),
                               Titled("root", conflict->root.getId(), conflict->root.getClientPath())));

    FolderConfiguration root;
    root.setParentId(0);
    root.setName(arguments.name.value_or(NameOfDirectory(directory)));
    root.setClientPath(directory);
    root.setServerPath(QDir::cleanPath(arguments.serverPath));
    if (arguments.account)
        root.setAuthenticationId(*arguments.account);
    session.Wrote(session.folders().Add(root));
    bracket.Commit();

    session.output().Report(QStringLiteral("recorded %1; 'tandryctl scan %2' records what is in it")
                                .arg(Titled("root", root.getId(), directory), QString::number(root.getId())),
                            FolderColumns(),
                            root);
    return ExitStatus::Done;
}

ExitStatus RemoveRoot(Session& session, RemoveArguments const& arguments)
{
    FolderConfiguration const root = FindRoot(session, arguments.id);
    int const id = root.getId();
    auto const countNaming = [&](char const* table, char const* column) {
        return session.Read(session.questions().CountNaming(table, column, id));
    };

    Removal removal(Titled("root", id, root.getClientPath()));
    removal.Takes(countNaming("FolderConfiguration", "rootId") - 1, "folder", "folders");
    removal.Takes(countNaming("FileConfiguration", "rootFolderId"), "file", "files");
    removal.Takes(countNaming("GeneratedFileConfiguration", "rootFolderId"), "generated file", "generated files");
    removal.Leaves(countNaming("BaseFileConfiguration", "rootFolderId"), "base file", "base files");
    removal.Leaves(session.Read(session.questions().CountNamingTree("Schedules", "folderConfigurationId", id)),
                   "schedule",
                   "schedules");
    session.ConfirmRemoval(removal.text());

    Bracket bracket(session);
    session.Wrote(session.files().RemoveGeneratedFileConfigurationsByRootFolderId(id));
    session.Wrote(session.folders().CleanRootFolder(id));
    bracket.Commit();
    session.output().Report(QStringLiteral("removed ") + removal.text(), FolderColumns(), root);
    return ExitStatus::Done;
}

} // namespace

void AddRootCommands(Command& top)
{
    Command roots = top.Add("root", "Add and remove synchronised roots");

    auto const add = std::make_shared<AddArguments>();
    roots.Add("add", "Record an existing directory as a root")
        .Argument("DIR", add->directory, "The directory")
        .Required("--server-path", add->serverPath, "PATH", "The path on the server that it is synchronised with")
        .Option("--account", add->account, "The account that it belongs to")
        .Option("--name", add->name, "NAME", "What to call it; without it the directory's own name")
        .Remark("A directory that is a root already, lies inside one or encloses one is refused. Only the directory\n"
                "itself is recorded: 'tandryctl scan' records what is in it.")
        .Example("root add ~/Documents --server-path /home/documents", "record a directory")
        .Example("root add /srv/team --server-path /team --account 2", "record one that belongs to account 2")
        .Run(StoreAccess::Write, [add](Session& session) { return AddRoot(session, *add); });

    auto const remove = std::make_shared<RemoveArguments>();
    roots.Add("remove", "Remove a root with everything on record in it")
        .Argument("ID", remove->id, "The root's id")
        .Remark("Says what will go and asks first. Nothing on disk is touched.")
        .Example("root remove 1", "remove root 1 after a question")
        .Example("root remove 1 --yes", "remove it without one")
        .Run(StoreAccess::Write, [remove](Session& session) { return RemoveRoot(session, *remove); });
}

} // namespace tandryctl
