#include "models/FolderTreeModel.h"

#include "config/FolderConfigManager.h"
#include "config/RecordColumns.h"
#include "models/StoreWatcher.h"
#include "support/ModelTester.h"
#include "support/Queries.h"
#include "support/RecordingStore.h"
#include "support/StoreFixture.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QPersistentModelIndex>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace {

using namespace tandry::test;
using sync::config::FolderConfiguration;
using sync::models::FolderTreeModel;
using sync::models::StoreWatcher;

class AFolderTreeModel : public StoreFixture
{
protected:
    int AddFolder(QString const& name, int parentId)
    {
        auto const query = Prepared(*store,
                                    "INSERT INTO FolderConfiguration (name, clientPath, parentId, syncStatus) "
                                    "VALUES (:name, :path, :parent, 1)"_q,
                                    {{":name", name}, {":path", "/p/"_q + name}, {":parent", parentId}});
        EXPECT_TRUE(query->exec());
        return query->lastInsertId().toInt();
    }

    void Run(QString const& statement, Bindings bindings = {}) { ASSERT_TRUE(Execute(*store, statement, bindings)); }

    /// The texts of the rows below an index, opened ones with theirs in parentheses.
    static QString Shown(QAbstractItemModel const& model, QModelIndex const& parent = {})
    {
        QStringList rows;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            QModelIndex const index = model.index(row, 0, parent);
            QString const below = Shown(model, index);
            rows.append(index.data().toString() + (below.isEmpty() ? QString() : "("_q + below + ")"_q));
        }
        return rows.join(" "_q);
    }

    QModelIndex Open(FolderTreeModel& model, QModelIndex const& index = {})
    {
        EXPECT_TRUE(model.canFetchMore(index));
        model.fetchMore(index);
        EXPECT_FALSE(model.canFetchMore(index));
        return index;
    }

    static void OpenAll(FolderTreeModel& model, QModelIndex const& parent = {})
    {
        model.fetchMore(parent);
        for (int row = 0; row < model.rowCount(parent); ++row)
            OpenAll(model, model.index(row, 0, parent));
    }

    static QVariant Value(FolderTreeModel const& model, QModelIndex const& index, char const* role)
    {
        return index.data(model.roleNames().key(role, -1));
    }
};

TEST_F(AFolderTreeModel, ReadsABranchWhenItOpens)
{
    int const root = AddFolder("root"_q, 0);
    AddFolder("b"_q, root);
    AddFolder("a"_q, root);
    FolderTreeModel model(store);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_TRUE(model.hasChildren());
    Open(model);
    EXPECT_EQ(Shown(model), "root"_q);
    QModelIndex const index = model.index(0, 0);
    EXPECT_TRUE(model.hasChildren(index));
    EXPECT_EQ(model.FolderId(index), root);
    Open(model, index);
    EXPECT_EQ(Shown(model), "root(a b)"_q);
    QModelIndex const leaf = model.index(0, 0, index);
    QSignalSpy const changed(&model, &FolderTreeModel::dataChanged);
    EXPECT_TRUE(model.hasChildren(leaf));
    Open(model, leaf);
    EXPECT_FALSE(model.hasChildren(leaf));
    EXPECT_EQ(changed.count(), 1) << "so that a view takes the sign of a branch away";
}

