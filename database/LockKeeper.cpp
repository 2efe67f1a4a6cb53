#include "database/LockKeeper.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace sync::database {

namespace {

struct LockedFile
{
    FileIdentity file;
    int connections = 0;
    std::vector<SqliteHandle> waiting;
};

struct LockedFiles
{
    std::mutex mutex;
    std::vector<LockedFile> files;

    auto Find(FileIdentity const& file)
    {
        return std::find_if(files.begin(), files.end(), [&](LockedFile const& locked) { return locked.file == file; });
    }
};

/// Never destroyed: a factory may outlast everything that goes at the program's end.
LockedFiles& Files()
{
    static LockedFiles& files = *new LockedFiles;
    return files;
}

} // namespace

LockKeeper::LockKeeper(FileIdentity const& file)
    : _file(file)
{
    LockedFiles& locked = Files();
    std::lock_guard<std::mutex> const lock(locked.mutex);
    auto found = locked.Find(file);
    if (found == locked.files.end())
        found = locked.files.insert(found, LockedFile{file, 0, {}});
    ++found->connections;
}

LockKeeper::~LockKeeper()
{
    LockedFiles& locked = Files();
    std::lock_guard<std::mutex> const lock(locked.mutex); // handles close inside it, ahead of the next connection
    auto const found = locked.Find(_file);
    if (--found->connections == 0)
        locked.files.erase(found);
}

void LockKeeper::Close(FileIdentity const& file, SqliteHandle handle)
{
    LockedFiles& locked = Files();
    std::lock_guard<std::mutex> const lock(locked.mutex);
    auto const found = locked.Find(file);
    if (found != locked.files.end())
        found->waiting.push_back(std::move(handle));
    else
        handle.reset();
}

} // namespace sync::database
