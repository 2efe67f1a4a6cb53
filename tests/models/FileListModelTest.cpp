#include "models/FileListModel.h"

#include "config/Managers.h"
#include "config/RecordColumns.h"
#include "models/StoreWatcher.h"
#include "support/FileRecords.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/RecordingStore.h"
#include "support/StoreFixture.h"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QSet>
#include <QSignalSpy>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace file_list_model_test {

namespace {

using namespace tandry::test;
using sync::config::FileConfiguration;
using sync::config::Managers;
using sync::database::SqliteDatabaseFactory;
using sync::interf::IQSqlDatabaseWrapper;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;
using sync::models::FileListModel;
using sync::models::StoreWatcher;
using Tester = QAbstractItemModelTester;

constexpr int LongEnoughMsec = 60000;
/// As many rows as are read together, and as many as are shown before the others have been read.
constexpr int PageRows = 64;
constexpr int FirstRows = 256;

/// Where threads wait until a test lets them go on.
class Gate
{
public:
    ~Gate() { Open(); }

    void Pass()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        ++_arrived;
        _changed.notify_all();
        _changed.wait(lock, [this] { return _isOpen; });
    }
    void WaitForArrival(int count = 1)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait(lock, [this, count] { return _arrived >= count; });
    }
    void Open()
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _isOpen = true;
        _changed.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    int _arrived = 0;
    bool _isOpen = false;
};

/// A store in front of another one, with a test's functions at the operations of its queries. They are called on the
/// query's thread.
class TappedStore : public IDatabaseFactory
{
public:
    explicit TappedStore(std::shared_ptr<IDatabaseFactory> store)
        : _store(std::move(store))
    {}

    /// Before a statement is run, with the value of its placeholder ":id0"; false makes it fail.
    std::function<bool(QString const& statement, QVariant const& firstId)> atExec;
    /// Before a row is given, counted from 0, and before the end.
    std::function<void(QString const& statement, int row)> atNext;

    std::shared_ptr<IQSqlDatabaseWrapper> CreateDatabase() override { return _store->CreateDatabase(); }
    std::shared_ptr<IQSqlQueryWrapper> CreateQuery() override
    {
        return std::make_shared<Query>(*this, _store->CreateQuery());
    }

private:
    class Query : public IQSqlQueryWrapper
    {
    public:
        Query(TappedStore& store, std::shared_ptr<IQSqlQueryWrapper> query)
            : _store(store)
            , _query(std::move(query))
        {}
        QVariant value(int column) override { return _query->value(column); }
        bool next() override
        {
            if (_store.atNext)
                _store.atNext(_statement, _row++);
            return _query->next();
        }
        bool isValid() override { return _query->isValid(); }
        bool prepare(QString const& statement) override
        {
            _statement = statement;
            return _query->prepare(statement);
        }
        void bindValue(QString const& placeholder, QVariant const& value) override
        {
            if (placeholder == ":id0"_q)
                _firstId = value;
            _query->bindValue(placeholder, value);
        }
        bool exec() override
        {
            _fails = _store.atExec && !_store.atExec(_statement, _firstId);
            return !_fails && _query->exec();
        }
        QString lastError() override { return _fails ? "the test's failure"_q : _query->lastError(); }
        QVariant lastInsertId() override { return _query->lastInsertId(); }
        int numRowsAffected() override { return _query->numRowsAffected(); }

    private:
        TappedStore& _store;
        std::shared_ptr<IQSqlQueryWrapper> const _query;
        QString _statement;
        QVariant _firstId;
        bool _fails = false;
        int _row = 0;
    };

    std::shared_ptr<IDatabaseFactory> const _store;
};

bool IsOfPage(QString const& statement)
{
    return statement.contains(" IN ("_q);
}

class AFileListModel : public StoreFixture
{
protected:
    int AddFile(QString const& name, int folderId = 1, int rootId = 1, int status = 2)
    {
        auto const query =
            Prepared(*store,
                     "INSERT INTO FileConfiguration (name, folderConfigurationId, rootFolderId, syncStatus) "
                     "VALUES (:name, :folder, :root, :status)"_q,
                     {{":name", name}, {":folder", folderId}, {":root", rootId}, {":status", status}});
        EXPECT_TRUE(query->exec());
        return query->lastInsertId().toInt();
    }

