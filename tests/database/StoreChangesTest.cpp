#include "database/StoreChanges.h"

#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QFile>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <poll.h>

namespace store_changes_test {

namespace {

using namespace tandry::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreChanges;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using sync::database::TransactionalScope;

QStringList const Servers{"ServerConfiguration"_q};
QStringList const Everything{"ServerConfiguration"_q,
                             "AuthenticationConfiguration"_q,
                             "ProductConfiguration"_q,
                             "FolderConfiguration"_q,
                             "FileConfiguration"_q,
                             "GeneratedFileConfiguration"_q,
                             "BaseFileConfiguration"_q,
                             "Schedules"_q,
                             "FolderFileSystem"_q};

bool IsReadable(StoreChanges const& changes)
{
    pollfd descriptor{changes.descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
}

/// Looks until there is nothing more to see before the next notice, and returns the tables of all looks.
QStringList Seen(StoreChanges& changes)
{
    QStringList tables;
    StoreChanges::Sight sight;
    do {
        sight = changes.Look();
        if (sight.error)
            ADD_FAILURE() << sight.error->text.toStdString();
        tables += sight.tables;
    } while (sight.pauseMsec);
    EXPECT_FALSE(IsReadable(changes));
    return tables;
}

class ChangesOfAStore : public EachJournalMode
{
protected:
    void SetUp() override
    {
        EachJournalMode::SetUp();
        Watch();
    }

    void ReopenForReading()
    {
        changes.reset();
        store.reset();
        OpenOptions options;
        options.mode = OpenMode::ReadOnly;
        OpenStore(options);
        Watch();
    }

    void Watch()
    {
        changes = store->WatchChanges();
        ASSERT_NE(changes, nullptr);
    }

    void ExpectSeen(QStringList const& tables)
    {
        if (!tables.isEmpty()) {
            EXPECT_TRUE(IsReadable(*changes));
        }
        EXPECT_EQ(Seen(*changes), tables);
    }

    std::unique_ptr<StoreChanges> changes;
};
TANDRY_IN_EACH_JOURNAL_MODE(ChangesOfAStore);

TEST_P(ChangesOfAStore, WithoutACommitAreNone)
{
    StoreChanges::Sight const sight = changes->Look();
    EXPECT_EQ(sight.tables, QStringList());
    EXPECT_EQ(sight.pauseMsec, std::nullopt);
    EXPECT_EQ(CountServers(*store), 0);
    EXPECT_FALSE(IsReadable(*changes));
}

TEST_P(ChangesOfAStore, OfThisProcessNameTheTablesOfTheCommitOnce)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
    ExpectSeen({});
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "b"_q));
        ASSERT_TRUE(Execute(*store, "INSERT INTO FileConfiguration (name) VALUES ('f')"_q));
        EXPECT_FALSE(IsReadable(*changes) && !changes->Look().tables.isEmpty()) << "not committed";
    }
    ExpectSeen({"ServerConfiguration"_q, "FileConfiguration"_q});
}

TEST_P(ChangesOfAStore, OfAnotherThreadOrFactoryAreThisProcesssToo)
{
    std::thread([this] { EXPECT_TRUE(AddServer(*store, "a"_q)); }).join();
    ExpectSeen(Servers);
    ASSERT_TRUE(AddServer(*SqliteDatabaseFactory::Open(StorePath()), "b"_q));
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStore, AreNoneAfterARollback)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(database->rollback());
    ExpectSeen({});
}

TEST_P(ChangesOfAStore, AreOnlyTablesWithRowsThatWereChanged)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
    TransactionalScope scope;
    ASSERT_TRUE(Execute(*store, "UPDATE FolderConfiguration SET name = 'n'"_q)) << "there is no folder";
    ASSERT_FALSE(Execute(*store, "INSERT INTO FileConfiguration (id) VALUES (1), (2), (3000000000)"_q));
    store->ClearError();
    ASSERT_TRUE(AddServer(*store, "b"_q));
    ASSERT_TRUE(scope.commit());
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStore, OfARowThatIsWrittenAsItWasAreNone)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
    ASSERT_TRUE(Execute(*store, "UPDATE ServerConfiguration SET alias = alias"_q));
    ExpectSeen({});
    RawStore(StorePath(), RawStore::KeepLog).Run("INSERT INTO Schedules (syncInterval) VALUES (1)"_q);
    ExpectSeen(Everything);
}

