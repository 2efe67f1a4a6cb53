#include "models/StoreWatcher.h"

#include "database/StoreChanges.h"
#include "database/StoreFactory.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <QThread>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreChanges;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using sync::models::StoreWatcher;

QStringList const Servers{"ServerConfiguration"_q};
constexpr int LongEnoughMsec = 60000;

class AStoreWatcher : public EachJournalMode
{
protected:
    void SetUp() override
    {
        EachJournalMode::SetUp();
        watcher.emplace(store);
        ASSERT_TRUE(watcher->isWatching());
        changed.emplace(&*watcher, &StoreWatcher::Changed);
        stopped.emplace(&*watcher, &StoreWatcher::Stopped);
    }

    QStringList NextTables()
    {
        if (changed->isEmpty() && !changed->wait(LongEnoughMsec)) {
            ADD_FAILURE() << "no signal";
            return {};
        }
        return changed->takeFirst().constFirst().toStringList();
    }

    /// Waits until a commit to another table is told of, and expects that nothing was before.
    void ExpectNoSignalBeforeTheNextCommit()
    {
        ASSERT_TRUE(Execute(*store, "INSERT INTO Schedules (syncInterval) VALUES (1)"_q));
        EXPECT_EQ(NextTables(), QStringList{"Schedules"_q});
    }

    std::optional<StoreWatcher> watcher;
    std::optional<QSignalSpy> changed;
    std::optional<QSignalSpy> stopped;
};
TANDRY_IN_EACH_JOURNAL_MODE(AStoreWatcher);

TEST_P(AStoreWatcher, TellsOfACommitOfItsOwnThread)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    EXPECT_TRUE(changed->isEmpty()) << "before the event loop runs";
    EXPECT_EQ(NextTables(), Servers);
    ExpectNoSignalBeforeTheNextCommit();
}

TEST_P(AStoreWatcher, TellsOfACommitOfAnotherThread)
{
    std::thread writer([this] { EXPECT_TRUE(AddServer(*store, "a"_q)); });
    EXPECT_EQ(NextTables(), Servers);
    writer.join();
}

TEST_P(AStoreWatcher, TellsOfACommitOfAnotherProcess)
{
    OtherProgram program(StorePath(), {"add"_q, "1"_q});
    EXPECT_TRUE(NextTables().contains("ServerConfiguration"_q));
    EXPECT_EQ(CountServers(*store), 1) << "the slot finds the row";
    EXPECT_EQ(program.Wait(), 0);
}

TEST_P(AStoreWatcher, TellsOfCommitsThatFollowOneAnotherOnce)
{
    for (int row = 0; row < 50; ++row)
        ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(Execute(*store, "INSERT INTO FolderConfiguration (name) VALUES ('f')"_q));
    EXPECT_EQ(NextTables(), (QStringList{"ServerConfiguration"_q, "FolderConfiguration"_q}));
    ExpectNoSignalBeforeTheNextCommit();
}

TEST_P(AStoreWatcher, LetsASlotWriteAndTellsOfThatToo)
{
    QObject::connect(&*watcher, &StoreWatcher::Changed, [this](QStringList const& tables) {
        if (tables == Servers) {
            EXPECT_TRUE(Execute(*store, "INSERT INTO Schedules (syncInterval) VALUES (1)"_q));
        }
    });
    ASSERT_TRUE(AddServer(*store, "a"_q));
    EXPECT_EQ(NextTables(), Servers);
    EXPECT_EQ(NextTables(), QStringList{"Schedules"_q});
}

TEST_P(AStoreWatcher, StopsWhenTheStoreIsReplacedAndSaysSoOnce)
{
    QString const other = folder.filePath("other.db"_q);
    ASSERT_TRUE(store->Backup(other));
    ASSERT_EQ(::rename(QFile::encodeName(other).constData(), QFile::encodeName(StorePath()).constData()), 0);
    ASSERT_TRUE(stopped->wait(LongEnoughMsec));
    EXPECT_EQ(stopped->constFirst().constFirst().value<StoreError>().kind, StoreErrorKind::Moved);
    EXPECT_FALSE(watcher->isWatching());
    QCoreApplication::processEvents();
    EXPECT_EQ(stopped->count(), 1);
    EXPECT_TRUE(changed->isEmpty());

    std::shared_ptr<SqliteDatabaseFactory> const reopened = SqliteDatabaseFactory::Open(StorePath());
    ASSERT_NE(reopened, nullptr);
    StoreWatcher const next(reopened);
    EXPECT_TRUE(next.isWatching());
}

