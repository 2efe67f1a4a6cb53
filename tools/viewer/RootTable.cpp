#include "tools/viewer/RootTable.h"

#include <QLocale>

#include <algorithm>

namespace tandry::viewer {

using findings::DiskEntry;
using findings::RootStatus;
using findings::StoreStatus;

namespace {

qint64 RowsOf(RootStatus const& root)
{
    return root.folders + root.files;
}

bool HaveSameRoots(StoreStatus const& left, StoreStatus const& right)
{
    return std::equal(
        left.roots.begin(),
        left.roots.end(),
        right.roots.begin(),
        right.roots.end(),
        [](RootStatus const& one, RootStatus const& other) { return one.root.getId() == other.root.getId(); });
}

} // namespace

void RootTable::SetStatus(StoreStatus const& status)
{
    if (!HaveSameRoots(_status, status)) {
        beginResetModel();
        _status = status;
        endResetModel();
        return;
    }
    _status = status;
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int RootTable::RootId(QModelIndex const& index) const
{
    return index.isValid() ? _status.roots.at(static_cast<std::size_t>(index.row())).root.getId() : 0;
}

qint64 RootTable::outOfSync() const
{
    qint64 sum = 0;
    for (RootStatus const& root : _status.roots)
        sum += root.outOfSync;
    return sum;
}

int RootTable::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_status.roots.size());
}

int RootTable::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RootTable::data(QModelIndex const& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    RootStatus const& root = _status.roots.at(static_cast<std::size_t>(index.row()));
    int const column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return _Text(root, column);
    case Qt::ToolTipRole:
        return column == Path ? root.root.getClientPath() : QVariant();
    case Qt::TextAlignmentRole:
        if (column == FolderCount || column == FileCount || column == Size)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case InSyncRole:
        if (column != OutOfSync)
            return {};
        return RowsOf(root) == 0 ? 1.0 : 1.0 - static_cast<double>(root.outOfSync) / static_cast<double>(RowsOf(root));
    default:
        return {};
    }
}

QString RootTable::_Text(RootStatus const& root, int column) const
{
    QLocale const locale;
    switch (column) {
    case Path:
        return root.root.getClientPath();
    case OutOfSync:
        return root.outOfSync == 0
                   ? tr("Nothing out of sync")
                   : tr("%1 of %2 out of sync").arg(locale.toString(root.outOfSync), locale.toString(RowsOf(root)));
    case FolderCount:
        return locale.toString(root.folders);
    case FileCount:
        return locale.toString(root.files);
    case Size:
        return locale.formattedDataSize(root.bytes);
    case OnDisk:
        return root.onDisk == DiskEntry::Kind::Folder ? tr("There") : tr("Not there");
    default:
        return {};
    }
}

QVariant RootTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case Path:
        return tr("Root");
    case OutOfSync:
        return tr("Synchronisation");
    case FolderCount:
        return tr("Folders");
    case FileCount:
        return tr("Files");
    case Size:
        return tr("Size");
    case OnDisk:
        return tr("On disk");
    default:
        return {};
    }
}

} // namespace tandry::viewer
