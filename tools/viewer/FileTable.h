#pragma once

#include <QIdentityProxyModel>
#include <QString>
#include <QVector>

namespace sync::models {
class FileListModel;
}

namespace tandry::viewer {

/// The list of files with titles and texts for people.
class FileTable : public QIdentityProxyModel
{
    Q_OBJECT

public:
    /// Shows the model, which must outlive this object.
    explicit FileTable(sync::models::FileListModel& files, QObject* parent = nullptr);

    /// Returns the place of a column of the store's table; -1 if the model does not have it.
    int Column(QString const& name) const;
    /// Returns the columns that are worth their place, in the order in which they are best shown. The details show the
    /// others.
    QVector<int> ShownColumns() const;

    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    int _size = -1;
    int _path = -1;
};

} // namespace tandry::viewer
