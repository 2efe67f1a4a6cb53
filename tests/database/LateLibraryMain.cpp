// Uses the engine, loads the library given as argument after that, and uses the engine on: it must be as it was.

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

namespace {

bool Fails(char const* what)
{
    std::fprintf(stderr, "%s\n", what);
    return false;
}

bool Works(sqlite3* handle)
{
    return sqlite3_exec(
               handle, "CREATE TABLE IF NOT EXISTS t (a); INSERT INTO t VALUES (1)", nullptr, nullptr, nullptr) ==
           SQLITE_OK;
}

bool Run(char const* library)
{
    sqlite3* before = nullptr;
    sqlite3* after = nullptr;
    if (sqlite3_open(":memory:", &before) != SQLITE_OK || !Works(before))
        return Fails("the engine doesn't work");
    if (dlopen(library, RTLD_NOW) == nullptr)
        return Fails(dlerror());
    if (sqlite3_memory_used() == 0)
        return Fails("the statistics of memory got lost");
    if (sqlite3_open(":memory:", &after) != SQLITE_OK || !Works(before) || !Works(after))
        return Fails("the engine doesn't work any more");
    sqlite3_close(before);
    sqlite3_close(after);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    return argc == 2 && Run(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
