// Usage: loaded_library before|after LIBRARY...
//
// Loads the libraries before or after SQLite's first use and unloads them again. The process must stay as it was:
// SQLite with its configuration, signals, environment, folder, mask, threads and open files.

#include <sqlite3.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool Check(bool holds, std::string const& what)
{
    if (!holds)
        std::fprintf(stderr, "%s\n", what.c_str());
    return holds;
}

std::string Entries(char const* folder)
{
    std::string names;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        names += entry.path().filename().string() + ' ';
    return names;
}

/// Everything of a process that a library could change behind its back, in words.
std::string StateOfProcess()
{
    std::string state;
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_DFL)
            state += "signal " + std::to_string(number) + " is handled\n";
    }
    sigset_t blocked = {};
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < NSIG; ++number)
        state += sigismember(&blocked, number) == 1 ? "signal " + std::to_string(number) + " is blocked\n" : "";
    for (char** variable = environ; *variable != nullptr; ++variable)
        state += std::string("variable ") + *variable + '\n';
    mode_t const mask = ::umask(0);
    ::umask(mask);
    state += "mask " + std::to_string(mask) + '\n';
    state += "folder " + std::filesystem::current_path().string() + '\n';
    state += "threads " + Entries("/proc/self/task") + '\n';
    state += "files " + Entries("/proc/self/fd") + '\n';
    return state;
}

/// SQLite tells its configuration only before its first use.
std::string StateOfUnusedSqlite()
{
    std::string state;
    sqlite3_mutex_methods mutexes = {};
    state += "mutexes " + std::to_string(sqlite3_config(SQLITE_CONFIG_GETMUTEX, &mutexes));
    state += mutexes.xMutexAlloc == nullptr ? " unset\n" : " set\n";
    sqlite3_pcache_methods2 caches = {};
    state += "page caches " + std::to_string(sqlite3_config(SQLITE_CONFIG_GETPCACHE2, &caches));
    Dl_info origin = {};
    if (caches.xCreate != nullptr && dladdr(reinterpret_cast<void const*>(caches.xCreate), &origin) != 0)
        state += std::string(" of ") + origin.dli_fname;
    return state + '\n';
}

bool SqliteWorks(sqlite3* handle)
{
    return sqlite3_exec(
               handle, "CREATE TABLE IF NOT EXISTS t (a); INSERT INTO t VALUES (1)", nullptr, nullptr, nullptr) ==
           SQLITE_OK;
}

bool SqliteIsUsable()
{
    sqlite3* handle = nullptr;
    bool const works = sqlite3_open(":memory:", &handle) == SQLITE_OK && SqliteWorks(handle);
    bool good = Check(works, "SQLite does not work");
    good &= Check(sqlite3_memory_used() > 0, "SQLite has no memory statistics");
    good &= Check(std::strcmp(sqlite3_vfs_find(nullptr)->zName, "unix") == 0, "SQLite has another default VFS");
    sqlite3_close(handle);
    return good;
}

bool LoadAndUnload(std::vector<char const*> const& libraries)
{
    std::vector<void*> loaded;
    for (char const* library : libraries) {
        void* const handle = dlopen(library, RTLD_NOW);
        if (!Check(handle != nullptr, handle == nullptr ? dlerror() : ""))
            return false;
        loaded.push_back(handle);
    }
    for (void* const handle : loaded)
        dlclose(handle);
    return true;
}

bool RunBeforeFirstUse(std::vector<char const*> const& libraries)
{
    std::string const before = StateOfUnusedSqlite();
    if (!LoadAndUnload(libraries))
        return false;
    std::string const after = StateOfUnusedSqlite();
    bool const good = Check(after == before, "SQLite was\n" + before + "and is\n" + after);
    return SqliteIsUsable() && good;
}

bool RunAfterFirstUse(std::vector<char const*> const& libraries)
{
    sqlite3* handle = nullptr;
    if (!Check(sqlite3_open(":memory:", &handle) == SQLITE_OK && SqliteWorks(handle), "SQLite does not work"))
        return false;
    bool good = LoadAndUnload(libraries);
    good &= Check(SqliteWorks(handle), "the connection does not work any more");
    sqlite3_close(handle);
    return SqliteIsUsable() && good;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return EXIT_FAILURE;
    std::vector<char const*> const libraries(argv + 2, argv + argc);
    std::string const before = StateOfProcess();
    bool good = std::strcmp(argv[1], "before") == 0 ? RunBeforeFirstUse(libraries) : RunAfterFirstUse(libraries);
    std::string const after = StateOfProcess();
    good &= Check(after == before, "the process was\n" + before + "and is\n" + after);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