    /// Adds files to folder 1, with the numbers from 1 on as names.
    void AddFiles(int count)
    {
        ASSERT_TRUE(Execute(*store,
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < :count) "
                            "INSERT INTO FileConfiguration (name, folderConfigurationId, rootFolderId, syncStatus) "
                            "SELECT i, 1, 1, 2 FROM n"_q,
                            {{":count", count}}));
    }

    void Run(QString const& statement, Bindings bindings = {}) { ASSERT_TRUE(Execute(*store, statement, bindings)); }

    /// Waits until the model has read what it was asked for.
    static void Settle(FileListModel& model)
    {
        QSignalSpy loaded(&model, &FileListModel::Loaded);
        while (model.isLoading())
            ASSERT_TRUE(loaded.wait(LongEnoughMsec));
    }

    static QVector<int> Ids(FileListModel const& model)
    {
        QVector<int> ids;
        for (int row = 0; row < model.rowCount(); ++row)
            ids.append(model.FileId(model.index(row, 0)));
        return ids;
    }

    /// The values of a role in all rows, which it has read for that.
    static QVariantList Values(FileListModel& model, char const* role)
    {
        int const number = model.roleNames().key(role, -1);
        QVariantList values;
        for (int row = 0; row < model.rowCount(); ++row) {
            if (!model.index(row, 0).data(number).isValid())
                Settle(model);
            values.append(model.index(row, 0).data(number));
        }
        return values;
    }

    QVector<int> Select(QString const& clauses)
    {
        QVector<int> ids;
        for (QVariant const& id : Column(*store, "SELECT id FROM FileConfiguration "_q + clauses))
            ids.append(id.toInt());
        return ids;
    }
};

TEST_F(AFileListModel, ShowsNothingAtFirst)
{
    auto const recording = std::make_shared<RecordingStore>();
    FileListModel model(recording);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    EXPECT_FALSE(model.Refresh());
    model.sort(2, Qt::DescendingOrder);
    model.SetNameFilter("a"_q);
    EXPECT_FALSE(model.isLoading());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.IndexOf(1).isValid());
    EXPECT_EQ(model.FileId({}), -1);
    EXPECT_TRUE(recording->Statements().empty());
}

TEST_F(AFileListModel, ShowsTheFilesOfAFolderOfARootOrWithAStatus)
{
    int const a = AddFile("a"_q, 1, 1, 2);
    int const b = AddFile("b"_q, 2, 1, 1);
    int const c = AddFile("c"_q, 3, 3, 2);
    int const d = AddFile("d"_q, 1, 1, 9);
    Run("INSERT INTO GeneratedFileConfiguration (folderConfigurationId, rootFolderId, syncStatus) VALUES (1, 1, 2)"_q);
    FileListModel model(store);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    QSignalSpy const reset(&model, &FileListModel::modelReset);
    auto const expect = [&](QVector<int> const& ids) {
        EXPECT_TRUE(model.isLoading());
        EXPECT_EQ(model.rowCount(), 0) << "rows of what was shown before would be wrong";
        Settle(model);
        EXPECT_EQ(Ids(model), ids);
        for (int const id : ids)
            EXPECT_EQ(model.FileId(model.IndexOf(id)), id);
    };
    model.ShowFolder(1);
    expect({a, d});
    model.ShowRoot(1);
    expect({a, b, d});
    model.ShowStatus(sync::config::FileSyncStatusNotSynced);
    expect({a, c});
    model.ShowStatus(9);
    expect({d});
    model.ShowStatus(2, 3);
    expect({c});
    model.ShowFolder(4);
    expect({});
    EXPECT_FALSE(model.IndexOf(a).isValid());
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(AFileListModel, ShowsNothingAgain)
{
    AddFiles(300);
    FileListModel model(store);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    QSignalSpy const loaded(&model, &FileListModel::Loaded);
    model.ShowFolder(1);
    model.ShowNothing();
    EXPECT_FALSE(model.isLoading());
    EXPECT_EQ(loaded.count(), 1) << "so that nobody waits for the files";
    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(model.rowCount(), 300);
    model.ShowNothing();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.Refresh());
    model.sort(2);
    model.SetNameFilter("1"_q);
    EXPECT_FALSE(model.isLoading());
    QCoreApplication::processEvents();
    EXPECT_EQ(model.rowCount(), 0);
    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(Ids(model), Select("WHERE name LIKE '%1%' ORDER BY name"_q)) << "filter and order have stayed";
}

