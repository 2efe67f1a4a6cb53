#include "CommandLine.h"
#include "Commands.h"
#include "FileLookup.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Text.h"

#include "tools/findings/ColumnReference.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FolderConfiguration;

namespace {

struct FolderArguments
{
    std::optional<int> root;
};

struct FileArguments
{
    std::optional<int> folder;
    std::optional<int> root;
    std::optional<int> type;
    std::optional<int> order;
    std::optional<int> status;
};

struct TreeArguments
{
    std::optional<int> root;
};

ExitStatus ListRoots(Session& session)
{
    return List(
        session, FolderColumns(), session.Checked(session.folders().GetAllRootFolders()), "roots", HowToAddARoot);
}

ExitStatus ListFolders(Session& session, FolderArguments const& arguments)
{
    QVector<FolderConfiguration> const folders =
        arguments.root ? session.Checked(session.folders().GetFolderConfigurationsByRootId(
                             FindRoot(session, *arguments.root).getId()))
                       : session.Checked(session.folders().GetAll());
    return List(session, FolderColumns(), folders, "folders", HowToAddARoot);
}

ExitStatus ListFiles(Session& session, FileArguments const& arguments)
{
    if (arguments.folder)
        FindFolder(session, *arguments.folder);
    if (arguments.root)
        FindRoot(session, *arguments.root);

    FileFilter filter;
    filter.type = FileConfigurationType(arguments.type.value_or(filter.type));
    filter.folder = arguments.folder;
    filter.root = arguments.root;
    filter.status = arguments.status;
    QVector<FileConfiguration> files = FindFiles(session, filter);
    if (arguments.order)
        SortFiles(files, *arguments.order);
    return List(session, FileColumns(), files, "files", "'tandryctl scan' records the files on disk");
}

ExitStatus ListSchedules(Session& session)
{
    return List(
        session, ScheduleColumns(), AllSchedules(session), "schedules", "add one with 'tandryctl schedule add'");
}

struct TreeNode
{
    int depth;
    FolderConfiguration folder;
};

Columns<TreeNode> const& TreeColumns()
{
    static Columns<TreeNode> const columns{
        {"id", Shown::Always, [](TreeNode const& node) { return node.folder.getId(); }},
        {"parentId", Shown::Always, [](TreeNode const& node) { return node.folder.getParentId(); }},
        {"depth", Shown::Always, [](TreeNode const& node) { return node.depth; }},
        {"name", Shown::Always, [](TreeNode const& node) { return node.folder.getName(); }},
        {"clientPath", Shown::Always, [](TreeNode const& node) { return node.folder.getClientPath(); }},
        {"serverPath", Shown::Always, [](TreeNode const& node) { return node.folder.getServerPath(); }},
    };
    return columns;
}

/// The folders of a root, parents before children and siblings sorted by name.
class Tree
{
public:
    Tree(FolderConfiguration const& root, QVector<FolderConfiguration> folders)
    {
        std::sort(folders.begin(), folders.end(), [](auto const& left, auto const& right) {
            return left.getName() < right.getName();
        });
        for (FolderConfiguration const& folder : qAsConst(folders)) {
            if (folder.getId() != root.getId())
                _children[folder.getParentId()].append(folder);
        }
        _Append(root);
        // The folders that are left have no parent in this root. They are shown directly below it.
        while (!_children.isEmpty()) {
            for (FolderConfiguration const& orphan : _children.take(_OrphanParent()))
                _Append(orphan, 1);
        }
    }

    QVector<TreeNode> const& nodes() const { return _nodes; }

private:
    /// Returns a parent that is not itself a remaining child, or any parent if the parents form a ring.
    int _OrphanParent() const
    {
        QSet<int> children;
        for (QVector<FolderConfiguration> const& siblings : _children) {
            for (FolderConfiguration const& folder : siblings)
                children.insert(folder.getId());
        }
        for (auto parent = _children.keyBegin(); parent != _children.keyEnd(); ++parent) {
            if (!children.contains(*parent))
                return *parent;
        }
        return *_children.keyBegin();
    }

