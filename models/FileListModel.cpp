#include "models/FileListModel.h"

#include "config/FileConfiguration.h"
#include "models/FileListing.h"
#include "models/ListSteps.h"
#include "models/RecentRows.h"
#include "models/RecordRows.h"
#include "models/StoreWatcher.h"
#include "models/TaskThreads.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QModelIndexList>
#include <QSet>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <algorithm>
#include <atomic>
#include <bitset>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace sync::models {

using sync::config::FileConfiguration;
using sync::interf::factory::IDatabaseFactory;

namespace {

const QString FileTable = QStringLiteral("FileConfiguration");
const QString FolderColumn = QStringLiteral("folderConfigurationId");
const QString RootColumn = QStringLiteral("rootFolderId");
const QString StatusColumn = QStringLiteral("syncStatus");

/// How many rows are read together.
constexpr int PageRows = 64;
/// How many rows' values are kept.
constexpr int KeptRows = 1024;
/// How many rows of a new list are shown before the others have been read.
constexpr int FirstRows = 256;
/// How many rows come at once, and how many a list may have that is changed at once.
constexpr int ManyRows = 1 << 18;

QString PlaceholderOfPage(int number)
{
    return QStringLiteral(":id%1").arg(number);
}

/// Always the same statement: a placeholder that is not bound matches no row.
QString PageClauses()
{
    QStringList placeholders;
    for (int number = 0; number < PageRows; ++number)
        placeholders.append(PlaceholderOfPage(number));
    return QStringLiteral("WHERE id IN (%1)").arg(placeholders.join(QStringLiteral(", ")));
}

/// Views take time in proportion to the length of a list for each step, so a long one is changed in few steps.
int MaxSteps(int size)
{
    return std::clamp((1 << 22) / std::max(size, 1), 4, 64);
}

/// Returns the rows of some ids in ascending order.
std::vector<int> RowsOf(QVector<int> const& some, QVector<int> const& ids)
{
    constexpr std::size_t filterSize = 1 << 16;
    std::bitset<filterSize> filter; // in the processor's cache, where the set takes ten times as long
    QSet<int> set;
    for (int const id : some) {
        filter.set(static_cast<unsigned>(id) % filterSize);
        set.insert(id);
    }
    std::vector<int> rows;
    for (int row = 0; row < ids.size() && rows.size() < static_cast<std::size_t>(set.size()); ++row) {
        if (filter.test(static_cast<unsigned>(ids.at(row)) % filterSize) && set.contains(ids.at(row)))
            rows.push_back(row);
    }
    return rows;
}

} // namespace

/// What the model shows, and the threads that read it. Used by the model's thread alone, except for tasks,
/// which have copies of all that they need and post what they have read.
class FileListModel::Reader
{
public:
    Reader(FileListModel& model, std::shared_ptr<IDatabaseFactory> factory)
        : rows(std::make_shared<RecordRows const>(RecordRows::Of<FileConfiguration>(std::move(factory), FileTable)))
        , values(KeptRows)
        , _model(model)
        , _pause(new QTimer(&model))
    {
        _pause->setSingleShot(true);
        connect(_pause, &QTimer::timeout, &model, [this] {
            if (_isListStale)
                ReadList();
        });
    }

    ~Reader() { AbandonList(); }

    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;

    std::shared_ptr<RecordRows const> const rows;
    FileListing listing;
    /// Of all rows.
    QVector<int> ids;
    RecentRows values;

    /// Shows the files with these values; none if there are no values.
    void Show(QMap<QString, int> const& equal)
    {
        if (equal != listing.equal) {
            listing.equal = equal;
            AbandonList();
            if (!ids.isEmpty())
                Step({ListStep::Kind::Remove, 0, static_cast<int>(ids.size()), 0, {}, {}});
            values.Clear();
            _wanted.clear();
            _stale.clear();
        }
        if (!Refresh())
            TellIfLoaded();
    }

    /// Shows the files in this order and with this filter.
    void Change(FileListing const& next)
    {
        if (next == listing)
            return;
        listing = next;
        AbandonList();
        Refresh();
    }