TEST_F(AFileListModel, FiltersByPartsOfNamesInWhichAllCharactersStandForThemselves)
{
    QStringList const names{"a%b"_q, "a_b"_q, "aXb"_q, "a\\b"_q, "it's"_q, QStringLiteral("\u00e4"), "l\nm"_q, ""_q};
    for (QString const& name : names)
        AddFile(name);
    Run("INSERT INTO FileConfiguration (name, folderConfigurationId) VALUES (NULL, 1)"_q);
    FileListModel model(store);
    model.SetNameFilter("a_"_q);
    model.ShowFolder(1);
    auto const shown = [&model] {
        Settle(model);
        return Values(model, "name");
    };
    EXPECT_EQ(shown(), QVariantList{"a_b"_q}) << "a filter may be set before there are files";
    for (QString const& part : {"%"_q, "\\"_q, "'"_q, "\n"_q, QStringLiteral("\u00e4"), "a%b"_q}) {
        model.SetNameFilter(part);
        QVariantList expected;
        for (QString const& name : names) {
            if (name.contains(part))
                expected.append(name);
        }
        EXPECT_EQ(shown(), expected) << part.toStdString();
    }
    model.SetNameFilter("AxB"_q);
    EXPECT_EQ(shown(), QVariantList{"aXb"_q});
    QSignalSpy const failed(&model, &FileListModel::Failed);
    for (QString const& part :
         {QString(QChar(0xd800)), QString(1000000, QLatin1Char('%')), QString(QLatin1Char('\0'))}) {
        model.SetNameFilter(part);
        EXPECT_EQ(shown(), QVariantList());
    }
    EXPECT_EQ(failed.count(), 0);
    model.SetNameFilter({});
    Settle(model);
    EXPECT_EQ(model.rowCount(), names.size() + 1);
}

TEST_F(AFileListModel, HasARoleForEachColumnExceptTheLinks)
{
    FileConfiguration added = DistinctFile();
    added.folderConfigurationId = 1;
    added.setSyncStatus(sync::config::FileSyncStatusLinkDiscovered);
    added.privileges = 1 + 16 + 64;
    added.syncOption = 64;
    Managers const managers(store);
    ASSERT_TRUE(managers.files->Add(added));
    FileConfiguration const stored = managers.files->GetFileConfigurationById(added.id);

    FileListModel model(store);
    model.ShowFolder(stored.folderConfigurationId);
    Settle(model);
    ASSERT_EQ(model.rowCount(), 1);
    Values(model, "id");
    int column = 0;
    for (auto const& described : sync::config::RecordColumns<FileConfiguration>()) {
        int const role = model.roleNames().key(described.name().toLatin1(), -1);
        if (described.name() == "fileLinks"_q) {
            EXPECT_EQ(role, -1);
            continue;
        }
        EXPECT_EQ(model.headerData(column, Qt::Horizontal), described.name());
        QVariant const value = model.index(0, 0).data(role);
        EXPECT_EQ(value, described.Get(stored)) << described.name().toStdString();
        EXPECT_EQ(value.userType(), described.Get(stored).userType()) << described.name().toStdString();
        EXPECT_EQ(model.index(0, column).data(Qt::EditRole), value);
        ++column;
    }
    EXPECT_EQ(model.columnCount(), column);
    auto const text = [&](char const* name) { return model.index(0, 0).data(model.roleNames().key(name)).toString(); };
    EXPECT_EQ(text("syncStatusText"), "Link discovered"_q);
    EXPECT_EQ(text("privilegesText"), "View, Share, 64"_q);
    EXPECT_EQ(text("syncOptionText"), "Repath required"_q);
    EXPECT_EQ(text("fileTypeText"), "File"_q);
    EXPECT_EQ(model.index(0, 8).data(), "Link discovered"_q);
}

/// The order of SQLite's values: NULL, numbers, texts by their bytes.
bool IsLess(QVariant const& left, QVariant const& right)
{
    if (!left.isValid() || !right.isValid())
        return !left.isValid() && right.isValid();
    if (left.userType() == QMetaType::QString)
        return left.toString().toUtf8() < right.toString().toUtf8();
    return left.toLongLong() < right.toLongLong();
}

