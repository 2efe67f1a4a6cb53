#include "database/EngineMutex.h"

#include <array>
#include <new>
#include <thread>

#include <pthread.h>

/// The engine knows no more of it than its name.
struct sqlite3_mutex
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

namespace sync::database {

namespace {

/// Before a thread sleeps: some ten microseconds in all. Between two looks it waits twice as long each time, so that
/// those who wait don't slow down the one who holds the mutex.
constexpr int Looks = 24;
constexpr int MostPauses = 16;

/// More than the engine has.
std::array<sqlite3_mutex, 32> staticMutexes;
constexpr int FirstStatic = SQLITE_MUTEX_STATIC_MAIN;

void Pause() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

/// Where there is one processor only, nobody lets go of anything while another looks.
bool MayLook() noexcept
{
    static bool const may = std::thread::hardware_concurrency() > 1;
    return may;
}

int Initialize() noexcept
{
    return SQLITE_OK;
}

int End() noexcept
{
    return SQLITE_OK;
}

void MakeRecursive(sqlite3_mutex& made) noexcept
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&made.mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

sqlite3_mutex* Allocate(int kind) noexcept
{
    if (kind >= FirstStatic) {
        auto const place = static_cast<std::size_t>(kind - FirstStatic);
        return place < staticMutexes.size() ? &staticMutexes[place] : nullptr;
    }
    auto* const made = new (std::nothrow) sqlite3_mutex;
    if (made != nullptr && kind == SQLITE_MUTEX_RECURSIVE)
        MakeRecursive(*made);
    return made;
}

void Free(sqlite3_mutex* mutex) noexcept
{
    pthread_mutex_destroy(&mutex->mutex);
    delete mutex;
}

int Try(sqlite3_mutex* mutex) noexcept
{
    return pthread_mutex_trylock(&mutex->mutex) == 0 ? SQLITE_OK : SQLITE_BUSY;
}

void Enter(sqlite3_mutex* mutex) noexcept
{
    if (Try(mutex) == SQLITE_OK)
        return;
    int pauses = 1;
    for (int look = 0; MayLook() && look < Looks; ++look) {
        for (int pause = 0; pause < pauses; ++pause)
            Pause();
        if (Try(mutex) == SQLITE_OK)
            return;
        pauses = pauses < MostPauses ? 2 * pauses : MostPauses;
    }
    pthread_mutex_lock(&mutex->mutex);
}

void Leave(sqlite3_mutex* mutex) noexcept
{
    pthread_mutex_unlock(&mutex->mutex);
}

/// Asked by builds of the engine that check themselves, which take this for an answer.
int IsAsExpected(sqlite3_mutex*) noexcept
{
    return 1;
}

} // namespace

sqlite3_mutex_methods const& EngineMutexMethods() noexcept
{
    static sqlite3_mutex_methods const methods{
        &Initialize, &End, &Allocate, &Free, &Enter, &Try, &Leave, &IsAsExpected, &IsAsExpected};
    return methods;
}

} // namespace sync::database
