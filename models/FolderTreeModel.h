#pragma once

#include "TandryModelsExport.h"

#include <QAbstractItemModel>
#include <QByteArray>
#include <QHash>
#include <QModelIndex>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

class StoreWatcher;

/// The roots and folders of a store as a tree with one column, for item views and QML. Read-only.
///
/// The children of a folder are read when its branch opens (`fetchMore`), ordered by name as the store orders texts.
/// Until then a folder counts as one with children. A row shows the folder's name, or its path if it has none, and the
/// path as tool tip.
///
/// Each column of the table is a role of that name, with the values that `sync::config::RecordColumn::Get` returns:
/// "clientPath", "syncStatus". Columns with numbers that have names have a second role with "Text" appended, for the
/// name in the user's language: "syncStatusText".
///
/// Belongs to the thread that it lives in, and reads the store there.
class TANDRY_MODELS_EXPORT FolderTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// Reads nothing yet. Keeps a share of the factory, which must not be null.
    explicit FolderTreeModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory,
                             QObject* parent = nullptr);
    ~FolderTreeModel() override;

    /// Refreshes the model when the watcher tells of a change of folders, before the watcher's slots that are connected
    /// later. If that takes long, the next refresh waits for four times as long, up to a second, so that a store that
    /// others go on changing leaves the thread time for its window. The watcher must live in the model's thread; it may
    /// be destroyed before the model.
    void Follow(StoreWatcher const& watcher);

    /// Reads the branches that have been opened anew. Rows that came, went, moved within their branch or changed are
    /// signalled as such, so views keep selection and scroll position; a folder that now has another parent goes from
    /// one branch and comes in the other. Also opens the branches that the store failed to open before. If the store
    /// fails, returns false, and the branches that have not been read by then stay as they were. In a slot of the
    /// model's signals, returns true and reads when all slots have returned.
    bool Refresh();

    /// Returns the id of a row's folder; 0, which is the parent id of the roots, for an invalid index.
    [[nodiscard]] int FolderId(QModelIndex const& index) const;
    /// Returns the row of the folder with this id; an invalid index if its branch has not been opened.
    [[nodiscard]] QModelIndex IndexOf(int folderId) const;

    /// Returns the index of a row below the parent; an invalid one if there is no such row.
    QModelIndex index(int row, int column, QModelIndex const& parent = {}) const override;
    /// Returns the row of the parent folder; an invalid index for a root.
    QModelIndex parent(QModelIndex const& child) const override;
    using QObject::parent;
    /// Returns the number of rows that the branch has; 0 until it opens.
    int rowCount(QModelIndex const& parent = {}) const override;
    /// Returns 1.
    int columnCount(QModelIndex const& parent = {}) const override;
    /// Returns true for a branch that has not been opened, whether or not there is a folder in it.
    bool hasChildren(QModelIndex const& parent = {}) const override;
    /// Returns whether the branch has not been opened.
    bool canFetchMore(QModelIndex const& parent) const override;
    /// Opens the branch. If the store fails, it stays as it is, and can be opened again; so does the next `Refresh`.
    void fetchMore(QModelIndex const& parent) override;
    /// Returns the value of a role, as described above; an invalid value for other roles.
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    /// Returns the title of the column.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// Returns the roles of the columns beside those of every model.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Emitted when what was asked for has been read, by `Refresh`, `fetchMore` or the watcher.
    void Loaded();

    /// Emitted if the store fails instead, with the reason that it gives, if any.
    void Failed(QString const& reason);

private:
    struct Node;
    class Branch;
    struct Tree;

    Node& NodeOf(QModelIndex const& index) const;
    QModelIndex IndexOfNode(Node const& node) const;
    bool ReadOpened();
    bool Read(Node& node, QString& error);
    bool Tell(bool isRead, QString const& error);

    std::unique_ptr<Tree> const _tree;
};

} // namespace sync::models