TEST_F(AFileListModel, SortsByEachColumnAndEqualValuesById)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const below = [&random](int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); };
    QStringList const texts{"a"_q, "B"_q, "b"_q, QStringLiteral("\u00e4"), QString(), ""_q, "10"_q, "9"_q};
    FileListModel model(store);
    for (int row = 0; row < 40; ++row) {
        int const id = AddFile("a"_q);
        for (auto const& column : sync::config::RecordColumns<FileConfiguration>()) {
            if (column.name() == "id"_q || column.name() == "folderConfigurationId"_q)
                continue;
            QVariant value = below(4) == 0 ? QVariant() : QVariant(below(3) - 1);
            if (column.kind() == sync::config::ColumnKind::Text)
                value = texts.at(below(static_cast<int>(texts.size())));
            else if (column.kind() == sync::config::ColumnKind::Time && value.isValid())
                value = QDateTime::fromMSecsSinceEpoch(value.toInt(), Qt::UTC);
            Run("UPDATE FileConfiguration SET %1 = :value WHERE id = :id"_q.arg(column.name()),
                {{":value", value}, {":id", id}});
        }
    }
    model.ShowFolder(1);
    Settle(model);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    QPersistentModelIndex const kept = model.index(3, 0);
    int const keptId = model.FileId(kept);
    RawStore raw(StorePath(), RawStore::KeepLog);
    for (int column = 0; column < model.columnCount(); ++column) {
        QString const name = model.headerData(column, Qt::Horizontal).toString();
        auto rows = raw.Rows("SELECT id, %1 FROM FileConfiguration ORDER BY id"_q.arg(name));
        for (Qt::SortOrder const order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            model.sort(column, order);
            Settle(model);
            std::stable_sort(rows.begin(), rows.end(), [](auto const& left, auto const& right) {
                return left.at(0).toInt() < right.at(0).toInt();
            });
            std::stable_sort(rows.begin(), rows.end(), [](auto const& left, auto const& right) {
                return IsLess(left.at(1), right.at(1));
            });
            if (order == Qt::DescendingOrder)
                std::reverse(rows.begin(), rows.end());
            QVector<int> ids;
            for (auto const& row : rows)
                ids.append(row.at(0).toInt());
            EXPECT_EQ(Ids(model), ids) << name.toStdString();
            EXPECT_EQ(model.FileId(kept), keptId);
        }
    }
    model.sort(-1);
    Settle(model);
    EXPECT_EQ(Ids(model), Select("ORDER BY id"_q));
}

TEST_F(AFileListModel, ReadsTheValuesOfARowWithItsNeighboursWhenTheyAreAskedFor)
{
    AddFiles(200);
    std::atomic<int> pages = 0;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const& statement, QVariant const&) {
        pages += IsOfPage(statement) ? 1 : 0;
        return true;
    };
    FileListModel model(tapped);
    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(pages, 0);
    QSignalSpy const changed(&model, &FileListModel::dataChanged);
    EXPECT_EQ(model.index(70, 2).data(), QVariant());
    EXPECT_EQ(model.index(71, 2).data(), QVariant());
    EXPECT_EQ(model.index(70, 2).data(Qt::DecorationRole), QVariant());
    EXPECT_TRUE(model.isLoading());
    Settle(model);
    EXPECT_EQ(pages, 1);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex(), model.index(PageRows, 0));
    EXPECT_EQ(changed.at(0).at(1).toModelIndex(), model.index(2 * PageRows - 1, model.columnCount() - 1));
    EXPECT_EQ(model.index(70, 2).data(), "71"_q);
    EXPECT_EQ(model.index(64, 2).data(), "65"_q);
    EXPECT_EQ(model.index(127, 2).data(), "128"_q);
    EXPECT_FALSE(model.isLoading());
    EXPECT_EQ(model.index(128, 2).data(), QVariant());
    Settle(model);
    EXPECT_EQ(pages, 2);
}

TEST_F(AFileListModel, ReadsFirstWhatWasAskedForLast)
{
    AddFiles(6 * PageRows);
    Gate gate;
    std::vector<int> pages;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const& statement, QVariant const& firstId) {
        if (IsOfPage(statement)) {
            pages.push_back((firstId.toInt() - 1) / PageRows);
            gate.Pass();
        }
        return true;
    };
    FileListModel model(tapped);
    model.ShowFolder(1);
    Settle(model);
    for (int const page : {0, 1, 2, 3, 4, 2}) // as a view that scrolls down and back
        EXPECT_FALSE(model.index(page * PageRows, 0).data().isValid());
    gate.Open();
    Settle(model);
    EXPECT_EQ(pages, (std::vector<int>{0, 2, 4, 3, 1}));
}

