#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/FaultyFiles.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QObject>

#include <atomic>
#include <set>
#include <thread>

namespace {

using namespace tandry::test;
using sync::database::TransactionalScope;

/// Every file operation of SQLite fails once, at each of its places in turn.
class StoreFaults : public EachJournalMode
{
protected:
    void TearDown() override { store.reset(); }

    /// A life of a store: scopes, a nested one, client transactions committed and rolled back, a second thread,
    /// listings. Notes the aliases that must be there afterwards and those that must not.
    void Work()
    {
        for (int number = 0; number < 3; ++number) {
            TransactionalScope const outer;
            Add(number);
            TransactionalScope const inner;
            Add(10 + number);
        }
        std::thread([this] {
            TransactionalScope const scope;
            Add(20);
        }).join();
        CountServers(*store);
        WorkInTransaction(30, true);
        WorkInTransaction(40, false);
        Add(50);
    }

    void Add(int number)
    {
        if (AddServer(*store, QString::number(number) + QString(2000, QLatin1Char('x'))))
            _written.insert(number);
    }

    void WorkInTransaction(int number, bool keeps)
    {
        auto const database = store->CreateDatabase();
        if (!database->transaction())
            return;
        bool const added = AddServer(*store, QString::number(number) + QString(2000, QLatin1Char('x')));
        bool const kept = keeps && database->commit();
        if (kept && added)
            _written.insert(number);
        if (!kept)
            _takenBack.insert(number);
        if (!keeps) {
            EXPECT_TRUE(database->rollback());
        }
    }

    std::set<int> Stored()
    {
        std::set<int> numbers;
        for (QVariant const& alias : Column(*store, "SELECT alias FROM ServerConfiguration"_q))
            numbers.insert(alias.toString().remove(QLatin1Char('x')).toInt());
        return numbers;
    }

    std::set<int> _written;
    std::set<int> _takenBack;
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreFaults);

TEST_P(StoreFaults, NoFaultLosesWhatWasAnsweredWithTrueInSilence)
{
    store.reset();
    int faults = 0;
    for (int const code : {SQLITE_IOERR, SQLITE_FULL, SQLITE_NOMEM}) {
        for (int n = 1;; ++n) {
            ASSERT_TRUE(QFile::remove(StorePath()));
            FaultyFiles files;
            SetUp();
            _written.clear();
            _takenBack.clear();
            std::atomic<bool> told{false};
            QObject::connect(
                store.get(),
                &sync::database::SqliteDatabaseFactory::CommitFailed,
                store.get(),
                [&] { told = true; },
                Qt::DirectConnection);
            files.Fail(n, code, code == SQLITE_IOERR ? AllOperations : AllThatNeedResources);
            Work();
            bool const hit = files.Recover();

            // The same factory works on once the fault has gone.
            EXPECT_TRUE(AddServer(*store, "99"_q)) << "fault " << n << " with code " << code;
            _written.insert(99);
            store->ClearError();
            EXPECT_EQ(QStringLiteral("ok"), Single(*store, "PRAGMA integrity_check"_q).toString());

            ReopenStore();
            std::set<int> const stored = Stored();
            if (!told) {
                for (int const number : _written)
                    EXPECT_EQ(stored.count(number), 1u) << number << " is lost by fault " << n << " with code " << code;
            }
            for (int const number : _takenBack)
                EXPECT_EQ(stored.count(number), 0u) << number << " is there after fault " << n << " with code " << code;
            store.reset();
            if (!hit)
                break;
            ++faults;
        }
    }
    EXPECT_GT(faults, 300);
}

/// SQLite calls a rollback a success though it could not delete its journal, and would lose the next commit.
class StoreWithLeftJournal : public StoreFaults
{
protected:
    void SetUp() override
    {
        StoreFaults::SetUp();
        ASSERT_TRUE(AddServer(*store, "before"_q));
    }

    void LeaveJournal()
    {
        auto const database = store->CreateDatabase();
        ASSERT_TRUE(database->transaction());
        ASSERT_TRUE(AddServer(*store, "taken back"_q));
        files.Fail(1, SQLITE_NOMEM, {FileOperation::Delete}, true);
        EXPECT_TRUE(database->rollback());
        EXPECT_TRUE(files.Recover());
        EXPECT_TRUE(QFile::exists(StorePath() + "-journal"_q)) << "or the test shows nothing";
    }

    void ExpectRefusal()
    {
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->code, SQLITE_ABORT_ROLLBACK);
        EXPECT_TRUE(store->LastError()->text.contains("prepared anew"_q));
        store->ClearError();
    }

    FaultyFiles files;
};

