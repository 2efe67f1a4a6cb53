#include "config/FileConfigManager.h"
#include "config/Managers.h"
#include "models/AsyncManagers.h"
#include "models/FileListModel.h"
#include "models/FolderTreeModel.h"
#include "models/StoreWatcher.h"
#include "postgres/support/StoreFixture.h"
#include "support/FolderRecords.h"
#include "support/Queries.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace postgres_models_test {
namespace {

using namespace sync::config;
using namespace sync::models;
using namespace tandry::test;

constexpr int LongEnoughMsec = 60'000;

/// Waits until the watcher has told of all these tables, and returns what else it told of meanwhile.
QStringList WaitFor(QSignalSpy& changed, QStringList tables)
{
    QStringList others;
    while (!tables.isEmpty()) {
        if (changed.isEmpty() && !changed.wait(LongEnoughMsec)) {
            ADD_FAILURE() << "not told of: " << tables.join(QLatin1Char(' ')).toStdString();
            break;
        }
        for (QString const& table : changed.takeFirst().constFirst().toStringList()) {
            if (tables.removeAll(table) == 0)
                others.append(table);
        }
    }
    return others;
}

/// What Qt's views and clients with a window use, on a profile.
class ModelsOfAProfile : public StoreFixture
{
protected:
    /// Writes as another program does, whose connection the store knows nothing of.
    void RunInAnotherProgram(QString const& statement) { ServerRawStore(StorePath()).Run(statement); }

    /// The names of the rows, as far as the model has read them.
    static QStringList Shown(QAbstractItemModel const& model, QModelIndex const& parent = {})
    {
        QStringList rows;
        for (int row = 0; row < model.rowCount(parent); ++row)
            rows.append(model.index(row, 0, parent).data(model.roleNames().key("name", -1)).toString());
        return rows;
    }

    static int NameColumn(QAbstractItemModel const& model)
    {
        int column = 0;
        while (column < model.columnCount() &&
               model.headerData(column, Qt::Horizontal).toString() != QLatin1String("name"))
            ++column;
        return column;
    }

    static void Settle(FileListModel& model)
    {
        QSignalSpy loaded(&model, &FileListModel::Loaded);
        while (model.isLoading())
            ASSERT_TRUE(loaded.wait(LongEnoughMsec));
    }