TEST_F(AFileListModel, RefreshesByDifference)
{
    int const a = AddFile("a"_q);
    int const b = AddFile("b"_q);
    int const c = AddFile("c"_q);
    FileListModel model(store);
    model.sort(2);
    model.ShowFolder(1);
    Settle(model);
    Values(model, "name");
    QPersistentModelIndex const keptA = model.IndexOf(a);
    QPersistentModelIndex const keptB = model.IndexOf(b);
    QPersistentModelIndex const keptC = model.IndexOf(c);
    QSignalSpy const reset(&model, &FileListModel::modelReset);
    QSignalSpy const moved(&model, &FileListModel::rowsMoved);
    QSignalSpy const inserted(&model, &FileListModel::rowsInserted);
    QSignalSpy const removed(&model, &FileListModel::rowsRemoved);
    QSignalSpy const changed(&model, &FileListModel::dataChanged);

    Run("UPDATE FileConfiguration SET name = 'x' WHERE id = :id"_q, {{":id", a}});
    Run("DELETE FROM FileConfiguration WHERE id = :id"_q, {{":id", b}});
    int const d = AddFile("d"_q);
    EXPECT_TRUE(model.Refresh());
    Settle(model);
    EXPECT_EQ(Ids(model), (QVector<int>{c, d, a}));
    EXPECT_EQ(moved.count(), 1);
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(removed.count(), 1);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex().row(), 2);
    EXPECT_EQ(model.FileId(keptA), a);
    EXPECT_EQ(model.FileId(keptC), c);
    EXPECT_FALSE(keptB.isValid());
    EXPECT_EQ(model.IndexOf(a).siblingAtColumn(2).data(), "x"_q);

    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(moved.count() + inserted.count() + removed.count() + changed.count(), 4) << "nothing has changed";
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(AFileListModel, KeepsASelectionByItsFilesThroughChangesEverywhere)
{
    AddFiles(6000);
    FileListModel model(store);
    model.ShowRoot(1);
    Settle(model);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    QItemSelectionModel selection(&model);
    QSet<int> selected;
    for (int row = 3; row < model.rowCount(); row += 97) {
        selection.select(model.index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        selected.insert(model.FileId(model.index(row, 0)));
    }
    QSignalSpy const reset(&model, &FileListModel::modelReset);
    auto const expectSelected = [&] {
        Settle(model);
        QSet<int> still;
        for (QModelIndex const& index : selection.selectedRows())
            still.insert(model.FileId(index));
        EXPECT_EQ(still, selected);
    };
    model.sort(2, Qt::DescendingOrder);
    expectSelected();
    EXPECT_EQ(Ids(model), Select("ORDER BY name DESC, id DESC"_q));
    Run("DELETE FROM FileConfiguration WHERE id % 7 = 0"_q);
    for (int id = 0; id <= 6000; id += 7)
        selected.remove(id);
    Run("UPDATE FileConfiguration SET name = name || 'x' WHERE id % 5 = 0"_q);
    Run("INSERT INTO FileConfiguration (name, rootFolderId) SELECT name || 'y', 1 FROM FileConfiguration "
        "WHERE id % 11 = 0"_q);
    EXPECT_TRUE(model.Refresh());
    expectSelected();
    EXPECT_EQ(Ids(model), Select("ORDER BY name DESC, id DESC"_q));
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(AFileListModel, ShowsTheFirstRowsBeforeItHasReadTheOthers)
{
    AddFiles(1000);
    Gate gate;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atNext = [&](QString const& statement, int row) {
        if (!IsOfPage(statement) && row == FirstRows)
            gate.Pass();
    };
    FileListModel model(tapped);
    QSignalSpy inserted(&model, &FileListModel::rowsInserted);
    model.ShowFolder(1);
    ASSERT_TRUE(inserted.wait(LongEnoughMsec));
    EXPECT_EQ(model.rowCount(), FirstRows);
    EXPECT_FALSE(model.index(0, 2).data().isValid());
    QSignalSpy changed(&model, &FileListModel::dataChanged);
    ASSERT_TRUE(changed.wait(LongEnoughMsec)) << "values come while the list is read";
    EXPECT_EQ(model.index(0, 2).data(), "1"_q);
    EXPECT_TRUE(model.isLoading());
    gate.Open();
    Settle(model);
    EXPECT_EQ(Ids(model), Select("ORDER BY id"_q));
    EXPECT_EQ(inserted.count(), 2);
}

TEST_F(AFileListModel, TakesManyRowsInPartsBetweenWhichASlotMayAskForSomethingElse)
{
    constexpr int count = 600000;
    constexpr int atOnce = 1 << 18;
    std::vector<Row> rows;
    for (int id = 1; id <= count; ++id)
        rows.push_back({id});
    auto const recording = std::make_shared<RecordingStore>();
    recording->PlayRows(rows);
    FileListModel model(recording);
    std::vector<int> parts;
    QObject::connect(&model, &FileListModel::rowsInserted, [&parts](QModelIndex const&, int first, int last) {
        parts.push_back(last - first + 1);
    });
    model.ShowRoot(1);
    Settle(model);
    EXPECT_EQ(parts, (std::vector<int>{FirstRows, atOnce, atOnce, count - FirstRows - 2 * atOnce}));
    ASSERT_EQ(model.rowCount(), count);
    for (int row = 0; row < count; row += 1009)
        EXPECT_EQ(model.FileId(model.index(row, 0)), row + 1);

    recording->PlayRows(rows);
    QObject::connect(&model, &FileListModel::rowsInserted, [&model] {
        if (model.rowCount() > FirstRows)
            model.ShowFolder(2);
    });
    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(AFileListModel, ReadsOnceMoreForAllRefreshesDuringAReading)
{
    AddFiles(3);
    Gate gate;
    std::atomic<int> lists = 0;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const&, QVariant const&) {
        ++lists;
        gate.Pass();
        return true;
    };
    FileListModel model(tapped);
    model.ShowFolder(1);
    gate.WaitForArrival();
    for (int time = 0; time < 5; ++time)
        EXPECT_TRUE(model.Refresh());
    gate.Open();
    Settle(model);
    EXPECT_EQ(lists, 2);
    EXPECT_EQ(model.rowCount(), 3);
}

TEST_F(AFileListModel, DoesNotWaitForAListThatIsNoLongerWanted)
{
    AddFiles(3);
    int const other = AddFile("a"_q, 2);
    Gate gate;
    std::atomic<bool> isFirst = true;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const&, QVariant const&) {
        if (isFirst.exchange(false))
            gate.Pass();
        return true;
    };
    FileListModel model(tapped);
    model.ShowFolder(1);
    gate.WaitForArrival();
    model.ShowFolder(2);
    Settle(model);
    EXPECT_EQ(Ids(model), QVector<int>{other});
    gate.Open();
    model.ShowFolder(3);
    Settle(model);
    EXPECT_EQ(Ids(model), QVector<int>());
}

TEST_F(AFileListModel, LetsASlotAskForSomethingElse)
{
    AddFiles(1000);
    int const other = AddFile("a"_q, 2);
    FileListModel model(store);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    QObject::connect(&model, &FileListModel::rowsInserted, [&model] {
        if (model.rowCount() >= FirstRows)
            model.ShowFolder(2);
    });
    model.ShowFolder(1);
    Settle(model);
    EXPECT_EQ(Ids(model), QVector<int>{other});
}

TEST_F(AFileListModel, ShowsWhatWasCommittedWhileARowWasRead)
{
    int const id = AddFile("before"_q);
    Gate gate;
    std::atomic<bool> isHeld = true;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atNext = [&](QString const& statement, int row) {
        if (IsOfPage(statement) && row == 1 && isHeld.exchange(false))
            gate.Pass();
    };
    FileListModel model(tapped);
    model.ShowFolder(1);
    Settle(model);
    EXPECT_FALSE(model.index(0, 2).data().isValid());
    gate.WaitForArrival(); // with the row's values
    Run("UPDATE FileConfiguration SET name = 'after' WHERE id = :id"_q, {{":id", id}});
    AddFile("another"_q);
    QSignalSpy inserted(&model, &FileListModel::rowsInserted);
    EXPECT_TRUE(model.Refresh());
    ASSERT_TRUE(inserted.wait(LongEnoughMsec)) << "the list comes before the row";
    gate.Open();
    Settle(model);
    EXPECT_EQ(model.index(0, 2).data(), "after"_q);
}

TEST_F(AFileListModel, KeepsItsRowsWhileTheStoreFails)
{
    AddFiles(100);
    std::atomic<bool> failsLists = false;
    std::atomic<bool> failsPages = false;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const& statement, QVariant const&) {
        return !(IsOfPage(statement) ? failsPages : failsLists);
    };
    FileListModel model(tapped);
    QSignalSpy failed(&model, &FileListModel::Failed);
    auto const expectFailure = [&failed, &model] {
        ASSERT_TRUE(!failed.isEmpty() || failed.wait(LongEnoughMsec));
        EXPECT_EQ(failed.takeFirst().at(0), "the test's failure"_q);
        EXPECT_FALSE(model.isLoading());
    };
    failsLists = true;
    model.ShowFolder(1);
    expectFailure();
    EXPECT_EQ(model.rowCount(), 0);
    failsLists = false;
    EXPECT_TRUE(model.Refresh());
    Settle(model);
    EXPECT_EQ(model.rowCount(), 100);

    failsPages = true;
    EXPECT_FALSE(model.index(0, 2).data().isValid());
    expectFailure();
    EXPECT_FALSE(model.index(0, 2).data().isValid());
    expectFailure();
    failsPages = false;
    EXPECT_FALSE(model.index(0, 2).data().isValid());
    Settle(model);
    EXPECT_EQ(model.index(0, 2).data(), "1"_q);

    Run("DELETE FROM FileConfiguration WHERE id = 1"_q);
    failsLists = true;
    EXPECT_TRUE(model.Refresh());
    expectFailure();
    EXPECT_EQ(model.rowCount(), 100);
    failsLists = false;
    failsPages = true;
    EXPECT_TRUE(model.Refresh());
    expectFailure();
    EXPECT_EQ(model.rowCount(), 99);
    EXPECT_EQ(model.index(0, 2).data(), "2"_q) << "what was read stays";
    EXPECT_TRUE(failed.isEmpty());
}

