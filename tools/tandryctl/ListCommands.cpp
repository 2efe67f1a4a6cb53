#include "CommandLine.h"
#include "Commands.h"
#include "FileLookup.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/ColumnReference.h"
#include "tools/findings/FileRows.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FindRecordColumn;
using sync::config::FolderConfiguration;
using tandry::findings::FileColumn;
using tandry::findings::FileConditions;
using tandry::findings::FileRows;
using tandry::findings::NamesOfValues;

namespace {

struct FolderArguments
{
    std::optional<int> root;
    std::optional<int> status;
    ListOptions options;
};

struct FileArguments
{
    std::optional<int> folder;
    std::optional<int> root;
    std::optional<int> type;
    std::optional<int> order;
    std::optional<int> status;
    ListOptions options;
};

struct TreeArguments
{
    std::optional<int> root;
};

constexpr char const* LeaveStatusOut = "leave out --status to see the others";

ExitStatus ListRoots(Session& session, ListOptions const& options)
{
    return List(session,
                FolderColumns(),
                session.Checked(session.folders().GetAllRootFolders()),
                "roots",
                HowToAddARoot,
                options);
}

ExitStatus ListFolders(Session& session, FolderArguments const& arguments)
{
    QVector<FolderConfiguration> folders = arguments.root
                                               ? session.Checked(session.folders().GetFolderConfigurationsByRootId(
                                                     FindRoot(session, *arguments.root).getId()))
                                               : session.Checked(session.folders().GetAll());
    auto const hasOtherStatus = [&](FolderConfiguration const& folder) {
        return arguments.status && folder.getSyncStatus() != *arguments.status;
    };
    folders.erase(std::remove_if(folders.begin(), folders.end(), hasOtherStatus), folders.end());
    return List(session,
                FolderColumns(),
                folders,
                arguments.status ? "folders with this status" : "folders",
                arguments.status ? LeaveStatusOut : HowToAddARoot,
                arguments.options);
}

FileConditions ConditionsOf(FileArguments const& arguments)
{
    FileConditions conditions;
    conditions.type = FileConfigurationType(arguments.type.value_or(conditions.type));
    conditions.folder = arguments.folder;
    conditions.root = arguments.root;
    conditions.status = arguments.status;
    if (arguments.options.name)
        conditions.name = GlobOf(*arguments.options.name);
    return conditions;
}

/// Unlike other records, files are too many to hold all of them in memory.
ExitStatus ListFiles(Session& session, FileArguments const& arguments)
{
    if (arguments.folder)
        FindFolder(session, *arguments.folder);
    if (arguments.root)
        FindRoot(session, *arguments.root);

    ListOptions const& options = arguments.options;
    auto const printed = PrintedColumns(FileColumns(), options, session.output().format());
    QVector<FileColumn const*> selected;
    for (Column<FileConfiguration> const& column : printed)
        selected.append(FindRecordColumn<FileConfiguration>(column.name));
    FileRows rows(session.store(), ConditionsOf(arguments), selected);

    std::optional<QString> const sort =
        arguments.order ? std::optional(FileOrderNames().at(*arguments.order)) : options.sort;
    if (sort) {
        QStringList const names = NamesOf(FileColumns());
        SortedBy const by = SortedByNamed(*sort, names);
        rows.SortBy(*FindRecordColumn<FileConfiguration>(names.at(by.column)), by.order);
    }
    qint64 const listed = session.output().ListEach<FileRows::Row>(
        FileRowColumns(printed),
        [&](std::function<void(FileRows::Row const&)> const& take) { rows.Read(take, options.limit); });
    qint64 const more = options.limit && listed == *options.limit ? rows.Count() - listed : 0;
    if (!session.Checked(rows.works()) || listed == 0)
        ThrowNothingListed(arguments.status ? "files with this status" : "files",
                           arguments.status ? LeaveStatusOut : "'tandryctl scan' records the files on disk",
                           options);
    NoteMore(more);
    return ExitStatus::Done;
}

ExitStatus ListSchedules(Session& session, ListOptions const& options)
{
    return List(session,
                ScheduleColumns(),
                AllSchedules(session),
                "schedules",
                "add one with 'tandryctl schedule add'",
                options);
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
    lists.Remark(
        "A listing shows the most important columns; with --json it has all of them. Line breaks and other\n"
        "control characters in names are shown as escapes such as \\n, and so is what is not in Unicode's composed\n"
        "form, such as e\\u0301 for an accent of its own.\n\n"
        "Servers, accounts and products are listed by 'server list', 'account list' and 'product list'.");

    auto const roots = std::make_shared<ListOptions>();
    Command listRoots = lists.Add("roots", "List the roots");
    AddListOptions(listRoots, *roots)
        .Example("list roots", "show the local and server paths of the roots")
        .Run(StoreAccess::Read, [roots](Session& session) { return ListRoots(session, *roots); });

    auto const folders = std::make_shared<FolderArguments>();
    Command listFolders = lists.Add("folders", "List the folders, including the roots");
    listFolders.Option("--root", folders->root, "Only this root and its folders")
        .Value("--status",
               folders->status,
               *NamesOfValues<FolderConfiguration>(QStringLiteral("syncStatus")),
               "STATUS",
               "Only folders with this syncStatus: initial, out-of-sync, placed or a number");
    AddListOptions(listFolders, folders->options)
        .Example("list folders --root 1", "show root 1 and its folders")
        .Example("list folders --status out-of-sync", "show the folders that are to be synchronised")
        .Example("list folders --json", "print all folders with all columns")
        .Run(StoreAccess::Read, [folders](Session& session) { return ListFolders(session, *folders); });

    auto const files = std::make_shared<FileArguments>();
    Command listFiles = lists.Add("files", "List the files");
    listFiles.Option("--folder", files->folder, "Only files directly in this folder")
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
               *NamesOfValues<FileConfiguration>(QStringLiteral("syncStatus")),
               "STATUS",
               "Only files with this syncStatus: syncing, not-synced, link-discovered or a number");
    AddListOptions(listFiles, files->options)
        .Excludes("--order", "--sort")
        .Remark("--order sorts by id, name, folderConfigurationId, clientPath, serverPath, checkSum, createdDateTime,\n"
                "lastModifiedDateTime, syncStatus, lastOperationType or size, and --sort by any column. Both keep the\n"
                "column and the id of each file in memory; without them memory does not grow with the files.")
        .Example("list files --folder 3 --order size-desc", "show the files of folder 3 in descending order of size")
        .Example("list files --status not-synced", "show the files that are to be synchronised")
        .Example("list files --name '*.iso' --columns size,clientPath --sort size-desc --limit 20",
                 "show the 20 largest images")
        .Run(StoreAccess::Read, [files](Session& session) { return ListFiles(session, *files); });

    auto const schedules = std::make_shared<ListOptions>();
    Command listSchedules = lists.Add("schedules", "List the schedules");
    AddListOptions(listSchedules, *schedules, nullptr)
        .Example("list schedules", "show the default schedule and those of folders")
        .Run(StoreAccess::Read, [schedules](Session& session) { return ListSchedules(session, *schedules); });

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
