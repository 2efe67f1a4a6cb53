#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ServerConfigManager.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "reliability/WritingLoop.h"
#include "support/ChildProcess.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <atomic>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

using namespace tandry::test;
using namespace sync::config;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

/// Several threads and processes on one store.
class SharedStore : public EachJournalMode
{
protected:
    /// The busy timeout. With a journal, readers and writers wait for each other, and each of them for several flushes.
    int BusyTimeoutMsec() const { return UsesLog() ? 5'000 : 60'000; }

    void SetUp() override
    {
        OpenOptions options;
        options.journalMode = GetParam();
        options.busyTimeoutMsec = BusyTimeoutMsec();
        OpenStore(options);
    }

    /// Adds `count` servers, each durable on its own, and returns how many calls returned false.
    int AddServers(QString const& path, QString const& prefix, int count) const
    {
        OpenOptions options;
        options.busyTimeoutMsec = BusyTimeoutMsec();
        auto const other = SqliteDatabaseFactory::Open(path, nullptr, options);
        if (other == nullptr)
            return count;
        ServerConfigManager servers(other);
        int refused = 0;
        for (int row = 0; row < count; ++row) {
            ServerConfiguration server;
            server.setAlias(prefix + QString::number(row));
            refused += servers.Add(server) ? 0 : 1;
        }
        return refused;
    }

    /// Reopens the store so that a lock of another thread is an error immediately.
    void ReopenWithoutTimeout()
    {
        store.reset();
        OpenOptions options;
        options.busyTimeoutMsec = 0;
        OpenStore(options);
    }

