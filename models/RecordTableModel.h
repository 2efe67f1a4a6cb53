#pragma once

#include "TandryModelsExport.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QHash>
#include <QModelIndex>
#include <QString>
#include <QVariant>

#include <memory>

namespace sync::models {

class RecordRows;
class StoreWatcher;

/// All rows of one of a store's smaller tables, ordered by id, for item views and QML. Read-only. The base of the
/// models of servers, accounts, products and schedules.
///
/// The table is read when a view opens it (`fetchMore`). A column shows its value as text, and the names of numbers
/// that have one; `Qt::EditRole` has the value itself, in the type that `sync::config::RecordColumn::Get` returns.
///
/// For every column of the model, each column of the table is a role of that name with the value, such as "alias".
/// Columns with numbers that have names have a second role with "Text" appended. Secrets, and what the managers do not
/// receive from the store either, are neither columns nor roles, and are not read.
///
/// Belongs to the thread that it lives in, and reads the store there.
class TANDRY_MODELS_EXPORT RecordTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    ~RecordTableModel() override;

    /// Refreshes the model when the watcher tells of a change of the table, before the watcher's slots that are
    /// connected later. If that takes long, the next refresh waits for four times as long, up to a second, so that a
    /// store that others go on changing leaves the thread time for its window. The watcher must live in the model's
    /// thread; it may be destroyed before the model.
    void Follow(StoreWatcher const& watcher);

    /// Reads the table anew if it has been opened. Rows that came, went or changed are signalled as such, so views keep
    /// selection and scroll position. Also opens a table that the store failed to open before. If the store fails,
    /// returns false, and the rows stay as they were. In a slot of the model's signals, returns true and reads when all
    /// slots have returned.
    bool Refresh();

    /// Returns the id of a row's record; -1 for an invalid index.
    [[nodiscard]] int RecordId(QModelIndex const& index) const;
    /// Returns the first column of the row of the record with this id; an invalid index if there is none.
    [[nodiscard]] QModelIndex IndexOf(int recordId) const;

    /// Returns the number of rows; 0 until the table is opened.
    int rowCount(QModelIndex const& parent = {}) const override;
    /// Returns the number of shown columns.
    int columnCount(QModelIndex const& parent = {}) const override;
    /// Returns whether the table has not been opened.
    bool canFetchMore(QModelIndex const& parent) const override;
    /// Opens the table. If the store fails, it stays closed, and can be opened again; so does the next `Refresh`.
    void fetchMore(QModelIndex const& parent) override;
    /// Returns the value of a role, as described above; an invalid value for other roles.
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    /// Returns the name of a column as spelled in the table.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// Returns the roles of the columns beside those of every model.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Emitted when the table has been read, by `Refresh`, `fetchMore` or the watcher.
    void Loaded();

    /// Emitted if the store fails instead, with the reason that it gives, if any.
    void Failed(QString const& reason);

protected:
    /// For the models of the library: `rows` are those of the table.
    RecordTableModel(RecordRows const& rows, QString const& table, QObject* parent);

private:
    struct Table;
    class Rows;

    bool Read();

    std::unique_ptr<Table> const _table;
};

} // namespace sync::models
