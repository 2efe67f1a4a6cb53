#pragma once

#include <QIdentityProxyModel>

namespace sync::models {
class FolderTreeModel;
}

namespace tandry::viewer {

/// The tree of folders with their status in a second column.
class FolderTable : public QIdentityProxyModel
{
    Q_OBJECT

public:
    enum Column
    {
        Name,
        Status,
        ColumnCount
    };

    /// Shows the model, which must outlive this object.
    explicit FolderTable(sync::models::FolderTreeModel& folders, QObject* parent = nullptr);

    /// Returns the id of a row's folder; 0 for an invalid index.
    int FolderId(QModelIndex const& index) const;
    /// Returns the id of the root that holds the row's folder; 0 for an invalid index.
    int RootId(QModelIndex const& index) const;
    QModelIndex IndexOf(int folderId) const;

    QModelIndex index(int row, int column, QModelIndex const& parent = {}) const override;
    QModelIndex parent(QModelIndex const& child) const override;
    using QObject::parent;
    QModelIndex sibling(int row, int column, QModelIndex const& index) const override;
    bool hasChildren(QModelIndex const& parent = {}) const override;
    int rowCount(QModelIndex const& parent = {}) const override;
    int columnCount(QModelIndex const& parent = {}) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QModelIndex _NameOf(QModelIndex const& index) const;

    sync::models::FolderTreeModel& _folders;
    int const _statusTextRole;
    int const _rootIdRole;
};

} // namespace tandry::viewer