INSTANTIATE_TEST_SUITE_P(With,
                         StoreWithLeftJournal,
                         testing::Values(sync::database::JournalMode::Rollback),
                         NameOfJournalMode);

TEST_P(StoreWithLeftJournal, NextWriteIsKept)
{
    LeaveJournal();
    EXPECT_TRUE(AddServer(*store, "after"_q));
    EXPECT_FALSE(QFile::exists(StorePath() + "-journal"_q));
    ReopenStore();
    EXPECT_EQ(Column(*store, "SELECT alias FROM ServerConfiguration"_q),
              (std::vector<QVariant>{"before"_q, "after"_q}));
}

TEST_P(StoreWithLeftJournal, StatementsFromBeforeAreRefusedAndNewOnesWork)
{
    {
        auto const inserting = Prepared(*store, "INSERT INTO ServerConfiguration (alias) VALUES ('held')"_q);
        auto const reading = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
        LeaveJournal();
        EXPECT_FALSE(inserting->exec());
        ExpectRefusal();
        EXPECT_TRUE(AddServer(*store, "after"_q));
        EXPECT_FALSE(inserting->exec());
        ExpectRefusal();
        EXPECT_FALSE(reading->exec());
        ExpectRefusal();
        EXPECT_TRUE(inserting->prepare("INSERT INTO ServerConfiguration (alias) VALUES ('anew')"_q));
        EXPECT_TRUE(inserting->exec());
    }
    ReopenStore();
    EXPECT_EQ(Column(*store, "SELECT alias FROM ServerConfiguration"_q),
              (std::vector<QVariant>{"before"_q, "after"_q, "anew"_q}));
}

TEST_P(StoreWithLeftJournal, ListingThatIsBeingReadEndsWithAnError)
{
    ASSERT_TRUE(AddServer(*store, "second"_q));
    {
        auto const listing = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
        ASSERT_TRUE(listing->exec() && listing->next());
        LeaveJournal();
        EXPECT_FALSE(listing->next());
        ExpectRefusal();
        EXPECT_TRUE(AddServer(*store, "after"_q)) << "its lock has gone with it";
    }
    EXPECT_EQ(CountServers(*store), 3);
}

TEST_P(StoreWithLeftJournal, AnothersJournalSpoilsNoStatement)
{
    sync::database::OpenOptions options;
    options.busyTimeoutMsec = 0;
    store.reset();
    OpenStore(options);
    auto const inserting = Prepared(*store, "INSERT INTO ServerConfiguration (alias) VALUES ('held')"_q);
    {
        RawStore another(StorePath());
        another.Run("BEGIN IMMEDIATE; INSERT INTO ServerConfiguration (alias) VALUES ('other')"_q);
        ASSERT_TRUE(QFile::exists(StorePath() + "-journal"_q)) << "or the test shows nothing";
        EXPECT_FALSE(inserting->exec());
        store->ClearError();
        another.Run("COMMIT"_q);
    }
    EXPECT_TRUE(inserting->exec());
    EXPECT_EQ(CountServers(*store), 3);
}

TEST_P(StoreFaults, DamageAnywhereEndsInAnAnswer)
{
    ASSERT_TRUE(Execute(*store,
                        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300) "
                        "INSERT INTO FolderConfiguration (name, clientPath, parentId) "
                        "SELECT hex(zeroblob(i)), '/home/' || i, i % 7 FROM n"_q));
    store.reset();
    QFile file(StorePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray const good = file.readAll();
    file.close();

    unsigned random = 1; // always the same places
    int refused = 0;
    int told = 0;
    for (int round = 0; round < 150; ++round) {
        QByteArray bad = good;
        for (int flip = 0; flip < 20; ++flip) {
            random = random * 1664525u + 1013904223u;
            bad[static_cast<int>((random >> 8) % static_cast<unsigned>(bad.size()))] = static_cast<char>(random >> 3);
        }
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bad), bad.size());
        file.close();

        store = sync::database::SqliteDatabaseFactory::Open(StorePath());
        if (store == nullptr) {
            ++refused;
            continue;
        }
        Column(*store, "SELECT * FROM FolderConfiguration"_q);
        Column(*store, "SELECT * FROM FolderConfiguration WHERE parentId = 3 ORDER BY name"_q);
        Execute(*store, "UPDATE FolderConfiguration SET name = 'a' WHERE parentId = 5"_q);
        AddServer(*store, "a"_q);
        Execute(*store, "DELETE FROM FolderConfiguration WHERE clientPath = '/home/7'"_q);
        told += store->LastError() ? 1 : 0;
        store.reset();
        ASSERT_TRUE(QFile::exists(StorePath()));
        QFile::remove(StorePath() + "-journal"_q);
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(told, 0);
}

} // namespace
