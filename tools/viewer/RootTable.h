#pragma once

#include "tools/findings/StoreStatus.h"

#include <QAbstractTableModel>

namespace tandry::viewer {

/// The roots of a store, and how much of each is out of sync.
class RootTable : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Path,
        OutOfSync,
        FolderCount,
        FileCount,
        Size,
        OnDisk,
        ColumnCount
    };

    /// Of the column `OutOfSync`: the part of the root's folders and files that is in sync, from 0 to 1.
    static constexpr int InSyncRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    /// Shows a status.
    void SetStatus(findings::StoreStatus const& status);

    /// Returns the id of a row's root; 0 for an invalid index.
    int RootId(QModelIndex const& index) const;
    /// Returns how many folders and files of all roots are out of sync.
    qint64 outOfSync() const;

    int rowCount(QModelIndex const& parent = {}) const override;
    int columnCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QString _Text(findings::RootStatus const& root, int column) const;

    findings::StoreStatus _status;
};

} // namespace tandry::viewer
