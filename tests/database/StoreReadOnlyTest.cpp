#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/ChildProcess.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <csignal>

#include <sys/stat.h>

namespace {

using namespace tandry::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

/// A store with one server that was cleanly closed.
class StoreReadOnly : public EachJournalMode
{
protected:
    void SetUp() override
    {
        EachJournalMode::SetUp();
        ASSERT_TRUE(AddServer(*store, "first"_q));
        store.reset();
    }

    std::shared_ptr<SqliteDatabaseFactory> Reader()
    {
        OpenOptions options;
        options.mode = OpenMode::ReadOnly;
        QString error;
        std::shared_ptr<SqliteDatabaseFactory> reader = SqliteDatabaseFactory::Open(StorePath(), &error, options);
        EXPECT_NE(reader, nullptr) << error.toStdString();
        return reader;
    }

    /// Another program that opens the store, adds a row, and closes it or is killed.
    bool AnotherProgramAdds(bool crashes = false)
    {
        return OtherProgram(StorePath(), {crashes ? "add-and-crash"_q : "add"_q, "1"_q}).Wait() ==
               (crashes ? -SIGKILL : 0);
    }

    void ExpectNoNewFiles(QMap<QString, QByteArray> const& before) { EXPECT_EQ(FolderContents(folder.path()), before); }
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreReadOnly);

/// With a journal, readers keep writers out and writers keep readers out.
class StoreReadOnlyBesideWriters : public StoreReadOnly
{};

TANDRY_WITH_LOG_ONLY(StoreReadOnlyBesideWriters);

TEST_P(StoreReadOnly, ReadingChangesNoByteAndMakesNoFile)
{
    QMap<QString, QByteArray> const before = FolderContents(folder.path());
    auto reader = Reader();
    ExpectNoNewFiles(before);
    EXPECT_EQ(CountServers(*reader), 1);
    {
        auto const query = Prepared(*reader, "SELECT * FROM ServerConfiguration"_q);
        ASSERT_TRUE(query->exec());
        ASSERT_TRUE(query->next());
        ExpectNoNewFiles(before);
    }
    EXPECT_FALSE(reader->LastError());
    reader.reset();
    ExpectNoNewFiles(before);
}

TEST_P(StoreReadOnly, WritesAndTransactionsAreRefused)
{
    QMap<QString, QByteArray> const before = FolderContents(folder.path());
    auto const reader = Reader();
    EXPECT_FALSE(AddServer(*reader, "a"_q));
    EXPECT_EQ(reader->LastError()->code & 0xff, SQLITE_READONLY);
    EXPECT_TRUE(reader->LastError()->text.contains("reading only"_q));
    {
        TransactionalScope scope;
        EXPECT_FALSE(AddServer(*reader, "a"_q));
        EXPECT_TRUE(scope.commit()) << "there is nothing to make durable";
    }
    EXPECT_FALSE(reader->CreateDatabase()->transaction());
    EXPECT_FALSE(reader->CreateDatabase()->commit());
    EXPECT_FALSE(Execute(*reader, "CREATE TABLE a (b)"_q));
    EXPECT_EQ(CountServers(*reader), 1);
    ExpectNoNewFiles(before);
}

TEST_P(StoreReadOnly, WorksInAFolderWithoutTheRightToWrite)
{
    QByteArray const place = folder.path().toUtf8();
    ASSERT_EQ(::chmod(StorePath().toUtf8().constData(), 0444), 0);
    ASSERT_EQ(::chmod(place.constData(), 0555), 0);
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  auto const reader = Reader();
                  return reader != nullptr && CountServers(*reader) == 1 ? 0 : 1;
              }),
              0);
    ASSERT_EQ(::chmod(place.constData(), 0700), 0);
}

TEST_P(StoreReadOnly, SeesTheLastCommitOfALiveStoreAndChangesNothingOfIt)
{
    OpenStore();
    ASSERT_TRUE(AddServer(*store, "second"_q));
    QByteArray const file = ReadFile(StorePath());
    QByteArray const log = UsesLog() ? ReadFile(StorePath() + "-wal"_q) : QByteArray();
    auto reader = Reader();
    EXPECT_EQ(CountServers(*reader), 2);
    EXPECT_TRUE(ReadFile(StorePath()) == file);
    if (UsesLog()) {
        EXPECT_TRUE(ReadFile(StorePath() + "-wal"_q) == log);
    }
    ASSERT_TRUE(AddServer(*store, "third"_q));
    EXPECT_EQ(CountServers(*reader), 3);
    reader.reset();
    ASSERT_TRUE(AddServer(*store, "fourth"_q));
    EXPECT_EQ(CountServers(*store), 4);
}