    /// The names of all rows, once the model has read them.
    static QStringList Names(FileListModel& model)
    {
        Settle(model);
        Shown(model); // asks for the values
        Settle(model);
        return Shown(model);
    }
};

TEST_F(ModelsOfAProfile, WatcherTellsOfCommitsOfAnotherProgramOnceNoticesAreOn)
{
    {
        StoreWatcher const before(store);
        EXPECT_FALSE(before.isWatching());
        EXPECT_FALSE(store->LastError()) << "a profile that tells nothing is no failure";
    }
    ASSERT_TRUE(store->SetNotices(true));
    StoreWatcher const watcher(store);
    ASSERT_TRUE(watcher.isWatching());
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    RunInAnotherProgram(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('a')"));
    EXPECT_TRUE(WaitFor(changed, {QStringLiteral("ServerConfiguration")}).isEmpty());
    EXPECT_EQ(CountServers(*store), 1) << "a slot finds the row";
    ASSERT_TRUE(Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = 7")));
    EXPECT_TRUE(WaitFor(changed, {QStringLiteral("Schedules")}).isEmpty());
}

TEST_F(ModelsOfAProfile, WatcherGoesOnAfterALostConnection)
{
    ASSERT_TRUE(store->SetNotices(true));
    StoreWatcher const watcher(store);
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    QSignalSpy const stopped(&watcher, &StoreWatcher::Stopped);
    RunInAnotherProgram(QStringLiteral(
        "SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE application_name = 'tandry'"));
    EXPECT_EQ(WaitFor(changed, {QStringLiteral("FileConfiguration")}).size(), 7) << "all tables may have changed";
    RunInAnotherProgram(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('a')"));
    EXPECT_TRUE(WaitFor(changed, {QStringLiteral("ServerConfiguration")}).isEmpty());
    EXPECT_TRUE(watcher.isWatching());
    EXPECT_TRUE(stopped.isEmpty());
    EXPECT_EQ(CountServers(*store), 1) << "the store has connected again";
}

TEST_F(ModelsOfAProfile, WatcherStopsWhenTheServerIsGone)
{
    PostgresServer server;
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    auto const apart = sync::database::PostgresDatabaseFactory::Open(server.Uri(QStringLiteral("a")));
    ASSERT_NE(apart, nullptr);
    ASSERT_TRUE(apart->SetNotices(true));
    StoreWatcher const watcher(apart);
    QSignalSpy stopped(&watcher, &StoreWatcher::Stopped);
    server.Crash();
    ASSERT_TRUE(stopped.wait(LongEnoughMsec));
    EXPECT_FALSE(watcher.isWatching());
    EXPECT_EQ(stopped.size(), 1);
}

TEST_F(ModelsOfAProfile, FolderTreeShowsItsFoldersAndFollowsIt)
{
    Managers const managers(store);
    FolderConfiguration root = Folder(QStringLiteral("/p/top"));
    ASSERT_TRUE(managers.folders->Add(root));
    QString const insertion =
        QStringLiteral("INSERT INTO FolderConfiguration (name, clientPath, parentId, rootId, syncStatus) "
                       "VALUES ('%1', '/p/top/%1', %2, %2, 1)");
    for (char const* name : {"b", "a"})
        RunInAnotherProgram(insertion.arg(QLatin1String(name)).arg(root.getId()));
    ASSERT_TRUE(store->SetNotices(true));
    StoreWatcher const watcher(store);
    FolderTreeModel model(store);
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.Follow(watcher);
    model.fetchMore({});
    QModelIndex const top = model.index(0, 0);
    model.fetchMore(top);
    EXPECT_EQ(Shown(model, top), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    RunInAnotherProgram(insertion.arg(QStringLiteral("aa")).arg(root.getId()));
    WaitFor(changed, {QStringLiteral("FolderConfiguration")});
    EXPECT_EQ(Shown(model, top), (QStringList{QStringLiteral("a"), QStringLiteral("aa"), QStringLiteral("b")}));
}

TEST_F(ModelsOfAProfile, FileListSortsFiltersAndFollowsIt)
{
    QString const insertion = QStringLiteral(
        "INSERT INTO FileConfiguration (name, folderConfigurationId, rootFolderId, syncStatus) VALUES (%1, 1, 1, 2)");
    for (char const* name : {"'b'", "'B'", "NULL", "'ab'"})
        RunInAnotherProgram(insertion.arg(QLatin1String(name)));
    ASSERT_TRUE(store->SetNotices(true));
    StoreWatcher const watcher(store);
    FileListModel model(store);
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy const failed(&model, &FileListModel::Failed);
    model.Follow(watcher);
    ASSERT_LT(NameColumn(model), model.columnCount());
    model.sort(NameColumn(model));
    model.ShowFolder(1);
    QStringList const sorted{QString(), QStringLiteral("B"), QStringLiteral("ab"), QStringLiteral("b")};
    EXPECT_EQ(Names(model), sorted) << "NULL first, and by character codes, as in SQLite";
    model.SetNameFilter(QStringLiteral("b"));
    EXPECT_EQ(Names(model), sorted.mid(1));
    model.ShowStatus(2, 1);
    EXPECT_EQ(Names(model).size(), 3);
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    RunInAnotherProgram(insertion.arg(QStringLiteral("'bb'")));
    WaitFor(changed, {QStringLiteral("FileConfiguration")});
    EXPECT_EQ(Names(model), sorted.mid(1) + QStringList{QStringLiteral("bb")});
    EXPECT_TRUE(failed.isEmpty());
}

TEST_F(ModelsOfAProfile, AsyncManagersReadWriteAndRollBack)
{
    AsyncManagers managers(store);
    auto const added = managers.folders.Add(Folder(QStringLiteral("/r"))).result();
    ASSERT_TRUE(added.value);
    EXPECT_FALSE(added.error);
    auto const rolledBack = managers
                                .RunInTransaction([](Managers const& own) {
                                    FolderConfiguration root = Folder(QStringLiteral("/s"));
                                    EXPECT_TRUE(own.folders->Add(root));
                                    return false;
                                })
                                .result();
    EXPECT_FALSE(rolledBack.value);
    EXPECT_FALSE(rolledBack.error);
    EXPECT_THAT(managers.folders.GetAllRootFolders().result().value, testing::SizeIs(1));
    EXPECT_EQ(ServerRawStore(StorePath()).Count(QStringLiteral("FolderConfiguration")), 1);
}

TEST_F(ModelsOfAProfile, AsyncManagersTellOfALostConnectionAndGoOn)
{
    AsyncManagers managers(store);
    auto const lost = managers
                          .RunInTransaction([this](Managers const& own) {
                              FolderConfiguration root = Folder(QStringLiteral("/r"));
                              EXPECT_TRUE(own.folders->Add(root));
                              RunInAnotherProgram(QStringLiteral("SELECT pg_terminate_backend(pid, 10000) FROM "
                                                                 "pg_stat_activity WHERE application_name = 'tandry'"));
                              return true;
                          })
                          .result();
    EXPECT_FALSE(lost.value);
    EXPECT_TRUE(lost.error);
    EXPECT_TRUE(managers.folders.Add(Folder(QStringLiteral("/s"))).result().value);
    EXPECT_EQ(ServerRawStore(StorePath()).Count(QStringLiteral("FolderConfiguration")), 1);
}

} // namespace
} // namespace postgres_models_test