TEST_P(ChangesOfAStore, OfATableThatIsEmptiedAsAWholeNameIt)
{
    ASSERT_TRUE(Execute(*store, "DELETE FROM Schedules"_q)); // the default schedule
    ExpectSeen({"Schedules"_q});
    ASSERT_TRUE(Execute(*store, "DELETE FROM Schedules"_q));
    ExpectSeen({});
}

TEST_P(ChangesOfAStore, OfTemporaryTablesAreNone)
{
    ASSERT_TRUE(Execute(*store, "CREATE TEMP TABLE FileConfiguration (a)"_q));
    ASSERT_TRUE(Execute(*store, "INSERT INTO temp.FileConfiguration VALUES (1)"_q));
    ExpectSeen({});
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStore, DoNotNameTablesWhoseRemovedSecretsAreErased)
{
    std::thread([this] {
        EXPECT_TRUE(Execute(*store, "INSERT INTO ProductConfiguration (consumerSecret) VALUES ('s')"_q));
        EXPECT_TRUE(Execute(*store, "UPDATE ProductConfiguration SET consumerSecret = 't'"_q));
        EXPECT_EQ(Seen(*changes), QStringList{"ProductConfiguration"_q});
    }).join();
    ExpectSeen({});
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStore, OfAnotherProcessAreAllTables)
{
    ASSERT_EQ(OtherProgram(StorePath(), {"add"_q, "1"_q}).Wait(), 0);
    ExpectSeen(Everything);
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
    ASSERT_TRUE(AddServer(*store, "b"_q));
    ASSERT_EQ(OtherProgram(StorePath(), {"add-with-sqlite"_q, "1"_q}).Wait(), 0);
    EXPECT_TRUE(Seen(*changes).contains("FolderConfiguration"_q));
}

TEST_P(ChangesOfAStore, AreLookedForWithGrowingPausesUntilTheWriterHasEnded)
{
    RawStore other(StorePath(), RawStore::KeepLog);
    other.Run("BEGIN IMMEDIATE; INSERT INTO ServerConfiguration (alias) VALUES ('a')"_q);
    ASSERT_EQ(sqlite3_db_cacheflush(other.handle()), SQLITE_OK);
    EXPECT_TRUE(IsReadable(*changes));
    std::vector<int> pauses;
    for (int look = 0; look < 8; ++look) {
        StoreChanges::Sight const sight = changes->Look();
        EXPECT_EQ(sight.tables, QStringList());
        pauses.push_back(sight.pauseMsec.value_or(0));
    }
    EXPECT_EQ(pauses, (std::vector<int>{2, 4, 8, 16, 32, 64, 64, 64}));
    other.Run("COMMIT"_q);
    EXPECT_EQ(Seen(*changes), Everything);
}

TEST_P(ChangesOfAStore, OfWritersThatFollowOneAnotherAreSeenBeforeTheLastHasEnded)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    RawStore other(StorePath(), RawStore::KeepLog);
    other.Run("BEGIN IMMEDIATE"_q);
    StoreChanges::Sight const sight = changes->Look();
    EXPECT_EQ(sight.tables, Servers);
    EXPECT_NE(sight.pauseMsec, std::nullopt);
    other.Run("COMMIT"_q);
}

TEST_P(ChangesOfAStore, EndWhenTheFileIsRenamed)
{
    ASSERT_TRUE(QFile::rename(StorePath(), folder.filePath("away.db"_q)));
    EXPECT_TRUE(IsReadable(*changes));
    StoreChanges::Sight const sight = changes->Look();
    ASSERT_TRUE(sight.error);
    EXPECT_EQ(sight.error->kind, StoreErrorKind::Moved);
    EXPECT_TRUE(changes->Look().error);
    changes.reset();
}