TEST_F(AFileListModel, KeepsItsRowsWhileTheStoreIsLocked)
{
    store.reset();
    sync::database::OpenOptions options;
    options.journalMode = sync::database::JournalMode::Rollback;
    options.busyTimeoutMsec = 0;
    ASSERT_TRUE(QFile::remove(StorePath()));
    OpenStore(options);
    AddFiles(3);
    FileListModel model(store);
    model.ShowFolder(1);
    Settle(model);
    QSignalSpy failed(&model, &FileListModel::Failed);
    RawStore other(StorePath());
    other.Run("BEGIN EXCLUSIVE"_q);
    EXPECT_TRUE(model.Refresh());
    ASSERT_TRUE(failed.wait(LongEnoughMsec));
    EXPECT_FALSE(failed.at(0).at(0).toString().isEmpty());
    EXPECT_EQ(model.rowCount(), 3);
    other.Run("DELETE FROM FileConfiguration WHERE id = 2; COMMIT"_q);
    EXPECT_TRUE(model.Refresh());
    Settle(model);
    EXPECT_EQ(Ids(model), (QVector<int>{1, 3}));
}

TEST_F(AFileListModel, ReadsOnThreadsOfItsOwnWhichEndWithIt)
{
    AddFiles(300);
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    auto tapped = std::make_shared<TappedStore>(store);
    tapped->atExec = [&](QString const&, QVariant const&) {
        std::lock_guard<std::mutex> const lock(mutex);
        threads.push_back(std::this_thread::get_id());
        return true;
    };
    {
        FileListModel model(tapped);
        model.ShowFolder(1);
        Settle(model);
        static_cast<void>(model.index(0, 0).data());
        Settle(model);
    }
    ASSERT_EQ(threads.size(), 2U);
    for (std::thread::id const thread : threads)
        EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(tapped.use_count(), 1);
    std::weak_ptr<SqliteDatabaseFactory> const closed = store;
    store.reset();
    tapped.reset();
    EXPECT_TRUE(closed.expired());
    EXPECT_FALSE(QFile::exists(StorePath() + "-wal"_q)) << "the threads' connections are closed";
}

