#pragma once

#include "TandryModelsExport.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QHash>
#include <QModelIndex>
#include <QString>
#include <QVariant>

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

class StoreWatcher;

/// The files of a folder, of a root or with a status, in any number, for item views and QML. Read-only.
///
/// All reading is done on threads of the model's own, so that no operation waits for the store. The rows come when the
/// store has answered, the first ones at once and the others after them. The model keeps the ids of all rows, in 4
/// bytes each, and the values of the 1,024 rows that were asked for last. A row whose values have not been read yet
/// shows nothing; asking for them has it read together with its neighbours, and `dataChanged` tells when they are
/// there. Code that goes through all rows should use a manager instead.
///
/// A column shows its value as text, and the names of numbers that have one; `Qt::EditRole` has the value itself, in
/// the type that `sync::config::RecordColumn::Get` returns. For every column of the model, each column of the table is
/// a role of that name with the value, such as "clientPath". Columns with numbers that have names have a second role
/// with "Text" appended: "syncStatusText". The links are neither a column nor a role, and are not read.
///
/// Only the table of the client's own files is shown, not those of generated and base files.
///
/// Belongs to the thread that it lives in, which needs an event loop. The factory must allow several threads to use it
/// at the same time. The destructor waits for a statement that the store is running, which for a million files that are
/// sorted by a column without an index can take seconds.
class TANDRY_MODELS_EXPORT FileListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// Shows nothing yet. Keeps a share of the factory, which must not be null.
    explicit FileListModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent = nullptr);
    ~FileListModel() override;

    /// Shows nothing, as at first. Filter and order stay as they are.
    void ShowNothing();
    /// Shows the files directly in the folder. Filter and order stay as they are.
    void ShowFolder(int folderId);
    /// Shows all files below a root. Filter and order stay as they are.
    void ShowRoot(int rootFolderId);
    /// Shows all files with a status, which is a value of `sync::config::FileSynchronizationStatus` or one of the
    /// client's own. Filter and order stay as they are.
    void ShowStatus(int syncStatus);
    /// The same, but only the files below a root.
    void ShowStatus(int syncStatus, int rootFolderId);

    /// Shows only files whose name contains the text; all files for an empty text. All characters stand for themselves.
    /// Whether upper and lower case are the same is for the store's `lower` to say; for SQLite those of A to Z are.
    void SetNameFilter(QString const& text);

    /// Refreshes the model whenever the watcher tells of a change of files. The watcher must live in the model's
    /// thread; it may be destroyed before the model.
    void Follow(StoreWatcher const& watcher);

    /// Begins to read the rows anew. Rows that came, went or changed are signalled as such, so views keep selection and
    /// scroll position; where many rows have changed places, `layoutChanged` tells so. Calls while the rows are being
    /// read, and for as long again after that, have them read once more when that time is over: a list that others go
    /// on changing takes at most half of a processor's time. Returns false if the model was told to show nothing, or
    /// has not been told what to show.
    bool Refresh();

    /// Returns whether something is being read. `Loaded` or `Failed` tells when it no longer is.
    [[nodiscard]] bool isLoading() const;

    /// Returns the id of a row's file; -1 for an invalid index.
    [[nodiscard]] int FileId(QModelIndex const& index) const;
    /// Returns the first column of the row of the file with this id; an invalid index if there is none. Takes time in
    /// proportion to the number of rows.
    [[nodiscard]] QModelIndex IndexOf(int fileId) const;

    /// Has the rows ordered by a column, as the store orders its values, and rows with equal values by id; a column of
    /// -1 has them ordered by id alone, as they are at first.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// Returns the number of rows that have come so far.
    int rowCount(QModelIndex const& parent = {}) const override;
    /// Returns the number of shown columns.
    int columnCount(QModelIndex const& parent = {}) const override;
    /// Returns the value of a role, as described above; an invalid value for other roles, and if the row has not been
    /// read yet.
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    /// Returns the name of a column as spelled in the table.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// Returns the roles of the columns beside those of every model.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Emitted when everything that was asked for has been read.
    void Loaded();

    /// Emitted if the store fails, with the reason that it gives, if any. What could not be read stays as it was; the
    /// next `Refresh` tries again, and so does a view that paints rows without values.
    void Failed(QString const& reason);

private:
    class Reader;

    std::unique_ptr<Reader> const _reader;
};

} // namespace sync::models
