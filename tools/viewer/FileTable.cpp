#include "tools/viewer/FileTable.h"

#include "models/FileListModel.h"

#include <QLocale>

namespace tandry::viewer {

using sync::models::FileListModel;

namespace {

struct ShownColumn
{
    char const* name;
    char const* title;
};

constexpr ShownColumn Shown[] = {
    {"name", QT_TRANSLATE_NOOP("tandry::viewer::FileTable", "Name")},
    {"syncStatus", QT_TRANSLATE_NOOP("tandry::viewer::FileTable", "Status")},
    {"size", QT_TRANSLATE_NOOP("tandry::viewer::FileTable", "Size")},
    {"lastModifiedDateTime", QT_TRANSLATE_NOOP("tandry::viewer::FileTable", "Modified")},
    {"clientPath", QT_TRANSLATE_NOOP("tandry::viewer::FileTable", "Path")},
};

} // namespace

FileTable::FileTable(FileListModel& files, QObject* parent)
    : QIdentityProxyModel(parent)
{
    setSourceModel(&files);
    _size = Column(QStringLiteral("size"));
    _path = Column(QStringLiteral("clientPath"));
}

int FileTable::Column(QString const& name) const
{
    for (int column = 0; column < columnCount(); ++column) {
        if (QIdentityProxyModel::headerData(column, Qt::Horizontal) == name)
            return column;
    }
    return -1;
}

QVector<int> FileTable::ShownColumns() const
{
    QVector<int> columns;
    for (ShownColumn const& shown : Shown)
        columns.append(Column(QLatin1String(shown.name)));
    return columns;
}

QVariant FileTable::data(QModelIndex const& index, int role) const
{
    int const column = index.column();
    if (role == Qt::TextAlignmentRole && column == _size)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole && column == _path)
        return QIdentityProxyModel::data(index, Qt::DisplayRole);
    if (role != Qt::DisplayRole || column != _size)
        return QIdentityProxyModel::data(index, role);
    QVariant const bytes = QIdentityProxyModel::data(index, Qt::EditRole);
    return bytes.isValid() ? QLocale().formattedDataSize(bytes.toLongLong()) : QVariant(); // not read yet
}

QVariant FileTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    QVariant name = QIdentityProxyModel::headerData(section, orientation, role);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return name;
    for (ShownColumn const& shown : Shown) {
        if (name == QLatin1String(shown.name))
            return tr(shown.title);
    }
    return name;
}

} // namespace tandry::viewer
