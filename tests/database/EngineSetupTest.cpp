#include "support/ChildProcess.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <dlfcn.h>

namespace {

using namespace tandry::test;

using EngineSetup = StoreFixture;

TEST_F(EngineSetup, StatisticsOfMemoryAreOffWhereTheLibraryWasLoadedFirst)
{
    EXPECT_TRUE(Execute(*store, "SELECT * FROM ServerConfiguration"_q));
    EXPECT_EQ(sqlite3_memory_used(), 0);
}

struct FreeMutex
{
    void operator()(sqlite3_mutex* mutex) const { sqlite3_mutex_free(mutex); }
};
using Mutex = std::unique_ptr<sqlite3_mutex, FreeMutex>;

int TryOnAnotherThread(sqlite3_mutex* mutex)
{
    int code = 0;
    std::thread([&] {
        code = sqlite3_mutex_try(mutex);
        if (code == SQLITE_OK)
            sqlite3_mutex_leave(mutex);
    }).join();
    return code;
}

/// Which library the engine's mutexes come from. The engine tells only while it isn't in use.
QString OriginOfMutexes()
{
    sqlite3_mutex_methods methods = {};
    Dl_info origin = {};
    if (sqlite3_shutdown() != SQLITE_OK || sqlite3_config(SQLITE_CONFIG_GETMUTEX, &methods) != SQLITE_OK ||
        dladdr(reinterpret_cast<void const*>(methods.xMutexEnter), &origin) == 0)
        return {};
    return QString::fromLocal8Bit(origin.dli_fname);
}

TEST(EngineMutexThreads, LibrarysOwnMethodsAreTheEngines)
{
    EXPECT_EQ(InChildProcess([] { return OriginOfMutexes().contains("TandryDatabase"_q) ? 7 : 1; }), 7);
}

TEST(EngineMutexThreads, HeldMutexKeepsAnotherThreadOutUntilItIsLeft)
{
    for (int const kind : {SQLITE_MUTEX_FAST, SQLITE_MUTEX_RECURSIVE}) {
        Mutex const mutex(sqlite3_mutex_alloc(kind));
        ASSERT_NE(mutex, nullptr);
        sqlite3_mutex_enter(mutex.get());
        EXPECT_EQ(TryOnAnotherThread(mutex.get()), SQLITE_BUSY);
        sqlite3_mutex_leave(mutex.get());
        EXPECT_EQ(TryOnAnotherThread(mutex.get()), SQLITE_OK);
    }
}

TEST(EngineMutexThreads, RecursiveMutexIsFreeWhenItWasLeftAsOftenAsEntered)
{
    Mutex const mutex(sqlite3_mutex_alloc(SQLITE_MUTEX_RECURSIVE));
    sqlite3_mutex_enter(mutex.get());
    EXPECT_EQ(sqlite3_mutex_try(mutex.get()), SQLITE_OK);
    sqlite3_mutex_leave(mutex.get());
    EXPECT_EQ(TryOnAnotherThread(mutex.get()), SQLITE_BUSY);
    sqlite3_mutex_leave(mutex.get());
    EXPECT_EQ(TryOnAnotherThread(mutex.get()), SQLITE_OK);
}

TEST(EngineMutexThreads, StaticMutexIsTheSameEachTimeAndAnotherForEachKind)
{
    ASSERT_EQ(sqlite3_initialize(), SQLITE_OK);
    std::set<sqlite3_mutex*> mutexes;
    for (int kind = SQLITE_MUTEX_STATIC_MAIN; kind <= SQLITE_MUTEX_STATIC_VFS3; ++kind) {
        sqlite3_mutex* const mutex = sqlite3_mutex_alloc(kind);
        ASSERT_NE(mutex, nullptr);
        EXPECT_EQ(sqlite3_mutex_alloc(kind), mutex);
        EXPECT_TRUE(mutexes.insert(mutex).second);
    }
    EXPECT_EQ(sqlite3_mutex_alloc(1000), nullptr);
}

TEST(EngineMutexThreads, ManyThreadsAreInsideOneAfterTheOther)
{
    constexpr int Threads = 8;
    constexpr int Rounds = 2000;
    for (int const kind : {SQLITE_MUTEX_FAST, SQLITE_MUTEX_RECURSIVE, SQLITE_MUTEX_STATIC_APP1}) {
        sqlite3_mutex* const mutex = sqlite3_mutex_alloc(kind);
        Mutex const owner(kind < SQLITE_MUTEX_STATIC_MAIN ? mutex : nullptr);
        int count = 0; // guarded by the mutex alone
        std::vector<std::thread> threads;
        for (int thread = 0; thread < Threads; ++thread)
            threads.emplace_back([&, mayYield = thread % 2 == 0] {
                for (int round = 0; round < Rounds; ++round) {
                    sqlite3_mutex_enter(mutex);
                    int const before = count;
                    if (mayYield && round % 50 == 0)
                        std::this_thread::yield(); // so that the others have to sleep
                    count = before + 1;
                    sqlite3_mutex_leave(mutex);
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(count, Threads * Rounds);
    }
}

} // namespace
