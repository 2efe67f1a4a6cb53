#include "models/AsyncManagers.h"

#include "database/TransactionalScope.h"
#include "support/FakeClock.h"
#include "support/FileRecords.h"
#include "support/FolderRecords.h"
#include "support/RecordingStore.h"
#include "support/StoreFixture.h"

#include <QEventLoop>
#include <QFile>
#include <QFutureWatcher>
#include <QThread>
#include <QTimer>

#include <gmock/gmock.h>

#include <functional>
#include <future>
#include <memory>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace async_managers_test {

namespace {

using namespace sync::config;
using namespace tandry::test;
using sync::database::OpenOptions;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using sync::database::TransactionalScope;
using sync::interf::FileConfigOrderByName;
using sync::models::Answer;
using sync::models::AsyncManagers;
using sync::models::FutureAnswer;
using testing::IsEmpty;
using testing::SizeIs;
using Pending = AsyncManagers::Pending;

FileConfiguration File(QString const& clientPath)
{
    FileConfiguration file;
    file.clientPath = clientPath;
    return file;
}

template <class T>
StoreErrorKind KindOf(Answer<T> const& answer)
{
    EXPECT_TRUE(answer.error) << "no error";
    return answer.error ? answer.error->kind : StoreErrorKind::OutcomeUnknown;
}

/// An operation that begins, and ends when the test says so.
class Gate
{
public:
    explicit Gate(AsyncManagers& managers)
        : passed(managers.Run([this](Managers const&) {
            _begun.set_value();
            _opening.get_future().wait();
            return true;
        }))
    {
        _begun.get_future().wait();
    }
    void Open() { _opening.set_value(); }

private:
    std::promise<void> _begun;
    std::promise<void> _opening;

public:
    FutureAnswer<bool> const passed;
};

class ManagersOnTheirOwnThread : public StoreFixture
{
protected:
    void SetUp() override { Start(); }

    void TearDown() override
    {
        managers.reset();
        StoreFixture::TearDown();
    }

    void Start(OpenOptions const& options = {})
    {
        managers.reset();
        OpenStore(options);
        managers.emplace(store);
    }

    /// The number of roots that were committed.
    qlonglong Roots() const { return RawStore(StorePath()).Count("FolderConfiguration"_q); }

    /// Runs the event loop until a future has its answer, and returns how often a timer of this thread fired meanwhile.
    /// At the hundredth time calls the function.
    template <class T>
    static int RunEventLoopUntil(FutureAnswer<T> const& future, std::function<void()> const& atTheHundredth = {})
    {
        QEventLoop loop;
        int ticks = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (++ticks == 100 && atTheHundredth)
                atTheHundredth();
        });
        timer.start(1);
        QFutureWatcher<Answer<T>> watcher;
        QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, [&] {
            EXPECT_EQ(QThread::currentThread(), loop.thread());
            loop.quit();
        });
        watcher.setFuture(future);
        loop.exec();
        return ticks;
    }

    std::optional<AsyncManagers> managers;
};

TEST_F(ManagersOnTheirOwnThread, GiveTheAddedRecordWithItsId)
{
    Answer<std::optional<FolderConfiguration>> const root = managers->folders.Add(Folder("/r"_q)).result();
    ASSERT_TRUE(root.value);
    EXPECT_GT(root.value->getId(), 0);
    EXPECT_EQ(root.value->getRootId(), root.value->getId());
    EXPECT_FALSE(root.error);

    FileConfiguration file = File("/r/f"_q);
    file.folderConfigurationId = root.value->getId();
    Answer<std::optional<FileConfiguration>> const added = managers->files.Add(file).result();
    ASSERT_TRUE(added.value);
    EXPECT_EQ(file.id, -1) << "the caller's record";
    Answer<FileConfiguration> const found = managers->files.GetFileConfigurationById(added.value->id).result();
    EXPECT_EQ(found.value.clientPath, "/r/f"_q);
    EXPECT_FALSE(found.error);
    EXPECT_THAT(
        managers->files.GetFileConfigurationsByFolderId(root.value->getId(), FileConfigOrderByName).result().value,
        SizeIs(1));
}