TEST_P(ChangesOfAStore, EndWhenTheFileIsReplaced)
{
    QString const other = folder.filePath("other.db"_q);
    ASSERT_TRUE(store->Backup(other));
    Seen(*changes);
    ASSERT_EQ(::rename(QFile::encodeName(other).constData(), QFile::encodeName(StorePath()).constData()), 0);
    EXPECT_TRUE(IsReadable(*changes));
    StoreChanges::Sight const sight = changes->Look();
    ASSERT_TRUE(sight.error);
    EXPECT_EQ(sight.error->kind, StoreErrorKind::Moved);
    changes.reset();
}

TEST_P(ChangesOfAStore, AreNotThoseOfOtherFilesInTheFolder)
{
    QFile file(folder.filePath("other"_q));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("a"), 1);
    ASSERT_TRUE(file.remove());
    EXPECT_FALSE(IsReadable(*changes));
}

TEST_P(ChangesOfAStore, OutliveTheFactory)
{
    QString const path = StorePath();
    store.reset();
    ASSERT_EQ(OtherProgram(path, {"add"_q, "1"_q}).Wait(), 0);
    ExpectSeen(Everything);
}

TEST_P(ChangesOfAStore, AreNotGivenByAFactoryWhoseFileWasRenamed)
{
    changes.reset();
    ASSERT_TRUE(QFile::rename(StorePath(), folder.filePath("away.db"_q)));
    EXPECT_EQ(store->WatchChanges(), nullptr);
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

class ChangesOfAStoreWithALog : public ChangesOfAStore
{};
TANDRY_WITH_LOG_ONLY(ChangesOfAStoreWithALog);

TEST_P(ChangesOfAStoreWithALog, AreNotCheckpoints)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ExpectSeen(Servers);
    RawStore other(StorePath());
    EXPECT_EQ(sqlite3_wal_checkpoint_v2(other.handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr),
              SQLITE_OK);
    ExpectSeen({});
    ASSERT_TRUE(AddServer(*store, "b"_q)); // begins the log anew
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStoreWithALog, OfAStoreReadWithoutALogBeginWhenAnotherProgramOpensIt)
{
    ReopenForReading();
    ExpectSeen({});
    std::shared_ptr<SqliteDatabaseFactory> const writer = SqliteDatabaseFactory::Open(StorePath());
    ASSERT_NE(writer, nullptr);
    ASSERT_TRUE(AddServer(*writer, "a"_q));
    ExpectSeen(Everything);
    EXPECT_EQ(CountServers(*store), 1);
    ASSERT_TRUE(AddServer(*writer, "b"_q));
    ExpectSeen(Servers);
}

TEST_P(ChangesOfAStoreWithALog, OfAStoreReadWithoutALogAreFoundAfterTheOtherProgramHasClosedItToo)
{
    ReopenForReading();
    ASSERT_EQ(OtherProgram(StorePath(), {"add"_q, "1"_q}).Wait(), 0);
    ExpectSeen(Everything);
    ASSERT_EQ(OtherProgram(StorePath(), {"add"_q, "1"_q}).Wait(), 0);
    ExpectSeen(Everything);
    EXPECT_EQ(CountServers(*store), 2);
}

class ChangesOfThreads : public StoreFixture
{};

TEST_F(ChangesOfThreads, ThatWriteAtTheSameTimeNameExactlyTheirTables)
{
    constexpr int Rows = 100;
    std::unique_ptr<StoreChanges> const changes = store->WatchChanges();
    ASSERT_NE(changes, nullptr);
    std::atomic<int> writing{2};
    auto const write = [&](QString const& statement) {
        for (int row = 0; row < Rows; ++row)
            EXPECT_TRUE(Execute(*store, statement));
        --writing;
    };
    std::thread servers(write, "INSERT INTO ServerConfiguration (alias) VALUES ('a')"_q);
    std::thread schedules(write, "INSERT INTO Schedules (syncInterval) VALUES (1)"_q);
    QStringList seen;
    while (writing > 0)
        seen += changes->Look().tables;
    servers.join();
    schedules.join();
    seen += Seen(*changes);
    seen.removeDuplicates();
    seen.sort();
    EXPECT_EQ(seen, (QStringList{"Schedules"_q, "ServerConfiguration"_q}));
    EXPECT_EQ(CountServers(*store), Rows);
}

} // namespace

} // namespace store_changes_test