    /// Reads the list, if there is one. Returns whether there is.
    bool Refresh()
    {
        bool const isShowing = !listing.equal.isEmpty();
        if (isShowing)
            ReadList();
        return isShowing;
    }

    bool isReading() const
    {
        return _list != nullptr || _isListStale || !_reading.isEmpty() || !_wanted.empty() || !_stale.isEmpty();
    }

    /// Begins to read all ids; if they are being read, does so once more afterwards.
    void ReadList()
    {
        if (_list != nullptr || _pause->isActive()) {
            _isListStale = true;
            return;
        }
        _isListStale = false;
        _listTimer.start();
        ++_listsBegun;
        _list = std::make_shared<List>();
        _listThreads.Start([this, list = _list, rows = rows, listing = listing, before = ids]() mutable {
            QVector<int> read;
            read.reserve(before.size());
            auto const take = [&](int id) {
                read.append(id);
                if (before.isEmpty() && read.size() == FirstRows) {
                    before = read;
                    Post([this, list, read] { TakeFirstIds(list, read); });
                }
                return !list->isAbandoned;
            };
            QString error;
            bool const succeeds = rows->ReadIds(listing.Clauses(), listing.Values(), take, error);
            if (list->isAbandoned)
                return;
            if (!succeeds) {
                Post([this, list, error] { TakeListFailure(list, error); });
                return;
            }
            auto const size = static_cast<int>(std::max(before.size(), read.size()));
            Post([this, list, steps = StepsBetween(before, read, MaxSteps(size))] { TakeList(list, steps); });
        });
    }

    /// Has a row's values read.
    void Want(int row)
    {
        int const id = ids.at(row);
        if (_reading.contains(id))
            return;
        auto const asked = std::find_if(
            _wanted.rbegin(), _wanted.rend(), [id](QVector<int> const& page) { return page.contains(id); });
        if (asked != _wanted.rend()) {
            std::rotate(_wanted.rbegin(), asked, asked + 1); // what was asked for last is read first
            return;
        }
        QVector<int> page;
        int const first = row / PageRows * PageRows;
        for (int const each : ids.mid(first, PageRows)) {
            if (!values.contains(each))
                page.append(each);
        }
        // More than are kept need not be read.
        if (_wanted.size() == KeptRows / PageRows)
            _wanted.erase(_wanted.begin());
        _wanted.push_back(page);
        ReadRows();
    }

private:
    /// A reading of all ids.
    struct List
    {
        std::atomic<bool> isAbandoned = false;
    };

    /// Runs a function on the model's thread, unless the model is gone by then.
    template <class Function>
    void Post(Function function)
    {
        QMetaObject::invokeMethod(&_model, std::move(function), Qt::QueuedConnection);
    }

    void AbandonList()
    {
        if (_list != nullptr)
            _list->isAbandoned = true;
        _list.reset();
        _isListStale = false;
        _pause->stop();
    }

    void TakeFirstIds(std::shared_ptr<List> const& list, QVector<int> const& first)
    {
        if (list == _list)
            Step({ListStep::Kind::Insert, 0, 0, 0, first, {}});
    }

    /// Applies the steps from `next` on. In a long list, a view handles other events between them.
    void TakeList(std::shared_ptr<List> const& list, std::vector<ListStep> steps, std::size_t next = 0)
    {
        while (next < steps.size()) {
            ListStep& step = steps[next];
            if (step.kind == ListStep::Kind::Remove)
                PaintWhatWaits();
            if (list != _list) // a slot may ask for something else
                return;
            if (step.ids.size() > ManyRows && step.kind == ListStep::Kind::Insert) {
                Step({ListStep::Kind::Insert, step.first, 0, 0, step.ids.mid(0, ManyRows), {}});
                step.first += ManyRows;
                step.ids.remove(0, ManyRows);
            }
            else {
                Step(step);
                ++next;
            }
            if (next < steps.size() && ids.size() > ManyRows) {
                QTimer::singleShot(
                    0, &_model, [this, list, rest = std::move(steps), next] { TakeList(list, rest, next); });
                return;
            }
        }
        if (list != _list)
            return;
        _list.reset();
        _stale = values.ids();
        FinishList();
        ReadRows();
        TellIfLoaded();
    }