TEST_P(AStoreWatcher, MayBeDestroyedInASlot)
{
    auto const another = std::make_unique<std::unique_ptr<StoreWatcher>>(std::make_unique<StoreWatcher>(store));
    QObject::connect(another->get(), &StoreWatcher::Changed, [&another] { another->reset(); });
    ASSERT_TRUE(AddServer(*store, "a"_q));
    EXPECT_EQ(NextTables(), Servers);
    while (*another != nullptr)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST_P(AStoreWatcher, KeepsItsFactory)
{
    std::weak_ptr<SqliteDatabaseFactory> const kept = store;
    store.reset();
    EXPECT_FALSE(kept.expired());
    ASSERT_TRUE(AddServer(*kept.lock(), "a"_q));
    EXPECT_EQ(NextTables(), Servers);
    changed.reset();
    stopped.reset();
    watcher.reset();
    EXPECT_TRUE(kept.expired());
}

TEST_P(AStoreWatcher, WorksOnTheThreadThatItWasMovedTo)
{
    QThread thread;
    std::promise<std::pair<QStringList, QThread*>> told;
    auto* const moved = new StoreWatcher(store);
    QObject::connect(&thread, &QThread::finished, moved, &QObject::deleteLater);
    QObject::connect(moved, &StoreWatcher::Changed, [&told](QStringList const& tables) {
        told.set_value({tables, QThread::currentThread()});
    });
    moved->moveToThread(&thread);
    thread.start();
    ASSERT_TRUE(AddServer(*store, "a"_q));
    auto const [tables, slotThread] = told.get_future().get();
    EXPECT_EQ(tables, Servers);
    EXPECT_EQ(slotThread, &thread);
    thread.quit();
    EXPECT_TRUE(thread.wait());
}

/// A store that has nothing but what `StoreFactory` has.
class SilentFactory : public StoreFactory
{
public:
    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override { return nullptr; }
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override { return nullptr; }
    std::optional<StoreError> LastError() const override { return std::nullopt; }
    void ClearError() override {}
};

TEST(AStoreWatcherOfAnotherStore, WatchesNothingIfTheStoreDoesNotTell)
{
    StoreWatcher const watcher(std::make_shared<SilentFactory>());
    EXPECT_FALSE(watcher.isWatching());
}

/// Changes that a test makes: a pipe is the descriptor.
class ToldFactory : public SilentFactory
{
public:
    struct Changes : StoreChanges
    {
        ToldFactory& factory;
        explicit Changes(ToldFactory& told)
            : factory(told)
        {}
        int descriptor() const override { return factory.pipe[0]; }
        Sight Look() override
        {
            char byte = 0;
            EXPECT_EQ(::read(factory.pipe[0], &byte, 1), 1);
            return factory.next;
        }
    };

    ToldFactory() { EXPECT_EQ(::pipe(pipe), 0); }
    ~ToldFactory() override
    {
        ::close(pipe[0]);
        ::close(pipe[1]);
    }
    std::unique_ptr<StoreChanges> WatchChanges() override { return std::make_unique<Changes>(*this); }

    int pipe[2] = {-1, -1};
    StoreChanges::Sight next;
};

TEST(AStoreWatcherOfAnotherStore, TellsWhatTheStoreTells)
{
    auto const factory = std::make_shared<ToldFactory>();
    StoreWatcher const watcher(factory);
    QSignalSpy changed(&watcher, &StoreWatcher::Changed);
    factory->next.tables = QStringList{"Elsewhere"_q};
    ASSERT_EQ(::write(factory->pipe[1], "a", 1), 1);
    ASSERT_TRUE(changed.wait(LongEnoughMsec));
    EXPECT_EQ(changed.takeFirst().constFirst().toStringList(), QStringList{"Elsewhere"_q});
}

} // namespace