TEST_F(AFileListModel, MayBeDestroyedWhileItReads)
{
    AddFiles(1000);
    for (bool const isPage : {false, true}) {
        Gate gate;
        std::atomic<int> lastRow = 0;
        auto const tapped = std::make_shared<TappedStore>(store);
        tapped->atNext = [&](QString const& statement, int row) {
            if (IsOfPage(statement) != isPage)
                return;
            lastRow = row;
            if (row == 10)
                gate.Pass();
        };
        auto model = std::make_unique<FileListModel>(tapped);
        model->ShowFolder(1);
        if (isPage) {
            Settle(*model);
            static_cast<void>(model->index(0, 0).data());
        }
        gate.WaitForArrival();
        std::thread opener([&gate] { gate.Open(); });
        model.reset();
        opener.join();
        EXPECT_EQ(tapped.use_count(), 1) << "no thread has it any more";
        EXPECT_GE(lastRow, 10);
    }
    QCoreApplication::processEvents();
}

TEST_F(AFileListModel, StopsToReadAListThatIsNoLongerWanted)
{
    AddFiles(1000);
    Gate gate;
    std::atomic<int> lastRow = 0;
    auto const tapped = std::make_shared<TappedStore>(store);
    tapped->atNext = [&](QString const&, int row) {
        lastRow = row;
        if (row == 10)
            gate.Pass();
    };
    auto model = std::make_unique<FileListModel>(tapped);
    model->ShowFolder(1);
    gate.WaitForArrival();
    model->ShowFolder(2);
    gate.Open();
    model.reset();
    EXPECT_LE(lastRow, 11);
}

