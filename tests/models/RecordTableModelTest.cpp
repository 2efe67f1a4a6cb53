#include "models/RecordTableModel.h"

#include "config/Managers.h"
#include "config/RecordColumns.h"
#include "models/AccountModel.h"
#include "models/ProductModel.h"
#include "models/ScheduleModel.h"
#include "models/ServerModel.h"
#include "models/StoreWatcher.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QAbstractItemModelTester>
#include <QDateTime>
#include <QPersistentModelIndex>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <random>

namespace record_table_model_test {

namespace {

using namespace tandry::test;
using sync::config::AuthenticationConfiguration;
using sync::config::Managers;
using sync::config::ProductConfiguration;
using sync::config::ScheduleEntry;
using sync::config::ServerConfiguration;
using sync::models::AccountModel;
using sync::models::ProductModel;
using sync::models::RecordTableModel;
using sync::models::ScheduleModel;
using sync::models::ServerModel;
using sync::models::StoreWatcher;

class ARecordTableModel : public StoreFixture
{
protected:
    void Run(QString const& statement, Bindings bindings = {}) { ASSERT_TRUE(Execute(*store, statement, bindings)); }

    /// Expects that a row has the values of a record that a manager returns, each in its column and under its role, and
    /// that the model has no other columns.
    template <class Record>
    static void ExpectRow(RecordTableModel const& model, int row, Record const& record)
    {
        int column = 0;
        for (auto const& described : sync::config::RecordColumns<Record>()) {
            int const role = model.roleNames().key(described.name().toLatin1(), -1);
            if (described.isSecret() || !described.isReceived()) {
                EXPECT_EQ(role, -1) << described.name().toStdString();
                continue;
            }
            EXPECT_EQ(model.headerData(column, Qt::Horizontal), described.name());
            EXPECT_EQ(model.index(row, column).data(Qt::EditRole), described.Get(record))
                << described.name().toStdString();
            EXPECT_EQ(model.index(row, 0).data(role), described.Get(record)) << described.name().toStdString();
            ++column;
        }
        EXPECT_EQ(model.columnCount(), column);
        EXPECT_EQ(model.RecordId(model.index(row, 0)), record.getId());
    }
};

TEST_F(ARecordTableModel, OfServersHasTheColumnsOfTheRecord)
{
    Managers const managers(store);
    ServerConfiguration server;
    server.setAlias("a"_q);
    server.setDavUrl("https://dav"_q);
    ASSERT_TRUE(managers.servers->Add(server));
    Run("UPDATE ServerConfiguration SET nameValueProperties = :text"_q,
        {{":text", managers.servers->ToNameValuePropertyString({{"k"_q, "v"_q}, {"l"_q, "w"_q}})}});
    ServerModel model(store);
    model.fetchMore({});
    ASSERT_EQ(model.rowCount(), 1);
    ExpectRow(model, 0, managers.servers->GetServerConfigById(server.getId()));
    EXPECT_EQ(model.index(0, 1).data(), "a"_q);
    EXPECT_EQ(model.index(0, 4).data(), "k=v, l=w"_q);
}

TEST_F(ARecordTableModel, OfAccountsHasNoPassword)
{
    Managers const managers(store);
    AuthenticationConfiguration account;
    account.setUserName("u"_q);
    ASSERT_TRUE(managers.accounts->Add(account));
    Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'hidden'"_q);
    AccountModel model(store);
    model.fetchMore({});
    ASSERT_EQ(model.rowCount(), 1);
    ExpectRow(model, 0, managers.accounts->GetAuthenticationConfigurationById(account.getId()));
    EXPECT_FALSE(model.roleNames().values().contains("encryptedPassword"));
}

TEST_F(ARecordTableModel, OfProductsHasNoSecret)
{
    Run("INSERT INTO ProductConfiguration (name, consumerKey, consumerSecret, serverId) VALUES ('n', 'k', 'hidden', 1)"_q);
    ProductModel model(store);
    model.fetchMore({});
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.index(0, 1).data(), "n"_q);
    EXPECT_FALSE(model.roleNames().values().contains("consumerSecret"));
    QList<int> roles = model.roleNames().keys();
    for (int column = 0; column < model.columnCount(); ++column) {
        for (int const role : roles)
            EXPECT_NE(model.index(0, column).data(role), "hidden"_q);
    }
}

TEST_F(ARecordTableModel, OfSchedulesHasTimesInLocalTime)
{
    Managers const managers(store);
    ScheduleEntry schedule = managers.schedules->GetDefaultScheduleEntry();
    schedule.setStartTime(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));
    schedule.setSyncScheduleType(sync::config::SyncSchedule(4));
    ASSERT_TRUE(managers.schedules->Update(schedule));
    ScheduleModel model(store);
    model.fetchMore({});
    ASSERT_EQ(model.rowCount(), 1);
    ExpectRow(model, 0, managers.schedules->GetScheduleEntryById(schedule.getId()));
    QModelIndex const index = model.IndexOf(schedule.getId());
    ASSERT_TRUE(index.isValid());
    QDateTime const start = index.data(model.roleNames().key("startTime")).toDateTime();
    EXPECT_EQ(start, schedule.getStartTime());
    EXPECT_EQ(start.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(index.data(model.roleNames().key("syncScheduleTypeText")), "4"_q);
    EXPECT_EQ(model.index(0, 3).data(), QString()) << "it does not expire";
}

TEST_F(ARecordTableModel, ReadsTheTableWhenItIsOpened)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ServerModel model(store);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_TRUE(model.canFetchMore({}));
    model.fetchMore({});
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_FALSE(model.canFetchMore({}));
}