    /// Has views paint what they still have to paint. The header of a QTableView that does so after rows went, and
    /// before it is laid out, may be scrolled to a place that is gone; it then paints all rows that are left.
    static void PaintWhatWaits() { QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest); }

    /// The next reading begins after as long as this one has taken.
    void FinishList() { _pause->start(static_cast<int>(_listTimer.elapsed())); }

    void TakeListFailure(std::shared_ptr<List> const& list, QString const& reason)
    {
        if (list != _list)
            return;
        _list.reset();
        FinishList();
        Q_EMIT _model.Failed(reason);
    }

    void ReadRows()
    {
        if (!_reading.isEmpty())
            return;
        if (!_wanted.empty()) {
            _reading = _wanted.back();
            _wanted.pop_back();
        }
        while (_reading.isEmpty() && !_stale.isEmpty()) {
            for (int const id : _stale.mid(0, PageRows)) {
                if (values.contains(id))
                    _reading.append(id);
            }
            _stale = _stale.mid(PageRows);
        }
        if (_reading.isEmpty())
            return;
        _rowThread.Start([this, rows = rows, page = _reading, listsBegun = _listsBegun] {
            static const QString clauses = PageClauses();
            RecordRows::Bindings bindings;
            for (int number = 0; number < page.size(); ++number)
                bindings.insert(PlaceholderOfPage(number), page.at(number));
            QString error;
            std::optional<QVector<RecordRow>> const read = rows->Read(clauses, bindings, &error);
            Post([this, read, listsBegun, error] {
                if (read)
                    TakeRows(*read, listsBegun);
                else
                    TakeRowsFailure(error);
            });
        });
    }

    void TakeRows(QVector<RecordRow> const& read, int listsBegun)
    {
        _reading.clear();
        QVector<int> changed;
        for (RecordRow const& row : read) {
            if (values.Put(row))
                changed.append(row.id);
            // A refresh that has begun since must show what is in the store now.
            if (listsBegun != _listsBegun)
                _stale.append(row.id);
        }
        ReadRows();
        std::vector<int> const changedRows = RowsOf(changed, ids);
        for (auto first = changedRows.begin(); first != changedRows.end();) {
            auto last = first;
            while (last + 1 != changedRows.end() && *(last + 1) == *last + 1)
                ++last;
            Q_EMIT _model.dataChanged(_model.index(*first, 0), _model.index(*last, _model.columnCount() - 1));
            first = last + 1;
        }
        TellIfLoaded();
    }

    void TakeRowsFailure(QString const& reason)
    {
        _reading.clear();
        _wanted.clear();
        _stale.clear();
        Q_EMIT _model.Failed(reason);
    }

    void TellIfLoaded()
    {
        if (!isReading())
            Q_EMIT _model.Loaded();
    }

    /// Changes the list, and tells views.
    void Step(ListStep const& step)
    {
        switch (step.kind) {
        case ListStep::Kind::Remove:
            _model.beginRemoveRows({}, step.first, step.first + step.count - 1);
            Apply(step, ids);
            _model.endRemoveRows();
            break;
        case ListStep::Kind::Move:
            _model.beginMoveRows({}, step.first, step.first, {}, step.to);
            Apply(step, ids);
            _model.endMoveRows();
            break;
        case ListStep::Kind::Insert:
            _model.beginInsertRows({}, step.first, step.first + static_cast<int>(step.ids.size()) - 1);
            Apply(step, ids);
            _model.endInsertRows();
            break;
        case ListStep::Kind::Arrange:
            Arrange(step);
            break;
        }
    }

    void Arrange(ListStep const& step)
    {
        Q_EMIT _model.layoutAboutToBeChanged({}, VerticalSortHint);
        QModelIndexList const from = _model.persistentIndexList();
        QModelIndexList to;
        to.reserve(from.size());
        for (QModelIndex const& index : from) {
            int const row = index.row() - step.first;
            bool const moves = row >= 0 && row < step.rows.size();
            to.append(moves ? _model.index(step.first + step.rows.at(row), index.column()) : index);
        }
        Apply(step, ids);
        _model.changePersistentIndexList(from, to);
        Q_EMIT _model.layoutChanged({}, VerticalSortHint);
    }

    FileListModel& _model;
    /// The current reading of all ids; null if there is none.
    std::shared_ptr<List> _list;
    bool _isListStale = false;
    QElapsedTimer _listTimer;
    QTimer* const _pause;
    /// How many times all ids began to be read.
    int _listsBegun = 0;
    /// The ids of the rows that are being read.
    QVector<int> _reading;
    /// Pages of ids that were asked for, the last one at the end.
    std::vector<QVector<int>> _wanted;
    /// The ids of rows whose values are to be read anew.
    QVector<int> _stale;
    /// Two, since the store may still sort a list that is no longer wanted.
    TaskThreads _listThreads{2};
    TaskThreads _rowThread{1};
};