TEST_F(AFileListModel, FollowsAWatcher)
{
    StoreWatcher const watcher(store);
    FileListModel model(store);
    model.Follow(watcher);
    model.ShowFolder(1);
    Settle(model);
    QSignalSpy inserted(&model, &FileListModel::rowsInserted);
    AddFile("a"_q);
    ASSERT_TRUE(inserted.wait(LongEnoughMsec));
    EXPECT_EQ(model.rowCount(), 1);
    Settle(model);
    ASSERT_TRUE(AddServer(*store, "a"_q));
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    ASSERT_TRUE(changed.wait(LongEnoughMsec));
    EXPECT_FALSE(model.isLoading()) << "no file has changed";
}

TEST_F(AFileListModel, PassesTheTesterWhileOthersChangeTheStore)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const below = [&random](int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); };
    AddFiles(300);
    StoreWatcher const watcher(store);
    FileListModel model(store);
    Tester const tester(&model, Tester::FailureReportingMode::Fatal);
    model.Follow(watcher);
    model.ShowRoot(1);
    QSignalSpy const reset(&model, &FileListModel::modelReset);
    for (int step = 0; step < 300; ++step) {
        QString statement;
        switch (int const id = below(400); below(6)) {
        case 0:
            statement = "INSERT INTO FileConfiguration (name, folderConfigurationId, rootFolderId, syncStatus) "
                        "SELECT name || '%1', 1 + id % 2, 1, 2 FROM FileConfiguration LIMIT %2"_q.arg(step)
                            .arg(below(9));
            break;
        case 1:
            statement = "UPDATE FileConfiguration SET name = 'n%1', syncStatus = %2 WHERE id %3"_q.arg(below(30))
                            .arg(1 + below(3))
                            .arg(below(2) == 0 ? "= %1"_q.arg(id) : "> %1"_q.arg(id));
            break;
        case 2:
            statement = "DELETE FROM FileConfiguration WHERE id BETWEEN %1 AND %2"_q.arg(id).arg(id + below(5));
            break;
        case 3:
            model.sort(below(model.columnCount() + 1) - 1, below(2) == 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
            break;
        case 4:
            if (int const what = below(8); what == 0)
                model.ShowFolder(1 + below(2));
            else if (what == 1)
                model.ShowStatus(1 + below(3));
            else if (what == 2)
                model.ShowRoot(1);
            else
                model.SetNameFilter(below(3) == 0 ? "%1"_q.arg(below(9)) : QString());
            break;
        default:
            for (int row = below(model.rowCount() + 1); row < model.rowCount() && below(40) != 0; ++row)
                static_cast<void>(model.index(row, below(model.columnCount())).data());
        }
        std::vector<std::pair<int, QPersistentModelIndex>> kept;
        for (int row = 0; row < model.rowCount(); row += 1 + below(40))
            kept.emplace_back(model.FileId(model.index(row, 0)), model.index(row, 0));
        if (!statement.isEmpty() && step % 50 == 0)
            EXPECT_EQ(OtherProgram(StorePath(), {"run"_q, statement}).Wait(), 0);
        else if (!statement.isEmpty())
            std::thread([&] { EXPECT_TRUE(Execute(*store, statement)); }).join();
        if (below(4) == 0)
            QCoreApplication::processEvents();
        else if (below(20) == 0)
            Settle(model);
        for (auto const& [id, index] : kept)
            EXPECT_TRUE(!index.isValid() || model.FileId(index) == id);
    }
    model.sort(2);
    model.SetNameFilter("n"_q);
    model.ShowRoot(1);
    EXPECT_TRUE(model.Refresh());
    Settle(model);
    EXPECT_EQ(Ids(model), Select("WHERE rootFolderId = 1 AND name LIKE '%n%' ORDER BY name, id"_q));
    QVariantList names;
    for (int const id : Ids(model))
        names.append(Single(*store, "SELECT name FROM FileConfiguration WHERE id = :id"_q, {{":id", id}}));
    EXPECT_EQ(Values(model, "name"), names);
    EXPECT_EQ(reset.count(), 0);
}

} // namespace

} // namespace file_list_model_test