TEST_F(AFolderTreeModel, HasARoleForEachColumn)
{
    FolderConfiguration added;
    added.setName("n"_q);
    added.setClientPath("/p/n"_q);
    added.setParentId(0);
    added.setSyncStatus(sync::config::FolderStatusOutOfSync);
    added.setPrivileges(sync::config::FolderPrivileges(1 + 16 + 64));
    added.setSyncDriveType(sync::config::DriveType(7));
    added.setLastSyncTime(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    added.setFeatureName("f"_q);
    sync::config::FolderConfigManager folders(store, nullptr);
    ASSERT_TRUE(folders.Add(added));
    FolderConfiguration const stored = folders.GetFolderConfigurationById(added.getId());

    FolderTreeModel model(store);
    Open(model);
    QModelIndex const index = model.index(0, 0);
    for (auto const& column : sync::config::RecordColumns<FolderConfiguration>()) {
        QVariant const value = Value(model, index, column.name().toLatin1().constData());
        EXPECT_EQ(value, column.Get(stored)) << column.name().toStdString();
        EXPECT_EQ(value.userType(), column.Get(stored).userType()) << column.name().toStdString();
    }
    EXPECT_EQ(Value(model, index, "lastSyncTime").toDateTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(Value(model, index, "syncStatusText"), "Out of sync"_q);
    EXPECT_EQ(Value(model, index, "privilegesText"), "View, Share, 64"_q);
    EXPECT_EQ(Value(model, index, "syncDriveTypeText"), "7"_q);
    EXPECT_EQ(Value(model, index, "nameText"), QVariant());
    EXPECT_EQ(index.data(Qt::ToolTipRole), "/p/n"_q);
    EXPECT_EQ(model.headerData(0, Qt::Horizontal), "Folder"_q);
}

TEST_F(AFolderTreeModel, ShowsThePathOfAFolderWithoutAName)
{
    AddFolder({}, 0);
    Run("UPDATE FolderConfiguration SET name = NULL, clientPath = '/p'"_q);
    FolderTreeModel model(store);
    Open(model);
    EXPECT_EQ(Shown(model), "/p"_q);
}

TEST_F(AFolderTreeModel, RefreshesByDifferenceAndKeepsIndexes)
{
    int const root = AddFolder("root"_q, 0);
    int const a = AddFolder("a"_q, root);
    int const b = AddFolder("b"_q, root);
    int const c = AddFolder("c"_q, root);
    FolderTreeModel model(store);
    Open(model);
    Open(model, model.index(0, 0));
    QPersistentModelIndex const keptA = model.IndexOf(a);
    QPersistentModelIndex const keptB = model.IndexOf(b);
    QPersistentModelIndex const keptC = model.IndexOf(c);
    QSignalSpy const reset(&model, &FolderTreeModel::modelReset);
    QSignalSpy const moved(&model, &FolderTreeModel::rowsMoved);
    QSignalSpy const inserted(&model, &FolderTreeModel::rowsInserted);
    QSignalSpy const removed(&model, &FolderTreeModel::rowsRemoved);
    QSignalSpy const changed(&model, &FolderTreeModel::dataChanged);

    Run("UPDATE FolderConfiguration SET name = 'x' WHERE id = :id"_q, {{":id", a}});
    Run("DELETE FROM FolderConfiguration WHERE id = :id"_q, {{":id", b}});
    AddFolder("d"_q, root);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(Shown(model), "root(c d x)"_q);
    EXPECT_EQ(moved.count(), 1);
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(model.FolderId(keptA), a);
    EXPECT_EQ(model.FolderId(keptC), c);
    EXPECT_FALSE(keptB.isValid());
    EXPECT_FALSE(model.IndexOf(b).isValid());

    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(moved.count() + inserted.count() + removed.count() + changed.count(), 4) << "nothing has changed";
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(AFolderTreeModel, ReadsNoBranchThatHasNotBeenOpened)
{
    auto const recording = std::make_shared<RecordingStore>();
    FolderTreeModel model(recording);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.IndexOf(1).isValid());
}

TEST_F(AFolderTreeModel, KeepsItsRowsWhileTheStoreFails)
{
    int const root = AddFolder("root"_q, 0);
    AddFolder("a"_q, root);
    FolderTreeModel model(store);
    Open(model);
    Open(model, model.index(0, 0));
    RawStore(StorePath(), RawStore::KeepLog).Run("ALTER TABLE FolderConfiguration RENAME TO Gone"_q);
    EXPECT_FALSE(model.Refresh());
    EXPECT_EQ(Shown(model), "root(a)"_q);
    FolderTreeModel other(store);
    other.fetchMore({});
    EXPECT_TRUE(other.canFetchMore({})) << "it can be tried again";
    store->ClearError();
}

TEST_F(AFolderTreeModel, TellsOfAFailureAndThenOpensWhatItCouldNot)
{
    AddFolder("root"_q, 0);
    FolderTreeModel model(store);
    QSignalSpy const loaded(&model, &FolderTreeModel::Loaded);
    QSignalSpy failed(&model, &FolderTreeModel::Failed);
    RawStore raw(StorePath(), RawStore::KeepLog);
    raw.Run("ALTER TABLE FolderConfiguration RENAME TO Gone"_q);
    model.fetchMore({});
    ASSERT_EQ(failed.count(), 1);
    EXPECT_TRUE(failed.takeFirst().constFirst().toString().contains(StorePath()));
    EXPECT_FALSE(model.Refresh());
    EXPECT_EQ(failed.count(), 1);
    EXPECT_EQ(loaded.count(), 0);
    raw.Run("ALTER TABLE Gone RENAME TO FolderConfiguration"_q);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(Shown(model), "root"_q);
    EXPECT_EQ(loaded.count(), 1);
    model.fetchMore(model.index(0, 0));
    EXPECT_EQ(loaded.count(), 2);
    EXPECT_EQ(failed.count(), 1);
    store->ClearError();
}

TEST_F(AFolderTreeModel, LetsASlotRefreshItInTheMiddleOfARefresh)
{
    int const root = AddFolder("root"_q, 0);
    for (QString const& name : {"a"_q, "b"_q, "d"_q, "e"_q})
        AddFolder(name, root);
    FolderTreeModel model(store);
    ModelTester const tester(&model);
    OpenAll(model);
    int nested = 0;
    auto const change = [&](QString const& statement) {
        if (nested++ > 0)
            return;
        Run(statement);
        EXPECT_TRUE(model.Refresh());
    };
    auto const connection = QObject::connect(&model, &FolderTreeModel::rowsInserted, [&] {
        change("DELETE FROM FolderConfiguration WHERE name IN ('d', 'e')"_q);
    });
    AddFolder("aa"_q, root);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(Shown(model), "root(a aa b)"_q);

    QObject::disconnect(connection);
    nested = 0;
    QObject::connect(&model, &FolderTreeModel::rowsAboutToBeRemoved, [&] {
        change("DELETE FROM FolderConfiguration WHERE name = 'b'"_q);
    });
    Run("DELETE FROM FolderConfiguration WHERE name = 'a'"_q);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(Shown(model), "root(aa)"_q);
    EXPECT_EQ(nested, 2) << "each slot once for its own change and once for the other";
}

TEST_F(AFolderTreeModel, LetsASlotOpenABranchInTheMiddleOfARefresh)
{
    int const root = AddFolder("root"_q, 0);
    FolderTreeModel model(store);
    ModelTester const tester(&model);
    OpenAll(model);
    QObject::connect(&model, &FolderTreeModel::rowsInserted, [&](QModelIndex const& parent, int first, int) {
        model.fetchMore(model.index(first, 0, parent));
    });
    int const child = AddFolder("child"_q, root);
    AddFolder("below"_q, child);
    AddFolder("next"_q, root);
    EXPECT_TRUE(model.Refresh());
    EXPECT_EQ(Shown(model), "root(child(below) next)"_q);
}

TEST_F(AFolderTreeModel, FollowsAWatcher)
{
    StoreWatcher const watcher(store);
    FolderTreeModel model(store);
    model.Follow(watcher);
    Open(model);
    QSignalSpy inserted(&model, &FolderTreeModel::rowsInserted);
    AddFolder("root"_q, 0);
    ASSERT_TRUE(inserted.wait(60000));
    EXPECT_EQ(Shown(model), "root"_q);
}

TEST_F(AFolderTreeModel, PassesTheTesterUnderRandomChanges)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const below = [&random](int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); };
    FolderTreeModel model(store);
    ModelTester const tester(&model);
    std::vector<int> ids{0};
    for (int step = 0; step < 400; ++step) {
        int const id = ids[static_cast<std::size_t>(below(static_cast<int>(ids.size())))];
        int const other = ids[static_cast<std::size_t>(below(static_cast<int>(ids.size())))];
        QString const name = QString::number(below(30));
        switch (below(7)) {
        case 0:
        case 1:
            ids.push_back(AddFolder(name, id));
            break;
        case 2:
            Run("UPDATE FolderConfiguration SET name = :name WHERE id = :id"_q, {{":name", name}, {":id", id}});
            break;
        case 3:
            Run("UPDATE FolderConfiguration SET syncStatus = :status WHERE id = :id"_q,
                {{":status", below(4)}, {":id", id}});
            break;
        case 4:
            if (below(3) == 0)
                Run("DELETE FROM FolderConfiguration WHERE id = :id"_q, {{":id", id}});
            else if (id < other) // so that no ring comes about
                Run("UPDATE FolderConfiguration SET parentId = :parent WHERE id = :id"_q,
                    {{":parent", id}, {":id", other}});
            break;
        case 5:
            if (QModelIndex const index = model.IndexOf(id); index.isValid())
                model.fetchMore(index);
            break;
        default: {
            std::vector<std::pair<int, QPersistentModelIndex>> kept;
            for (int const each : ids) {
                if (QModelIndex const index = model.IndexOf(each); index.isValid())
                    kept.emplace_back(each, index);
            }
            ASSERT_TRUE(model.Refresh());
            OpenAll(model);
            for (auto const& [each, index] : kept)
                EXPECT_TRUE(!index.isValid() || model.FolderId(index) == each);
        }
        }
    }
    AddFolder("last"_q, 0); // the changes may have left no root
    ASSERT_TRUE(model.Refresh());

    // What a model that is new and opens the same branches shows.
    FolderTreeModel fresh(store);
    QList<int> const roles = model.roleNames().keys();
    auto const openLike = [&](auto const& self, QModelIndex const& index, QModelIndex const& opened) -> void {
        if (model.canFetchMore(opened))
            return;
        fresh.fetchMore(index);
        ASSERT_EQ(fresh.rowCount(index), model.rowCount(opened));
        for (int row = 0; row < model.rowCount(opened); ++row) {
            QModelIndex const freshChild = fresh.index(row, 0, index);
            QModelIndex const child = model.index(row, 0, opened);
            for (int const role : roles)
                EXPECT_EQ(freshChild.data(role), child.data(role));
            self(self, freshChild, child);
        }
    };
    openLike(openLike, {}, {});
    EXPECT_GT(model.rowCount(), 0);
}

} // namespace
