#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQueries.h"
#include "Text.h"

#include <QFileInfo>
#include <QSet>
#include <QStringList>
#include <QVector>

#include <vector>

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
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("%1 is not a folder").arg(Quoted(path)),
                      QStringLiteral("give a folder; 'tandryctl scan' records files"));
    if (arguments.account)
        FindAccount(session, *arguments.account);
    auto const root = FindRootOf(path, session.Checked(session.folders().GetAllRootFolders()), arguments.account);
    if (!root)
        throw Failure(FailureCode::NotFound, QStringLiteral("%1 lies in no root").arg(Quoted(path)), See("list roots"));

    int const before =
        session.Checked(session.queries().CountReferences("FolderConfiguration", "rootId", root->getId()));
    FolderConfiguration const folder = session.Checked(session.folders().AddFolderAndParent(path, *root));
    if (folder.getId() == -1)
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 cannot be recorded below %2")
                          .arg(Quoted(path), Label("root", root->getId(), root->getClientPath())),
                      See(QStringLiteral("tree %1").arg(root->getId())));
    int const added =
        session.Checked(session.queries().CountReferences("FolderConfiguration", "rootId", root->getId())) - before;

    QString sentence = added > 0 ? QStringLiteral("recorded ") : QStringLiteral("already on record: ");
    sentence += Label("folder", folder.getId(), path);
    if (added > 1)
        sentence += QStringLiteral(" and %1 above it").arg(Counted(added - 1, "folder", "folders"));
    session.output().Report(sentence, FolderColumns(), folder);
    return ExitStatus::Done;
}

/// Without `recursive`, the removal orphans the rows that a recursive one removes.
Removal RemovalOf(Session& session, FolderConfiguration const& folder, bool recursive)
{
    auto const count = [&](char const* table, char const* column) {
        StoreQueries& queries = session.queries();
        return session.Checked(recursive ? queries.CountReferencesToTree(table, column, folder.getId())
                                         : queries.CountReferences(table, column, folder.getId()));
    };
    Removal removal(Label("folder", folder.getId(), folder.getClientPath()));
    auto const removeOrOrphan = [&](int rows, char const* singular, char const* plural) {
        if (recursive)
            removal.AddRemoved(rows, singular, plural);
        else
            removal.AddOrphaned(rows, singular, plural);
    };
    removeOrOrphan(recursive ? count("FolderConfiguration", "id") - 1 : count("FolderConfiguration", "parentId"),
                   "sub-folder",
                   "sub-folders");
    removeOrOrphan(count("FileConfiguration", "folderConfigurationId"), "file", "files");
    removal.AddOrphaned(
        count("GeneratedFileConfiguration", "folderConfigurationId"), "generated file", "generated files");
    removal.AddOrphaned(count("BaseFileConfiguration", "folderConfigurationId"), "base file", "base files");
    removal.AddOrphaned(count("Schedules", "folderConfigurationId"), "schedule", "schedules");
    return removal;
}

[[noreturn]] void ThrowRing(QVector<FolderConfiguration> const& ring)
{
    QStringList labels;
    for (FolderConfiguration const& folder : ring)
        labels.append(Label("folder", folder.getId(), folder.getClientPath()));
    constexpr int most = 5;
    if (labels.size() > most)
        labels = labels.mid(0, most) + QStringList{QStringLiteral("%1 more").arg(labels.size() - most)};
    throw Failure(FailureCode::Conflict,
                  QStringLiteral("nothing was removed: the parents of %1 form a ring").arg(JoinWithAnd(labels)),
                  QStringLiteral("'tandryctl folder remove %1' without --recursive removes one of them and breaks it")
                      .arg(ring.first().getId()));
}

/// Returns the ids of a folder and of all folders below it, each below its children, which are in the order of their
/// names. Throws if a folder lies in itself.
QVector<int> IdsFromBelow(Session& session, FolderConfiguration const& top)
{
    struct Level
    {
        FolderConfiguration folder;
        QVector<FolderConfiguration> children;
        int next = 0;
    };
    auto const open = [&](FolderConfiguration const& folder) {
        return Level{folder, session.Checked(session.folders().GetFolderConfigurationByParentId(folder.getId()))};
    };
    QVector<int> ids;
    std::vector<Level> way{open(top)}; // not recursive: a tree may be too deep for the stack
    QSet<int> onTheWay{top.getId()};
    while (!way.empty()) {
        Level& level = way.back();
        if (level.next == level.children.size()) {
            ids.append(level.folder.getId());
            onTheWay.remove(level.folder.getId());
            way.pop_back();
            continue;
        }
        FolderConfiguration const child = level.children.at(level.next++);
        if (onTheWay.contains(child.getId())) {
            QVector<FolderConfiguration> ring;
            for (Level const& each : way) {
                if (!ring.isEmpty() || each.folder.getId() == child.getId())
                    ring.append(each.folder);
            }
            ThrowRing(ring);
        }
        onTheWay.insert(child.getId());
        way.push_back(open(child));
    }
    return ids;
}

ExitStatus RemoveFolder(Session& session, RemoveArguments const& arguments)
{
    FolderConfiguration const folder = FindFolder(session, arguments.id);
    if (folder.isRoot())
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 is a root").arg(Label("folder", folder.getId(), folder.getClientPath())),
                      QStringLiteral("remove it with 'tandryctl root remove %1'").arg(folder.getId()));

    Removal const removal = RemovalOf(session, folder, arguments.recursive);
    session.ConfirmRemoval(removal.text());
    ClientTransaction transaction(session);
    if (arguments.recursive) {
        for (int const id : IdsFromBelow(session, folder)) {
            session.CheckWritten(session.folders().Remove(id));
            session.CheckWritten(session.files().RemoveByFolderConfigurationId(id));
        }
    }
    else
        session.CheckWritten(session.folders().Remove(folder.getId()));
    session.CheckWritten(session.queries().RemoveOriginsOfMissingFolders());
    transaction.Commit();
    session.output().Report(QStringLiteral("removed ") + removal.text(), FolderColumns(), folder);
    return ExitStatus::Done;
}

} // namespace

void AddFolderCommands(Command& top)
{
    Command folders = top.Add("folder", "Add and remove folders below the roots");

    auto const add = std::make_shared<AddArguments>();
    folders.Add("add", "Record a folder and its parents that are not recorded yet")
        .Argument("PATH", add->path, "The folder; it need not exist on disk")
        .Option("--account", add->account, "Consider only the roots of this account")
        .Remark("The path must lie in a root. The server path is derived from the root's.")
        .Example("folder add ~/Documents/letters/2024", "record letters and 2024 below the root ~/Documents")
        .Run(StoreAccess::Write, [add](Session& session) { return AddFolder(session, *add); });

    auto const remove = std::make_shared<RemoveArguments>();
    folders.Add("remove", "Remove a folder from the store")
        .Argument("ID", remove->id, "The folder's id")
        .Flag("-r,--recursive", remove->recursive, "Remove the folders below it and the files in them too")
        .Remark("Shows what will be removed and what will then belong to nothing, and asks for confirmation. Deletes\n"
                "nothing on disk.")
        .Example("folder remove 7 --recursive", "remove folder 7 and everything below it after confirmation")
        .Example("folder remove 7 --yes", "remove only its own record, without confirmation")
        .Run(StoreAccess::Write, [remove](Session& session) { return RemoveFolder(session, *remove); });
}

} // namespace tandryctl