FileListModel::FileListModel(std::shared_ptr<IDatabaseFactory> factory, QObject* parent)
    : QAbstractTableModel(parent)
    , _reader(std::make_unique<Reader>(*this, std::move(factory)))
{}

FileListModel::~FileListModel() = default;

void FileListModel::ShowNothing()
{
    _reader->Show({});
}

void FileListModel::ShowFolder(int folderId)
{
    _reader->Show({{FolderColumn, folderId}});
}

void FileListModel::ShowRoot(int rootFolderId)
{
    _reader->Show({{RootColumn, rootFolderId}});
}

void FileListModel::ShowStatus(int syncStatus)
{
    _reader->Show({{StatusColumn, syncStatus}});
}

void FileListModel::ShowStatus(int syncStatus, int rootFolderId)
{
    _reader->Show({{StatusColumn, syncStatus}, {RootColumn, rootFolderId}});
}

void FileListModel::SetNameFilter(QString const& text)
{
    FileListing listing = _reader->listing;
    listing.nameText = text;
    _reader->Change(listing);
}

void FileListModel::sort(int column, Qt::SortOrder order)
{
    bool const isColumn = column >= 0 && column < columnCount();
    FileListing listing = _reader->listing;
    listing.sortColumn = isColumn ? _reader->rows->columns().at(column).name : FileListing().sortColumn;
    listing.order = order;
    _reader->Change(listing);
}

void FileListModel::Follow(StoreWatcher const& watcher)
{
    connect(&watcher, &StoreWatcher::Changed, this, [this](QStringList const& tables) {
        if (tables.contains(FileTable))
            Refresh();
    });
}

bool FileListModel::Refresh()
{
    return _reader->Refresh();
}

bool FileListModel::isLoading() const
{
    return _reader->isReading();
}

int FileListModel::FileId(QModelIndex const& index) const
{
    return index.isValid() ? _reader->ids.at(index.row()) : -1;
}

QModelIndex FileListModel::IndexOf(int fileId) const
{
    return index(static_cast<int>(_reader->ids.indexOf(fileId)), 0);
}

int FileListModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_reader->ids.size());
}

int FileListModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_reader->rows->columns().size());
}

QVariant FileListModel::data(QModelIndex const& index, int role) const
{
    bool const isOfStore = role == Qt::DisplayRole || role == Qt::EditRole || role > Qt::UserRole;
    if (!isOfStore || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    RecordRow const* const row = _reader->values.Use(_reader->ids.at(index.row()));
    if (row == nullptr) {
        _reader->Want(index.row());
        return {};
    }
    if (role == Qt::DisplayRole)
        return _reader->rows->Text(*row, index.column());
    return role == Qt::EditRole ? row->values.at(index.column()) : _reader->rows->Value(*row, role);
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < columnCount())
        return _reader->rows->columns().at(section).name;
    return QAbstractTableModel::headerData(section, orientation, role);
}

QHash<int, QByteArray> FileListModel::roleNames() const
{
    return _reader->rows->WithRoles(QAbstractTableModel::roleNames());
}

} // namespace sync::models
