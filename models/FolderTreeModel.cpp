#include "models/FolderTreeModel.h"

#include "config/FolderConfiguration.h"
#include "models/Readings.h"
#include "models/RecordRows.h"
#include "models/RowDifference.h"
#include "models/StoreWatcher.h"

#include <QVector>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace sync::models {

using sync::config::FolderConfiguration;
using sync::interf::factory::IDatabaseFactory;

namespace {

const QString FolderTable = QStringLiteral("FolderConfiguration");
/// In the order of the index, so that the store need not sort; the id makes the order of equal names one.
const QString ChildrenOf = QStringLiteral("WHERE parentId = :parentId ORDER BY name, id");

} // namespace

/// A folder. That of the invalid index has the id 0, as which the roots name it.
struct FolderTreeModel::Node
{
    RecordRow row;
    Node* parent = nullptr;
    int position = 0;      // among the parent's children
    bool isOpened = false; // by a view, whether or not the store could be read
    bool isRead = false;
    std::vector<std::unique_ptr<Node>> children;
};

struct FolderTreeModel::Tree
{
    RecordRows rows;
    int nameRole;
    int pathRole;
    Node root;
    QHash<int, Node*> nodes;
    Readings readings;

    Tree(FolderTreeModel& model, std::shared_ptr<IDatabaseFactory> factory)
        : rows(RecordRows::Of<FolderConfiguration>(std::move(factory), FolderTable))
        , nameRole(rows.WithRoles({}).key("name"))
        , pathRole(rows.WithRoles({}).key("clientPath"))
        , readings(model, [&model] { return model.ReadOpened(); })
    {}

    /// Two branches that are read one after the other may both have a folder that changed its parent meanwhile.
    void Forget(Node const& node)
    {
        for (auto const& child : node.children)
            Forget(*child);
        if (nodes.value(node.row.id) == &node)
            nodes.remove(node.row.id);
    }
};

/// The children of a folder, for `ApplyDifference`.
class FolderTreeModel::Branch
{
public:
    Branch(FolderTreeModel& model, Node& node)
        : _model(model)
        , _node(node)
        , _index(model.IndexOfNode(node))
    {}

    int size() const { return static_cast<int>(_node.children.size()); }
    int id(int at) const { return Child(at).row.id; }

    void Remove(int first, int last)
    {
        _model.beginRemoveRows(_index, first, last);
        for (int at = first; at <= last; ++at)
            _model._tree->Forget(Child(at));
        _node.children.erase(_node.children.begin() + first, _node.children.begin() + last + 1);
        Number(first);
        _model.endRemoveRows();
    }

    void Move(int from, int to)
    {
        _model.beginMoveRows(_index, from, from, _index, to);
        MoveElement(_node.children.begin(), from, to);
        Number(std::min(from, to));
        _model.endMoveRows();
    }

