#include "models/RecordTableModel.h"

#include "models/Readings.h"
#include "models/RecordRows.h"
#include "models/RowDifference.h"
#include "models/StoreWatcher.h"

#include <QStringList>
#include <QVector>

#include <algorithm>
#include <optional>
#include <vector>

namespace sync::models {

struct RecordTableModel::Table
{
    RecordRows source;
    QString name;
    std::vector<RecordRow> rows;
    Readings readings;
    bool isOpened = false; // by a view, whether or not the store could be read
    bool isRead = false;
};

/// The rows of the model, for `ApplyDifference`.
class RecordTableModel::Rows
{
public:
    explicit Rows(RecordTableModel& model)
        : _model(model)
        , _rows(model._table->rows)
    {}

    int size() const { return static_cast<int>(_rows.size()); }
    int id(int at) const { return _rows[static_cast<std::size_t>(at)].id; }

    void Remove(int first, int last)
    {
        _model.beginRemoveRows({}, first, last);
        _rows.erase(_rows.begin() + first, _rows.begin() + last + 1);
        _model.endRemoveRows();
    }

    /// Rows that are ordered by id keep their order.
    void Move(int, int) { Q_UNREACHABLE(); }

    void Insert(int at, RecordRow const* first, int count)
    {
        _model.beginInsertRows({}, at, at + count - 1);
        _rows.insert(_rows.begin() + at, first, first + count);
        _model.endInsertRows();
    }

    void Update(int at, RecordRow const& row)
    {
        RecordRow& shown = _rows[static_cast<std::size_t>(at)];
        if (shown.values == row.values)
            return;
        shown = row;
        Q_EMIT _model.dataChanged(_model.index(at, 0), _model.index(at, _model.columnCount() - 1));
    }

private:
    RecordTableModel& _model;
    std::vector<RecordRow>& _rows;
};

RecordTableModel::RecordTableModel(RecordRows const& rows, QString const& table, QObject* parent)
    : QAbstractTableModel(parent)
    , _table(new Table{rows, table, {}, Readings(*this, [this] { return Read(); })})
{}

RecordTableModel::~RecordTableModel() = default;

void RecordTableModel::Follow(StoreWatcher const& watcher)
{
    connect(&watcher, &StoreWatcher::Changed, this, [this](QStringList const& tables) {
        if (tables.contains(_table->name) && _table->isOpened)
            _table->readings.Follow();
    });
}

bool RecordTableModel::Refresh()
{
    return !_table->isOpened || _table->readings.Refresh();
}

bool RecordTableModel::Read()
{
    _table->isOpened = true;
    QString error;
    std::optional<QVector<RecordRow>> const rows = _table->source.Read(QStringLiteral("ORDER BY id"), {}, &error);
    if (!rows) {
        Q_EMIT Failed(error);
        return false;
    }
    _table->isRead = true;
    Rows shown(*this);
    ApplyDifference(shown, *rows, [](RecordRow const& row) { return row.id; });
    Q_EMIT Loaded();
    return true;
}

int RecordTableModel::RecordId(QModelIndex const& index) const
{
    return index.isValid() ? _table->rows[static_cast<std::size_t>(index.row())].id : -1;
}

QModelIndex RecordTableModel::IndexOf(int recordId) const
{
    std::vector<RecordRow> const& rows = _table->rows;
    auto const found =
        std::lower_bound(rows.begin(), rows.end(), recordId, [](RecordRow const& row, int id) { return row.id < id; });
    if (found == rows.end() || found->id != recordId)
        return {};
    return index(static_cast<int>(found - rows.begin()), 0);
}

int RecordTableModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_table->rows.size());
}

int RecordTableModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_table->source.columns().size());
}

bool RecordTableModel::canFetchMore(QModelIndex const& parent) const
{
    return !parent.isValid() && !_table->isRead;
}

void RecordTableModel::fetchMore(QModelIndex const& parent)
{
    if (canFetchMore(parent))
        _table->readings.Open([this] { return Read(); });
}

QVariant RecordTableModel::data(QModelIndex const& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    RecordRow const& row = _table->rows[static_cast<std::size_t>(index.row())];
    if (role == Qt::DisplayRole)
        return _table->source.Text(row, index.column());
    return role == Qt::EditRole ? row.values.at(index.column()) : _table->source.Value(row, role);
}

QVariant RecordTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < columnCount())
        return _table->source.columns().at(section).name;
    return QAbstractTableModel::headerData(section, orientation, role);
}

QHash<int, QByteArray> RecordTableModel::roleNames() const
{
    return _table->source.WithRoles(QAbstractTableModel::roleNames());
}

} // namespace sync::models