TEST_P(StoreReadOnlyBesideWriters, SeesNoWriteThatIsNotCommitted)
{
    OpenStore();
    auto const reader = Reader();
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "second"_q));
        EXPECT_EQ(CountServers(*reader), 1);
    }
    EXPECT_EQ(CountServers(*reader), 2);
}

TEST_P(StoreReadOnly, SeesWhatOtherProgramsWriteWhileItIsOpen)
{
    auto const reader = Reader();
    for (int rows = 1; rows < 5; ++rows) {
        EXPECT_EQ(CountServers(*reader), rows);
        ASSERT_TRUE(AnotherProgramAdds());
    }
    EXPECT_FALSE(reader->LastError());
}

TEST_P(StoreReadOnly, SeesWhatAStoreOfTheSameProgramWritesLater)
{
    auto const reader = Reader();
    EXPECT_EQ(CountServers(*reader), 1);
    OpenStore();
    EXPECT_EQ(CountServers(*reader), 1);
    ASSERT_TRUE(AddServer(*store, "second"_q));
    EXPECT_EQ(CountServers(*reader), 2);
    store.reset();
    EXPECT_EQ(CountServers(*reader), 2);
    OpenStore();
    ASSERT_TRUE(AddServer(*store, "third"_q));
    EXPECT_EQ(CountServers(*reader), 3);
    EXPECT_FALSE(reader->LastError());
}

TEST_P(StoreReadOnly, ReadsWhatAKilledProgramLeftBehind)
{
    ASSERT_TRUE(AnotherProgramAdds(true));
    QByteArray const file = ReadFile(StorePath());
    QByteArray const log = UsesLog() ? ReadFile(StorePath() + "-wal"_q) : QByteArray();
    auto reader = Reader();
    EXPECT_EQ(CountServers(*reader), 2);
    reader.reset();
    EXPECT_TRUE(ReadFile(StorePath()) == file);
    if (UsesLog()) {
        EXPECT_TRUE(ReadFile(StorePath() + "-wal"_q) == log);
    }
}

TEST_P(StoreReadOnlyBesideWriters, ListingDuringWhichTheFileChangesIsNotTakenForWhole)
{
    OpenStore();
    ASSERT_TRUE(Execute(*store,
                        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                        "INSERT INTO ServerConfiguration (alias) SELECT hex(zeroblob(500)) FROM n"_q));
    store.reset();

    auto const reader = Reader();
    auto const query = Prepared(*reader, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    ASSERT_TRUE(AnotherProgramAdds());
    int rows = 1;
    while (query->next())
        ++rows;
    ASSERT_TRUE(reader->LastError());
    EXPECT_TRUE(reader->LastError()->text.contains("changed while it was being read"_q));
    query->finish();
    reader->ClearError();
    EXPECT_EQ(CountServers(*reader), 502) << "another try while the first query still stands";
    EXPECT_FALSE(reader->LastError());
}

TEST_P(StoreReadOnly, ClosingItTakesNoLocksFromAStoreOfTheSameProgram)
{
    auto reader = Reader();
    EXPECT_EQ(CountServers(*reader), 1);
    OpenStore();
    ASSERT_TRUE(AddServer(*store, "second"_q));
    auto query = UsesLog() ? nullptr : Prepared(*store, "SELECT * FROM ServerConfiguration"_q);
    if (query != nullptr) {
        ASSERT_TRUE(query->exec()); // with a journal only a running statement holds a lock
    }
    EXPECT_EQ(CountServers(*reader), 2);
    reader.reset();

    // Another program that could have the file to itself would do away with the log that this one still uses.
    EXPECT_NE(OtherProgram(StorePath(), {"take-over"_q}).Wait(), 0);
    query.reset();
    store.reset();
    EXPECT_EQ(OtherProgram(StorePath(), {"take-over"_q}).Wait(), 0) << "now it can";
}

} // namespace