TEST_F(ARecordTableModel, KeepsItsRowsWhileTheStoreFails)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ServerModel model(store);
    model.fetchMore({});
    RawStore(StorePath(), RawStore::KeepLog).Run("ALTER TABLE ServerConfiguration RENAME TO Gone"_q);
    EXPECT_FALSE(model.Refresh());
    EXPECT_EQ(model.rowCount(), 1);
    ServerModel other(store);
    other.fetchMore({});
    EXPECT_TRUE(other.canFetchMore({})) << "it can be tried again";
    store->ClearError();
}

TEST_F(ARecordTableModel, TellsOfAFailureAndThenOpensWhatItCouldNot)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ServerModel model(store);
    QSignalSpy const loaded(&model, &ServerModel::Loaded);
    QSignalSpy const failed(&model, &ServerModel::Failed);
    RawStore raw(StorePath(), RawStore::KeepLog);
    raw.Run("ALTER TABLE ServerConfiguration RENAME TO Gone"_q);
    model.fetchMore({});
    ASSERT_EQ(failed.count(), 1);
    EXPECT_TRUE(failed.constFirst().constFirst().toString().contains(StorePath()));
    raw.Run("ALTER TABLE Gone RENAME TO ServerConfiguration"_q);
    EXPECT_EQ(loaded.count(), 0);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(loaded.count(), 1);
    EXPECT_EQ(failed.count(), 1);
    store->ClearError();
}

TEST_F(ARecordTableModel, LetsASlotRefreshItInTheMiddleOfARefresh)
{
    for (QString const& alias : {"a"_q, "b"_q, "c"_q})
        ASSERT_TRUE(AddServer(*store, alias));
    ServerModel model(store);
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.fetchMore({});
    int nested = 0;
    QObject::connect(&model, &ServerModel::dataChanged, [&] {
        if (nested++ > 0)
            return;
        Run("DELETE FROM ServerConfiguration WHERE alias <> 'x'"_q);
        EXPECT_TRUE(model.Refresh());
    });
    Run("UPDATE ServerConfiguration SET alias = 'x' WHERE alias = 'a'"_q);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(nested, 1);
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.index(0, 1).data(), "x"_q);
}

TEST_F(ARecordTableModel, FollowsAWatcherForItsTableAlone)
{
    StoreWatcher const watcher(store);
    ServerModel model(store);
    model.Follow(watcher);
    model.fetchMore({});
    ASSERT_TRUE(AddServer(*store, "a"_q));
    QSignalSpy inserted(&model, &ServerModel::rowsInserted);
    ASSERT_TRUE(inserted.wait(60000));
    EXPECT_EQ(model.rowCount(), 1);
}

TEST_F(ARecordTableModel, PassesTheTesterUnderRandomChanges)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const below = [&random](int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); };
    ServerModel model(store);
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.fetchMore({});
    QSignalSpy const reset(&model, &ServerModel::modelReset);
    for (int step = 0; step < 300; ++step) {
        int const id = below(60);
        QString const alias = QString::number(below(5));
        switch (below(4)) {
        case 0:
            Run("INSERT OR IGNORE INTO ServerConfiguration (id, alias) VALUES (:id, :alias)"_q,
                {{":id", id}, {":alias", alias}});
            break;
        case 1:
            Run("UPDATE ServerConfiguration SET alias = :alias WHERE id > :id"_q, {{":id", id}, {":alias", alias}});
            break;
        case 2:
            Run("DELETE FROM ServerConfiguration WHERE id BETWEEN :id AND :last"_q,
                {{":id", id}, {":last", id + below(5)}});
            break;
        default: {
            QPersistentModelIndex const kept = model.index(below(model.rowCount() + 1), 0);
            int const keptId = model.RecordId(kept);
            ASSERT_TRUE(model.Refresh());
            EXPECT_TRUE(!kept.isValid() || model.RecordId(kept) == keptId);
            std::vector<QVariant> const ids = Column(*store, "SELECT id FROM ServerConfiguration ORDER BY id"_q);
            std::vector<QVariant> const aliases = Column(*store, "SELECT alias FROM ServerConfiguration ORDER BY id"_q);
            ASSERT_EQ(static_cast<std::size_t>(model.rowCount()), ids.size());
            for (int row = 0; row < model.rowCount(); ++row) {
                EXPECT_EQ(model.RecordId(model.index(row, 0)), ids[static_cast<std::size_t>(row)].toInt());
                EXPECT_EQ(model.index(row, 1).data(), aliases[static_cast<std::size_t>(row)]);
            }
        }
        }
    }
    EXPECT_EQ(reset.count(), 0);
}

} // namespace

} // namespace record_table_model_test
