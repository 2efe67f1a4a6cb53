#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QDir>
#include <QFileInfo>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace tandry::test;
using sync::database::TransactionalScope;

/// "Thread" in the name runs these under the thread sanitizer too.
class StoreThreads : public EachJournalMode
{
protected:
    static void InThreads(int count, std::function<void(int)> const& function)
    {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < count; ++thread)
            threads.emplace_back(function, thread);
        for (std::thread& thread : threads)
            thread.join();
    }

    /// How often this process has the store's file open.
    int OpenFiles() const
    {
        int count = 0;
        QDir const descriptors("/proc/self/fd"_q);
        for (QString const& descriptor : descriptors.entryList(QDir::Files | QDir::System))
            count += QFileInfo(descriptors.filePath(descriptor)).symLinkTarget() == StorePath() ? 1 : 0;
        return count;
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreThreads);

TEST_P(StoreThreads, WritesOfManyThreadsAreAllThere)
{
    constexpr int Threads = 8;
    constexpr int Rows = 20;
    std::atomic<int> failures{0};
    InThreads(Threads, [&](int thread) {
        for (int row = 0; row < Rows; ++row) {
            TransactionalScope const scope;
            QString const alias = QString::number(thread * Rows + row);
            if (!AddServer(*store, alias) || !AddServer(*store, alias))
                ++failures;
        }
        if (store->LastError())
            ++failures;
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountServers(*store), 2 * Threads * Rows);
    EXPECT_EQ(Single(*store, "SELECT count(DISTINCT alias) FROM ServerConfiguration"_q).toInt(), Threads * Rows);
}

TEST_P(StoreThreads, NobodyStarvesBesideThreadsAndProgramsThatWriteInALoop)
{
    constexpr int Writers = 4;
    constexpr int Rows = 60;
    std::vector<std::unique_ptr<OtherProgram>> programs;
    for (int writer = 0; writer < Writers; ++writer)
        programs.push_back(std::make_unique<OtherProgram>(StorePath(), QStringList{"add"_q, QString::number(Rows)}));
    std::atomic<int> failures{0};
    InThreads(Writers, [&](int) {
        for (int row = 0; row < Rows; ++row) {
            TransactionalScope const scope;
            if (!AddServer(*store, "a"_q))
                ++failures;
        }
    });
    for (auto const& program : programs)
        failures += program->Wait();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountServers(*store), 2 * Writers * Rows);
}

TEST_P(StoreThreads, ReadersSeeWholeScopesOnly)
{
    std::atomic<bool> done{false};
    std::atomic<int> odd{0};
    std::thread reader([&] {
        while (!done) {
            if (CountServers(*store) % 2 != 0)
                ++odd;
        }
    });
    for (int row = 0; row < 50; ++row) {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "a"_q));
        ASSERT_TRUE(AddServer(*store, "b"_q));
    }
    done = true;
    reader.join();
    EXPECT_EQ(odd, 0);
}

TEST_P(StoreThreads, TransactionsOfThreadsTakeTurns)
{
    std::atomic<int> failures{0};
    InThreads(4, [&](int) {
        for (int transaction = 0; transaction < 5; ++transaction) {
            bool const keeps = transaction % 2 == 0;
            if (!store->CreateDatabase()->transaction() || !AddServer(*store, "a"_q) || !AddServer(*store, "b"_q) ||
                !(keeps ? store->CreateDatabase()->commit() : store->CreateDatabase()->rollback()))
                ++failures;
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountServers(*store), 4 * 3 * 2);
}

TEST_P(StoreThreads, ConnectionIsClosedWhenItsThreadEnds)
{
    int const before = OpenFiles();
    ASSERT_GE(before, 1);
    std::thread([&] {
        ASSERT_TRUE(AddServer(*store, "a"_q));
        EXPECT_EQ(OpenFiles(), before + 1);
    }).join();
    // SQLite closes a descriptor only once no connection of the process has a lock.
    ASSERT_EQ(CountServers(*store), 1);
    for (int thread = 0; thread < 20; ++thread)
        std::thread([&] { ASSERT_EQ(CountServers(*store), 1); }).join();
    EXPECT_LE(OpenFiles(), before + 2) << "and the connections of 20 threads don't pile up";
}

TEST_P(StoreThreads, ConnectionsOfAllThreadsAreClosedWhenTheFactoryGoes)
{
    std::promise<void> written;
    std::promise<void> gone;
    std::thread thread([&] {
        EXPECT_TRUE(AddServer(*store, "a"_q));
        written.set_value();
        gone.get_future().wait();
        EXPECT_EQ(OpenFiles(), 0);
    });
    written.get_future().wait();
    store.reset();
    EXPECT_EQ(OpenFiles(), 0);
    gone.set_value();
    thread.join();
    EXPECT_EQ(RawStore(StorePath()).Count("ServerConfiguration"_q), 1);
}

TEST_P(StoreThreads, QueryOfAnotherThreadIsRefused)
{
    auto const query = Prepared(*store, "SELECT 1"_q);
    auto const database = store->CreateDatabase();
    std::thread([&] {
        EXPECT_FALSE(query->exec());
        EXPECT_TRUE(query->lastError().contains("thread"_q)) << query->lastError().toStdString();
        EXPECT_FALSE(database->transaction());
    }).join();
    store->ClearError();
    EXPECT_TRUE(query->exec());
}

TEST_P(StoreThreads, QueryThatOutlivesItsThreadAndTheFactoryIsReleasedWithoutHarm)
{
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> query;
    std::thread([&] {
        ASSERT_TRUE(AddServer(*store, "a"_q));
        query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
        EXPECT_TRUE(query->exec());
    }).join();
    EXPECT_FALSE(query->exec());
    store.reset();
    EXPECT_FALSE(query->exec());
    query.reset();
    EXPECT_EQ(OpenFiles(), 0);
}

TEST_P(StoreThreads, FactoriesOfOneFileDontDisturbOneAnother)
{
    std::atomic<int> failures{0};
    InThreads(4, [&](int) {
        for (int time = 0; time < 5; ++time) {
            auto const own = sync::database::SqliteDatabaseFactory::Open(StorePath());
            if (own == nullptr || !AddServer(*own, "a"_q) || !AddServer(*store, "b"_q))
                ++failures;
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountServers(*store), 4 * 5 * 2);
}

} // namespace