    void Insert(int at, RecordRow const* first, int count)
    {
        std::vector<std::unique_ptr<Node>> added;
        for (RecordRow const* row = first; row != first + count; ++row) {
            added.push_back(std::make_unique<Node>());
            added.back()->row = *row;
            added.back()->parent = &_node;
            _model._tree->nodes.insert(row->id, added.back().get());
        }
        _model.beginInsertRows(_index, at, at + count - 1);
        _node.children.insert(
            _node.children.begin() + at, std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
        Number(at);
        _model.endInsertRows();
    }

    void Update(int at, RecordRow const& row)
    {
        Node& child = Child(at);
        if (child.row.values == row.values)
            return;
        child.row = row;
        QModelIndex const index = _model.IndexOfNode(child);
        Q_EMIT _model.dataChanged(index, index);
    }

private:
    Node& Child(int at) const { return *_node.children[static_cast<std::size_t>(at)]; }

    void Number(int first)
    {
        for (int at = first; at < size(); ++at)
            Child(at).position = at;
    }

    FolderTreeModel& _model;
    Node& _node;
    QModelIndex const _index;
};

FolderTreeModel::FolderTreeModel(std::shared_ptr<IDatabaseFactory> factory, QObject* parent)
    : QAbstractItemModel(parent)
    , _tree(std::make_unique<Tree>(*this, std::move(factory)))
{}

FolderTreeModel::~FolderTreeModel() = default;

void FolderTreeModel::Follow(StoreWatcher const& watcher)
{
    connect(&watcher, &StoreWatcher::Changed, this, [this](QStringList const& tables) {
        if (tables.contains(FolderTable) && _tree->root.isOpened)
            _tree->readings.Follow();
    });
}

bool FolderTreeModel::Refresh()
{
    return !_tree->root.isOpened || _tree->readings.Refresh();
}

bool FolderTreeModel::ReadOpened()
{
    std::vector<Node*> opened{&_tree->root};
    bool succeeds = true;
    QString error;
    while (succeeds && !opened.empty()) { // the next branch would wait for the same lock
        Node& node = *opened.back();
        opened.pop_back();
        succeeds = Read(node, error);
        for (auto const& child : node.children) {
            if (child->isOpened)
                opened.push_back(child.get());
        }
    }
    return Tell(succeeds, error);
}

bool FolderTreeModel::Tell(bool isRead, QString const& error)
{
    if (isRead)
        Q_EMIT Loaded();
    else
        Q_EMIT Failed(error);
    return isRead;
}

bool FolderTreeModel::Read(Node& node, QString& error)
{
    node.isOpened = true;
    std::optional<QVector<RecordRow>> const rows =
        _tree->rows.Read(ChildrenOf, {{QStringLiteral(":parentId"), node.row.id}}, &error);
    if (!rows)
        return false;
    bool const hadChildren = !node.isRead || !node.children.empty();
    node.isRead = true;
    Branch branch(*this, node);
    ApplyDifference(branch, *rows, [](RecordRow const& row) { return row.id; });
    if (hadChildren && node.children.empty() && node.parent != nullptr) {
        QModelIndex const index = IndexOfNode(node); // a view takes its sign of a branch away
        Q_EMIT dataChanged(index, index);
    }
    return true;
}

int FolderTreeModel::FolderId(QModelIndex const& index) const
{
    return NodeOf(index).row.id;
}

QModelIndex FolderTreeModel::IndexOf(int folderId) const
{
    Node const* const node = _tree->nodes.value(folderId);
    return node != nullptr ? IndexOfNode(*node) : QModelIndex();
}

FolderTreeModel::Node& FolderTreeModel::NodeOf(QModelIndex const& index) const
{
    return index.isValid() ? *static_cast<Node*>(index.internalPointer()) : _tree->root;
}

QModelIndex FolderTreeModel::IndexOfNode(Node const& node) const
{
    return node.parent != nullptr ? createIndex(node.position, 0, const_cast<Node*>(&node)) : QModelIndex();
}

QModelIndex FolderTreeModel::index(int row, int column, QModelIndex const& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, NodeOf(parent).children[static_cast<std::size_t>(row)].get());
}

QModelIndex FolderTreeModel::parent(QModelIndex const& child) const
{
    return child.isValid() ? IndexOfNode(*NodeOf(child).parent) : QModelIndex();
}

int FolderTreeModel::rowCount(QModelIndex const& parent) const
{
    return static_cast<int>(NodeOf(parent).children.size());
}

int FolderTreeModel::columnCount(QModelIndex const&) const
{
    return 1;
}

bool FolderTreeModel::hasChildren(QModelIndex const& parent) const
{
    Node const& node = NodeOf(parent);
    return !node.isRead || !node.children.empty();
}

bool FolderTreeModel::canFetchMore(QModelIndex const& parent) const
{
    return !NodeOf(parent).isRead;
}

void FolderTreeModel::fetchMore(QModelIndex const& parent)
{
    if (!canFetchMore(parent))
        return;
    _tree->readings.Open([this, &node = NodeOf(parent)] {
        QString error;
        return Tell(Read(node, error), error);
    });
}

QVariant FolderTreeModel::data(QModelIndex const& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    RecordRow const& row = NodeOf(index).row;
    if (role == Qt::ToolTipRole)
        return _tree->rows.Value(row, _tree->pathRole);
    if (role != Qt::DisplayRole)
        return _tree->rows.Value(row, role);
    QVariant const name = _tree->rows.Value(row, _tree->nameRole);
    return name.toString().isEmpty() ? _tree->rows.Value(row, _tree->pathRole) : name;
}

QVariant FolderTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return tr("Folder");
    return QAbstractItemModel::headerData(section, orientation, role);
}

QHash<int, QByteArray> FolderTreeModel::roleNames() const
{
    return _tree->rows.WithRoles(QAbstractItemModel::roleNames());
}

} // namespace sync::models