TEST_F(ManagersOnTheirOwnThread, GiveNothingForARecordThatTheManagerDoesNotTake)
{
    Answer<std::optional<FolderConfiguration>> const orphan = managers->folders.Add(Folder("/o"_q, -1)).result();
    EXPECT_FALSE(orphan.value);
    EXPECT_FALSE(orphan.error);
    Answer<std::optional<FileConfiguration>> const nameless = managers->files.Add(File({})).result();
    EXPECT_FALSE(nameless.value);
    EXPECT_FALSE(nameless.error);
}

TEST_F(ManagersOnTheirOwnThread, GiveTheServerFolderThatMatches)
{
    FolderConfiguration root = Folder("/r"_q);
    root.setServerPath("/Documents"_q);
    root.setAuthenticationId(3);
    managers->folders.Add(root);
    EXPECT_EQ(managers->folders.AncestorOrDescendantOfServerFolderExists("/documents/a"_q, 3).result().value,
              std::optional("/Documents"_q));
    EXPECT_EQ(managers->folders.AncestorOrDescendantOfServerFolderExists("/documents/a"_q, 4).result().value,
              std::nullopt);
}

TEST_F(ManagersOnTheirOwnThread, TellAMissFromAFailure)
{
    auto const unknownType = FileConfigurationType(9);
    FutureAnswer<FileConfiguration> const before = managers->files.GetFileConfigurationById(7);
    FutureAnswer<QVector<FileConfiguration>> const failing = managers->files.GetAll(unknownType);
    FutureAnswer<FolderConfiguration> const after = managers->folders.GetFolderConfigurationById(7);

    EXPECT_EQ(before.result().value.id, -1);
    EXPECT_FALSE(before.result().error);
    EXPECT_THAT(failing.result().value, IsEmpty());
    EXPECT_EQ(KindOf(failing.result()), StoreErrorKind::Refused);
    EXPECT_EQ(after.result().value.getId(), -1);
    EXPECT_FALSE(after.result().error) << "the next operation begins without one";
    EXPECT_FALSE(store->LastError()) << "of this thread";
}

TEST_F(ManagersOnTheirOwnThread, GiveFalseAndTheErrorIfAWriteFails)
{
    int const root = managers->folders.Add(Folder("/r"_q)).result().value.value().getId();
    RawStore other(StorePath());
    other.RefuseToDelete("FolderConfiguration"_q, "1"_q);
    Answer<bool> const removed = managers->folders.Remove(root).result();
    EXPECT_FALSE(removed.value);
    EXPECT_TRUE(removed.error);
    other.AllowToDelete();
    Answer<bool> const again = managers->folders.Remove(root).result();
    EXPECT_TRUE(again.value);
    EXPECT_FALSE(again.error);
}

TEST_F(ManagersOnTheirOwnThread, TurnAnExceptionIntoAnError)
{
    Answer<int> const thrown =
        managers->Run([](Managers const&) -> int { throw std::runtime_error("of the client"); }).result();
    EXPECT_EQ(thrown.value, 0);
    ASSERT_EQ(KindOf(thrown), StoreErrorKind::Other);
    EXPECT_EQ(thrown.error->text, "of the client"_q);
    EXPECT_TRUE(managers->Run([](Managers const&) { throw 1; }).result().error);
    EXPECT_FALSE(managers->folders.GetAll().result().error) << "the thread goes on";
}

TEST_F(ManagersOnTheirOwnThread, RunOperationsInTheOrderOfTheCalls)
{
    std::vector<int> order;
    Gate gate(*managers);
    for (int i = 0; i < 100; ++i)
        managers->Run([&order, i](Managers const&) { order.push_back(i); });
    gate.Open();
    managers->Close(Pending::Run);
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
}