    void _Append(FolderConfiguration const& top, int depth = 0)
    {
        QVector<TreeNode> open{{depth, top}}; // not recursive: a tree may be too deep for the stack
        while (!open.isEmpty()) {
            TreeNode const node = open.takeLast();
            _nodes.append(node);
            QVector<FolderConfiguration> const children = _children.take(node.folder.getId());
            for (auto child = children.crbegin(); child != children.crend(); ++child)
                open.append({node.depth + 1, *child});
        }
    }

    QHash<int, QVector<FolderConfiguration>> _children;
    QVector<TreeNode> _nodes;
};

ExitStatus ShowTree(Session& session, TreeArguments const& arguments)
{
    QVector<TreeNode> nodes;
    for (FolderConfiguration const& root : FindRoots(session, arguments.root))
        nodes += Tree(root, session.Checked(session.folders().GetFolderConfigurationsByRootId(root.getId()))).nodes();

    if (session.output().format() == OutputFormat::Json) {
        session.output().List(TreeColumns(), nodes);
        return ExitStatus::Done;
    }
    for (TreeNode const& node : qAsConst(nodes)) {
        QString const label = node.depth == 0 ? node.folder.getClientPath() : node.folder.getName();
        session.output().PrintLine(QString(2 * node.depth, QLatin1Char(' ')) + Printable(label));
    }
    return ExitStatus::Done;
}

} // namespace

void AddListCommands(Command& top)
{
    Command lists = top.Add("list", "List records");
    lists.Remark("A listing shows the most important columns; with --json it has all of them. Line breaks and other\n"
                 "control characters in names are shown as escapes such as \\n.");

    lists.Add("roots", "List the roots")
        .Example("list roots", "show the local and server paths of the roots")
        .Run(StoreAccess::Read, ListRoots);

    auto const folders = std::make_shared<FolderArguments>();
    lists.Add("folders", "List the folders, including the roots")
        .Option("--root", folders->root, "Only this root and its folders")
        .Example("list folders --root 1", "show root 1 and its folders")
        .Example("list folders --json", "print all folders with all columns")
        .Run(StoreAccess::Read, [folders](Session& session) { return ListFolders(session, *folders); });

    auto const files = std::make_shared<FileArguments>();
    lists.Add("files", "List the files")
        .Option("--folder", files->folder, "Only files directly in this folder")
        .Option("--root", files->root, "Only files in this root")
        .Excludes("--folder", "--root")
        .Choice("--type", files->type, FileTypeNames(), "KIND", "file, generated or base; file by default")
        .Choice("--order",
                files->order,
                FileOrderNames(),
                "COLUMN",
                "Sort by this column; COLUMN-desc for descending order")
        .Value("--status",
               files->status,
               *tandry::findings::NamesOfValues<FileConfiguration>(QStringLiteral("syncStatus")),
               "STATUS",
               "Only files with this syncStatus: syncing, not-synced, link-discovered or a number")
        .Remark(
            "Columns to sort by: id, name, folderConfigurationId, clientPath, serverPath, checkSum, createdDateTime,\n"
            "lastModifiedDateTime, syncStatus, lastOperationType, size.")
        .Example("list files --folder 3 --order size-desc", "show the files of folder 3 in descending order of size")
        .Example("list files --status not-synced", "show the files that are to be synchronised")
        .Run(StoreAccess::Read, [files](Session& session) { return ListFiles(session, *files); });

    lists.Add("schedules", "List the schedules")
        .Example("list schedules", "show the default schedule and those of folders")
        .Run(StoreAccess::Read, ListSchedules);

    auto const tree = std::make_shared<TreeArguments>();
    top.Add("tree", "Print the folders as a tree")
        .OptionalArgument("ROOT_ID", tree->root, "Only the tree of this root")
        .Remark(
            "Prints one line per folder, indented by two blanks per level; with --json in the same order, with depths.")
        .Example("tree", "print the trees of all roots")
        .Example("tree 1 --json", "print the tree of root 1 as JSON")
        .Run(StoreAccess::Read, [tree](Session& session) { return ShowTree(session, *tree); });
}

} // namespace tandryctl
