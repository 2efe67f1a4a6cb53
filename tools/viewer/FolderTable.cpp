#include "tools/viewer/FolderTable.h"

#include "models/FolderTreeModel.h"

namespace tandry::viewer {

using sync::models::FolderTreeModel;

FolderTable::FolderTable(FolderTreeModel& folders, QObject* parent)
    : QIdentityProxyModel(parent)
    , _folders(folders)
    , _statusTextRole(folders.roleNames().key("syncStatusText"))
    , _rootIdRole(folders.roleNames().key("rootId"))
{
    setSourceModel(&folders);
    // The base class passes on that the first column has changed.
    connect(&folders,
            &FolderTreeModel::dataChanged,
            this,
            [this](QModelIndex const& first, QModelIndex const& last, QVector<int> const& roles) {
                QModelIndex const branch = mapFromSource(first.parent());
                Q_EMIT dataChanged(index(first.row(), Status, branch), index(last.row(), Status, branch), roles);
            });
}

QModelIndex FolderTable::_NameOf(QModelIndex const& index) const
{
    return index.isValid() ? createIndex(index.row(), Name, index.internalPointer()) : QModelIndex();
}

int FolderTable::FolderId(QModelIndex const& index) const
{
    return _folders.FolderId(mapToSource(_NameOf(index)));
}

int FolderTable::RootId(QModelIndex const& index) const
{
    return _NameOf(index).data(_rootIdRole).toInt();
}

QModelIndex FolderTable::IndexOf(int folderId) const
{
    return mapFromSource(_folders.IndexOf(folderId));
}

QModelIndex FolderTable::index(int row, int column, QModelIndex const& parent) const
{
    QModelIndex const name = QIdentityProxyModel::index(row, Name, _NameOf(parent));
    return column == Name || !name.isValid() ? name : createIndex(row, column, name.internalPointer());
}

QModelIndex FolderTable::parent(QModelIndex const& child) const
{
    return QIdentityProxyModel::parent(_NameOf(child));
}

QModelIndex FolderTable::sibling(int row, int column, QModelIndex const& index) const
{
    return this->index(row, column, parent(index));
}

bool FolderTable::hasChildren(QModelIndex const& parent) const
{
    return parent.column() <= Name && QIdentityProxyModel::hasChildren(parent);
}

int FolderTable::rowCount(QModelIndex const& parent) const
{
    return parent.column() <= Name ? QIdentityProxyModel::rowCount(parent) : 0;
}

int FolderTable::columnCount(QModelIndex const&) const
{
    return ColumnCount;
}

Qt::ItemFlags FolderTable::flags(QModelIndex const& index) const
{
    return QIdentityProxyModel::flags(_NameOf(index));
}

QVariant FolderTable::data(QModelIndex const& index, int role) const
{
    bool const isStatus = index.column() == Status && role == Qt::DisplayRole;
    return QIdentityProxyModel::data(_NameOf(index), isStatus ? _statusTextRole : role);
}

QVariant FolderTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == Status && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return tr("Status");
    return QIdentityProxyModel::headerData(section, orientation, role);
}

} // namespace tandry::viewer