TEST_F(ManagersOnTheirOwnThread, KeepTheOrderOfEachOfSeveralCallingThreads)
{
    constexpr int callers = 4;
    constexpr int calls = 50;
    std::vector<int> order[callers];
    std::vector<std::thread> threads;
    for (std::vector<int>& own : order) {
        threads.emplace_back([this, &own] {
            for (int call = 0; call < calls; ++call) {
                managers->folders.Add(Folder("/r"_q));
                managers->Run([&own, call](Managers const&) { own.push_back(call); });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    managers->Close(Pending::Run);
    EXPECT_EQ(Roots(), callers * calls);
    std::vector<int> expected(calls);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_THAT(order, testing::Each(expected));
}

TEST_F(ManagersOnTheirOwnThread, HaveAConnectionOfTheirOwn)
{
    Managers const own(store);
    ASSERT_TRUE(own.files->transaction());
    FileConfiguration file = File("/f"_q);
    ASSERT_TRUE(own.files->Add(file));
    EXPECT_EQ(managers->files.GetFileConfigurationById(file.id).result().value.id, -1) << "not committed yet";
    ASSERT_TRUE(own.files->commit());
    EXPECT_EQ(managers->files.GetFileConfigurationById(file.id).result().value.id, file.id);
}

TEST_F(ManagersOnTheirOwnThread, HaveCachedListingsOfTheirOwn)
{
    FakeClock const clock;
    EXPECT_THAT(managers->folders.GetAll().result().value, IsEmpty());
    Managers const own(store);
    FolderConfiguration root = Folder("/r"_q);
    ASSERT_TRUE(own.folders->Add(root));
    EXPECT_THAT(managers->folders.GetAll().result().value, IsEmpty());
    EXPECT_FALSE(managers->folders.ClearCaches().result().error);
    EXPECT_THAT(managers->folders.GetAll().result().value, SizeIs(1));
}

TEST_F(ManagersOnTheirOwnThread, WaitForALockWhileTheEventLoopGoesOn)
{
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    FutureAnswer<std::optional<FolderConfiguration>> const added = managers->folders.Add(Folder("/r"_q));
    int const ticks = RunEventLoopUntil(added, [&] {
        EXPECT_FALSE(added.isFinished()) << "while the store is locked";
        other.Run("COMMIT"_q);
    });
    EXPECT_GE(ticks, 100);
    EXPECT_TRUE(added.result().value);
    EXPECT_FALSE(added.result().error);
}

TEST_F(ManagersOnTheirOwnThread, GiveUpALockAfterFiveSecondsWhileTheEventLoopGoesOn)
{
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    FutureAnswer<std::optional<FolderConfiguration>> const added = managers->folders.Add(Folder("/r"_q));
    FutureAnswer<QVector<FolderConfiguration>> const listed = managers->folders.GetAll();
    EXPECT_GT(RunEventLoopUntil(added), 10);
    EXPECT_FALSE(added.result().value);
    EXPECT_EQ(KindOf(added.result()), StoreErrorKind::Locked);
    EXPECT_THAT(listed.result().value, IsEmpty());
    EXPECT_FALSE(listed.result().error);
}

TEST_F(ManagersOnTheirOwnThread, CommitAClientTransactionIfItsFunctionReturnsTrue)
{
    qlonglong rootsBefore = -1;
    Answer<bool> const committed = managers
                                       ->RunInTransaction([&](Managers const& own) {
                                           FolderConfiguration root = Folder("/r"_q);
                                           FileConfiguration file = File("/r/f"_q);
                                           bool const added = own.folders->Add(root) && own.files->Add(file);
                                           rootsBefore = Roots();
                                           return added;
                                       })
                                       .result();
    EXPECT_TRUE(committed.value);
    EXPECT_FALSE(committed.error);
    EXPECT_EQ(rootsBefore, 0);
    EXPECT_EQ(Roots(), 1);
    EXPECT_EQ(RawStore(StorePath()).Count("FileConfiguration"_q), 1);
}

TEST_F(ManagersOnTheirOwnThread, RollAClientTransactionBackIfItsFunctionReturnsFalse)
{
    Answer<bool> const rolledBack = managers
                                        ->RunInTransaction([](Managers const& own) {
                                            FolderConfiguration root = Folder("/r"_q);
                                            EXPECT_TRUE(own.folders->Add(root));
                                            EXPECT_THAT(own.folders->GetAllRootFolders(), SizeIs(1));
                                            return false;
                                        })
                                        .result();
    EXPECT_FALSE(rolledBack.value);
    EXPECT_FALSE(rolledBack.error);
    EXPECT_EQ(Roots(), 0);
    EXPECT_THAT(managers->folders.GetAllRootFolders().result().value, IsEmpty()) << "from the cache of the thread";
}

TEST_F(ManagersOnTheirOwnThread, RollAClientTransactionBackIfAnExceptionLeavesItsFunction)
{
    Answer<bool> const thrown = managers
                                    ->RunInTransaction([](Managers const& own) -> bool {
                                        FolderConfiguration root = Folder("/r"_q);
                                        EXPECT_TRUE(own.folders->Add(root));
                                        throw std::runtime_error("of the client");
                                    })
                                    .result();
    EXPECT_FALSE(thrown.value);
    EXPECT_EQ(KindOf(thrown), StoreErrorKind::Other);
    EXPECT_EQ(Roots(), 0);
    EXPECT_TRUE(managers->folders.Add(Folder("/r"_q)).result().value) << "no transaction is left open";
    EXPECT_EQ(Roots(), 1);
}

TEST_F(ManagersOnTheirOwnThread, RollBackWhatAnExceptionLeftInATransactionOfTheClientsOwn)
{
    Answer<void> const thrown = managers
                                    ->Run([](Managers const& own) {
                                        EXPECT_TRUE(own.files->transaction());
                                        FolderConfiguration root = Folder("/lost"_q);
                                        EXPECT_TRUE(own.folders->Add(root));
                                        throw std::runtime_error("of the client");
                                    })
                                    .result();
    EXPECT_EQ(KindOf(thrown), StoreErrorKind::Other);
    EXPECT_TRUE(managers->folders.Add(Folder("/r"_q)).result().value);
    EXPECT_EQ(Roots(), 1) << "the next operation is durable at once";
    EXPECT_THAT(managers->folders.GetAllRootFolders().result().value, SizeIs(1));
}

TEST_F(ManagersOnTheirOwnThread, TellThatAClientTransactionCannotBegin)
{
    OpenOptions options;
    options.busyTimeoutMsec = 1;
    Start(options);
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    Answer<bool> const refused = managers
                                     ->RunInTransaction([](Managers const&) {
                                         ADD_FAILURE() << "the function runs";
                                         return true;
                                     })
                                     .result();
    EXPECT_FALSE(refused.value);
    EXPECT_EQ(KindOf(refused), StoreErrorKind::Locked);
}

TEST_F(ManagersOnTheirOwnThread, TellThatTheCommitOfAClientTransactionFailed)
{
    QString const moved = folder.filePath("moved.db"_q);
    Answer<bool> const lost = managers
                                  ->RunInTransaction([&](Managers const& own) {
                                      FolderConfiguration root = Folder("/r"_q);
                                      EXPECT_TRUE(own.folders->Add(root));
                                      return QFile::rename(StorePath(), moved);
                                  })
                                  .result();
    EXPECT_FALSE(lost.value);
    EXPECT_EQ(KindOf(lost), StoreErrorKind::Moved);
}

TEST_F(ManagersOnTheirOwnThread, RunSeveralOperationsInAScope)
{
    Answer<qlonglong> const rootsInside = managers
                                              ->Run([this](Managers const& own) {
                                                  TransactionalScope const scope;
                                                  FolderConfiguration root = Folder("/r"_q);
                                                  EXPECT_TRUE(own.folders->Add(root));
                                                  return Roots();
                                              })
                                              .result();
    EXPECT_EQ(rootsInside.value, 0);
    EXPECT_EQ(Roots(), 1);
}

TEST_F(ManagersOnTheirOwnThread, CallTheOtherManagersToo)
{
    ServerConfiguration server;
    server.setAlias("a"_q);
    ASSERT_TRUE(Managers(store).servers->Add(server));
    EXPECT_EQ(managers->Call(&Managers::servers, &ServerConfigManager::GetServerConfigById, server.getId())
                  .result()
                  .value.getAlias(),
              "a"_q);
}

TEST_F(ManagersOnTheirOwnThread, LeaveOutAnOperationWhoseFutureWasCanceledBefore)
{
    Gate gate(*managers);
    FutureAnswer<std::optional<FolderConfiguration>> canceled = managers->folders.Add(Folder("/a"_q));
    FutureAnswer<std::optional<FolderConfiguration>> const next = managers->folders.Add(Folder("/b"_q));
    canceled.cancel();
    gate.Open();
    canceled.waitForFinished();
    EXPECT_EQ(canceled.resultCount(), 0);
    EXPECT_TRUE(next.result().value);
    EXPECT_EQ(Roots(), 1);
}

TEST_F(ManagersOnTheirOwnThread, RunPendingOperationsBeforeTheyClose)
{
    Gate gate(*managers);
    std::vector<FutureAnswer<std::optional<FolderConfiguration>>> pending;
    pending.reserve(10);
    for (int i = 0; i < 10; ++i)
        pending.push_back(managers->folders.Add(Folder("/%1"_q.arg(i))));
    std::thread opener([&] {
        while (!managers->folders.ClearCaches().isCanceled())
            std::this_thread::yield(); // until they are closed
        EXPECT_FALSE(pending.front().isFinished());
        gate.Open();
    });
    managers->Close(Pending::Run);
    for (auto const& future : pending) {
        ASSERT_TRUE(future.isFinished());
        EXPECT_TRUE(future.result().value);
    }
    opener.join();
    EXPECT_EQ(Roots(), 10);
}

TEST_F(ManagersOnTheirOwnThread, CancelPendingOperationsAndFinishTheRunningOneWhenToldTo)
{
    Gate gate(*managers);
    FutureAnswer<std::optional<FolderConfiguration>> const pending = managers->folders.Add(Folder("/r"_q));
    std::thread opener([&] {
        FutureAnswer<std::optional<FolderConfiguration>>(pending).waitForFinished();
        EXPECT_FALSE(gate.passed.isFinished());
        gate.Open();
    });
    managers->Close(Pending::Cancel);
    opener.join();
    EXPECT_TRUE(gate.passed.isFinished());
    EXPECT_FALSE(gate.passed.isCanceled());
    EXPECT_TRUE(gate.passed.result().value);

    EXPECT_TRUE(pending.isCanceled());
    ASSERT_EQ(pending.resultCount(), 1);
    EXPECT_FALSE(pending.result().value);
    EXPECT_EQ(KindOf(pending.result()), StoreErrorKind::Refused);
    EXPECT_EQ(Roots(), 0);
}

TEST_F(ManagersOnTheirOwnThread, CancelPendingOperationsWhenTheyAreDestroyed)
{
    Gate gate(*managers);
    FutureAnswer<std::optional<FolderConfiguration>> const pending = managers->folders.Add(Folder("/r"_q));
    std::thread opener([&] {
        FutureAnswer<std::optional<FolderConfiguration>>(pending).waitForFinished();
        gate.Open();
    });
    managers.reset();
    opener.join();
    EXPECT_TRUE(gate.passed.result().value);
    EXPECT_TRUE(pending.isCanceled());
    EXPECT_EQ(KindOf(pending.result()), StoreErrorKind::Refused);
    EXPECT_EQ(Roots(), 0);
}

TEST_F(ManagersOnTheirOwnThread, RunNothingAfterTheyClosed)
{
    managers->Close(Pending::Run);
    managers->Close(Pending::Cancel);
    FutureAnswer<std::optional<FolderConfiguration>> const late = managers->folders.Add(Folder("/r"_q));
    EXPECT_TRUE(late.isFinished());
    EXPECT_TRUE(late.isCanceled());
    EXPECT_EQ(KindOf(late.result()), StoreErrorKind::Refused);
    EXPECT_EQ(Roots(), 0);
}

TEST_F(ManagersOnTheirOwnThread, MayBeClosedByAnOperation)
{
    FutureAnswer<void> const closing = managers->Run([this](Managers const&) { managers->Close(Pending::Run); });
    FutureAnswer<void>(closing).waitForFinished();
    EXPECT_TRUE(managers->folders.GetAll().isCanceled());
}

TEST_F(ManagersOnTheirOwnThread, MayBeDestroyedByAnOperation)
{
    managers.reset();
    auto owned = std::make_unique<AsyncManagers>(store);
    std::weak_ptr<StoreFactory> const factory = store;
    store.reset();
    AsyncManagers& running = *owned;
    FutureAnswer<bool> const done = running.Run([owned = std::move(owned)](Managers const&) mutable {
        owned.reset();
        return true;
    });
    EXPECT_TRUE(done.result().value);
    while (!factory.expired()) // until the thread has ended
        std::this_thread::yield();
}

/// A store that records what reaches it.
class RecordingFactory : public StoreFactory
{
public:
    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override { return store.CreateDatabase(); }
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override { return store.CreateQuery(); }
    std::optional<StoreError> LastError() const override { return std::nullopt; }
    void ClearError() override {}

    RecordingStore store;
};

/// Expects that an operation runs the same statements with the same values as the manager's, and, if it counts or
/// tells something, returns the same.
template <class Manager, class Entries, class Operation>
void ExpectTheManagers(std::shared_ptr<Manager> Managers::*manager,
                       Entries const AsyncManagers::*entries,
                       Operation const& operation)
{
    auto const expected = std::make_shared<RecordingFactory>();
    auto const actual = std::make_shared<RecordingFactory>();
    Managers const direct(expected);
    AsyncManagers async(actual);
    auto const result = operation(*(direct.*manager));
    auto const future = operation(async.*entries);
    using Result = std::decay_t<decltype(result)>;
    if constexpr (std::is_arithmetic_v<Result> && std::is_same_v<decltype(future.result().value), Result>) {
        EXPECT_EQ(future.result().value, result);
    }
    async.Close(Pending::Run);

    std::vector<Execution> const& executions = actual->store.Executions();
    ASSERT_THAT(executions, testing::Not(IsEmpty()));
    EXPECT_EQ(actual->store.Statements(), expected->store.Statements());
    ASSERT_EQ(executions.size(), expected->store.Executions().size());
    for (std::size_t i = 0; i < executions.size(); ++i)
        EXPECT_EQ(executions[i].bindings, expected->store.Executions()[i].bindings);
}

template <class Operation>
void ExpectTheFolderManagers(Operation const& operation)
{
    ExpectTheManagers(&Managers::folders, &AsyncManagers::folders, operation);
}

template <class Operation>
void ExpectTheFileManagers(Operation const& operation)
{
    ExpectTheManagers(&Managers::files, &AsyncManagers::files, operation);
}

TEST(OperationsOnAnotherThread, AreThoseOfTheFolderManager)
{
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationById(7); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationByServerId("s"_q); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationByClientPath("/p"_q); });
    ExpectTheFolderManagers(
        [](auto& of) { return of.GetFolderConfigurationByClientPathAndAuthenticationId("/p"_q, 7); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationsByAuthenticationId(7); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationsByRootId(7); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationsOfNonExistingRootFolders(); });
    ExpectTheFolderManagers([](auto& of) { return of.GetAll(); });
    ExpectTheFolderManagers([](auto& of) { return of.GetAllRootFolders(); });
    ExpectTheFolderManagers([](auto& of) { return of.GetFolderConfigurationByParentId(7); });
    ExpectTheFolderManagers([](auto& of) { return of.IsInExistingClientFolder("/p"_q, 7, true); });
    ExpectTheFolderManagers([](auto& of) { return of.IsInExistingAuthentication(7); });
    ExpectTheFolderManagers([](auto& of) { return of.IsAnyFolderConfigOutOfSync(); });
    ExpectTheFolderManagers([](auto& of) { return of.GetRootFolderConfigurationCount(); });
    ExpectTheFolderManagers([](auto& of) { return of.Update(DistinctFolder()); });
    ExpectTheFolderManagers([](auto& of) {
        FolderConfiguration folder = DistinctFolder();
        return of.Add(folder);
    });
    ExpectTheFolderManagers([](auto& of) { return of.AddFolderAndParent("/p/q"_q, Folder("/p"_q)); });
    ExpectTheFolderManagers([](auto& of) { return of.Remove(7); });
    ExpectTheFolderManagers([](auto& of) { return of.RemoveFolderAndChildren(7); });
    ExpectTheFolderManagers([](auto& of) { return of.CleanRootFolder(7); });
}

TEST(OperationsOnAnotherThread, AreThoseOfTheFileManager)
{
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationById(7); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationByServerId("s"_q); });
    ExpectTheFileManagers([](auto& of) { return of.GetGeneratedFileConfigurationById(7); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationByClientPath("/p"_q); });
    ExpectTheFileManagers([](auto& of) { return of.GetAllFileConfigurationsByClientPath("/p"_q); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationsOfNonExistingRootFolders(); });
    ExpectTheFileManagers([](auto& of) { return of.GetGeneratedFileConfigurationByClientPath("/p"_q); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationByClientPathAndAuthenticationId("/p"_q, 7); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationByServerPathAndAuthenticationId("/p"_q, 7); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationsByFolderId(7, FileConfigOrderByName); });
    ExpectTheFileManagers(
        [](auto& of) { return of.GetFileConfigurationsByRootFolderId(7, FileConfigurationTypeGenerated); });
    ExpectTheFileManagers([](auto& of) { return of.GetFileConfigurationsByRootFolderId(7, FileConfigOrderByName); });
    ExpectTheFileManagers(
        [](auto& of) { return of.GetFileConfigurationsWithSyncOption(7, FileSyncOptionRepathRequired); });
    ExpectTheFileManagers(
        [](auto& of) { return of.GetGeneratedFileConfigurationsByRootFolderId(7, FileConfigOrderByName); });
    ExpectTheFileManagers(
        [](auto& of) { return of.GetFileConfigurationsByFolderIdAndSyncStatus(7, FileSyncStatusSyncing); });
    ExpectTheFileManagers([](auto& of) { return of.GetGeneratedFileConfigurationsByParentFileId(7); });
    ExpectTheFileManagers([](auto& of) { return of.GetAll(FileConfigurationTypeBase); });
    ExpectTheFileManagers([](auto& of) { return of.GetAll(); });
    ExpectTheFileManagers([](auto& of) {
        FileLink link;
        link.path = "l"_q;
        return of.GetFileConfiguration(link, "/p"_q);
    });
    ExpectTheFileManagers([](auto& of) { return of.Update(File("/p"_q)); });
    ExpectTheFileManagers([](auto& of) {
        FileConfiguration file = File("/p"_q);
        return of.Add(file);
    });
    ExpectTheFileManagers([](auto& of) { return of.UpdateSyncStatusFromSyncingToNotSynced(7); });
    ExpectTheFileManagers([](auto& of) { return of.RemoveFileConfigurationAndLinkedConfigurations(7); });
    ExpectTheFileManagers([](auto& of) { return of.RemoveGeneratedFileConfiguration(7); });
    ExpectTheFileManagers([](auto& of) { return of.RemoveByFolderConfigurationId(7); });
    ExpectTheFileManagers([](auto& of) { return of.RemoveByRootFolderId(7); });
    ExpectTheFileManagers([](auto& of) { return of.RemoveGeneratedFileConfigurationsByRootFolderId(7); });
    ExpectTheFileManagers([](auto& of) {
        return of.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(7, FileSyncStatusSyncing);
    });
}

} // namespace

} // namespace async_managers_test