    /// Opens the store a second time, as another program would.
    std::shared_ptr<SqliteDatabaseFactory> OpenOther(int busyTimeoutMsec) const
    {
        OpenOptions options;
        options.busyTimeoutMsec = busyTimeoutMsec;
        return SqliteDatabaseFactory::Open(StorePath(), nullptr, options);
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(SharedStore);

TEST_P(SharedStore, ThreadsWithOwnAndSharedManagersLoseNoWrite)
{
    constexpr int Threads = 8;
    int const rounds = UsesLog() ? 12 : 3;
    auto const sharedFolders = std::make_shared<FolderConfigManager>(store, nullptr);
    FileConfigManager sharedFiles(store, nullptr, sharedFolders);
    std::atomic<int> refused{0};

    auto const work = [&](int number) {
        auto const ownFolders = std::make_shared<FolderConfigManager>(store, nullptr);
        FileConfigManager ownFiles(store, nullptr, ownFolders);
        for (int round = 0; round < rounds; ++round) {
            FolderConfigManager& folders = round % 2 == 0 ? *sharedFolders : *ownFolders;
            FileConfigManager& files = round % 2 == 0 ? sharedFiles : ownFiles;
            QString const path = "/%1/%2"_q.arg(number).arg(round);

            FolderConfiguration root;
            root.setParentId(0);
            root.setClientPath(path);
            bool done = folders.Add(root) && folders.GetFolderConfigurationById(root.getId()).getClientPath() == path;
            if (number == 0)
                folders.ClearCaches();
            folders.GetAllRootFolders(); // may be outdated

            // Two files that are committed, and two that are rolled back.
            for (bool const keeps : {true, false}) {
                done = done && files.transaction();
                for (int file = 0; file < 2; ++file) {
                    FileConfiguration record;
                    record.clientPath = path + (keeps ? "/kept%1"_q : "/dropped%1"_q).arg(file);
                    record.folderConfigurationId = root.getId();
                    record.rootFolderId = root.getId();
                    done = done && files.Add(record);
                }
                done = (keeps ? files.commit() : files.rollback()) && done;
            }
            refused += done ? 0 : 1;
        }
        refused += store->LastError() ? 1 : 0;
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < Threads; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(refused, 0);
    RawStore raw(StorePath());
    EXPECT_EQ(raw.Count("FolderConfiguration"_q), Threads * rounds);
    EXPECT_EQ(raw.Value("SELECT count(*) FROM FolderConfiguration WHERE rootId = id"_q).toInt(), Threads * rounds);
    EXPECT_EQ(raw.Count("FileConfiguration"_q), 2 * Threads * rounds);
    EXPECT_EQ(raw.Value("SELECT count(*) FROM FileConfiguration WHERE clientPath LIKE '%dropped%'"_q).toInt(), 0);
    EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
}

TEST_P(SharedStore, CachedListingOfAnotherThreadDoesNotWaitForAScopeThatHasWritten)
{
    ReopenWithoutTimeout();
    FolderConfigManager folders(store, nullptr);
    FolderConfiguration root;
    root.setParentId(0);
    TransactionalScope const scope;
    ASSERT_TRUE(folders.Add(root)); // clears the cached listings before the scope ends
    std::thread([&] {
        EXPECT_EQ(folders.GetAllRootFolders().size(), 0);
        EXPECT_FALSE(store->LastError()) << store->LastError()->text.toStdString();
    }).join();
    ASSERT_TRUE(folders.Update(root)) << "the reader must have released its lock";
}

TEST_P(SharedStore, WritingProcessesLoseNothingAndAreNeverRefused)
{
    constexpr int Processes = 4;
    int const writes = SoakNumber("TANDRY_SOAK_WRITES", 100);
    QString const path = StorePath();
    store.reset(); // no store may be open when a process forks
    {
        std::vector<std::unique_ptr<ChildProcess>> processes;
        for (int number = 0; number < Processes; ++number)
            processes.push_back(std::make_unique<ChildProcess>(
                [&] { return AddServers(path, "process %1 row "_q.arg(number), writes) == 0 ? 0 : 1; }));
        for (auto const& process : processes)
            EXPECT_EQ(process->Wait(), 0);
    }
    OpenStore();
    RawStore raw(path);
    EXPECT_EQ(raw.Value("SELECT count(DISTINCT alias) FROM ServerConfiguration"_q).toInt(), Processes * writes);
    EXPECT_EQ(raw.Count("ServerConfiguration"_q), Processes * writes);
}

TEST_P(SharedStore, WriteDuringALongClientTransactionIsRefusedAsLocked)
{
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    ASSERT_TRUE(AddServer(*store, "held"_q));
    std::thread([&] {
        auto const other = OpenOther(50);
        ASSERT_NE(other, nullptr);
        ServerConfigManager servers(other);
        ServerConfiguration server;
        server.setAlias("refused"_q);
        EXPECT_FALSE(servers.Add(server));
        EXPECT_EQ(server.getId(), -1);
        ASSERT_TRUE(other->LastError());
        EXPECT_TRUE(other->LastError()->text.contains("locked"_q)) << other->LastError()->text.toStdString();
    }).join();
    ASSERT_TRUE(store->CreateDatabase()->commit());

    auto const other = OpenOther(50);
    EXPECT_TRUE(AddServer(*other, "accepted"_q));
    EXPECT_EQ(CountServers(*store), 2);
}

TEST_P(SharedStore, ReaderSeesTheLastCommitDuringAnOpenTransactionWithoutWaiting)
{
    if (!UsesLog())
        GTEST_SKIP() << "with a journal a reader waits for a writer";
    QString const path = StorePath();
    ASSERT_TRUE(AddServer(*store, "committed"_q));
    store.reset();

    // The writer is the child process, so that no store is open when it is forked.
    int toReader[2];
    int toWriter[2];
    ASSERT_EQ(pipe(toReader), 0);
    ASSERT_EQ(pipe(toWriter), 0);
    ChildProcess writer([&] {
        auto const other = SqliteDatabaseFactory::Open(path);
        char word = 'w';
        bool const done = other->CreateDatabase()->transaction() && AddServer(*other, "open"_q) &&
                          ::write(toReader[1], &word, 1) == 1 && ::read(toWriter[0], &word, 1) == 1 &&
                          other->CreateDatabase()->commit() && ::write(toReader[1], &word, 1) == 1;
        return done ? 0 : 1;
    });
    char word = 'r';
    ASSERT_EQ(::read(toReader[0], &word, 1), 1);
    auto const reader = OpenOther(0); // a lock is an error immediately
    ASSERT_NE(reader, nullptr);
    ServerConfigManager servers(reader);
    ASSERT_EQ(servers.GetAll().size(), 1u);
    EXPECT_EQ(servers.GetAll().front().getAlias(), "committed"_q);
    EXPECT_FALSE(reader->LastError());

    ASSERT_EQ(::write(toWriter[1], &word, 1), 1);
    ASSERT_EQ(::read(toReader[0], &word, 1), 1);
    EXPECT_EQ(servers.GetAll().size(), 2u);
    EXPECT_EQ(writer.Wait(), 0);
    for (int const descriptor : {toReader[0], toReader[1], toWriter[0], toWriter[1]})
        ::close(descriptor);
}

} // namespace
