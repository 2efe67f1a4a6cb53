#include "support/FaultyFiles.h"

#include "support/UnflushedWrites.h"

#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <set>
#include <utility>

#include <sys/stat.h>

namespace tandry::test {

namespace {

/// The planned failure and the state of the plan.
struct Plan
{
    std::mutex mutex;
    std::set<FileOperation> operations;
    int failAt = 0;
    int code = SQLITE_OK;
    bool forGood = false;
    int count = 0;
    bool hit = false;
    std::function<void()> watcher;
    bool limited = false;
    qint64 room = 0;
    bool sharedMemory = true;
    UnflushedWrites* told = nullptr;
};

Plan& ThePlan()
{
    static Plan plan;
    return plan;
}

/// The code that SQLite's own file system gives for an I/O error.
int IoErrorOf(FileOperation operation)
{
    switch (operation) {
    case FileOperation::Open:
        return SQLITE_CANTOPEN;
    case FileOperation::Read:
        return SQLITE_IOERR_READ;
    case FileOperation::Write:
        return SQLITE_IOERR_WRITE;
    case FileOperation::Truncate:
        return SQLITE_IOERR_TRUNCATE;
    case FileOperation::Sync:
        return SQLITE_IOERR_FSYNC;
    case FileOperation::Delete:
        return SQLITE_IOERR_DELETE;
    case FileOperation::FlushFolder:
        return SQLITE_IOERR_DIR_FSYNC;
    case FileOperation::Lock:
        return SQLITE_IOERR_LOCK;
    case FileOperation::Unlock:
        return SQLITE_IOERR_UNLOCK;
    case FileOperation::MapMemory:
        return SQLITE_IOERR_SHMMAP;
    }
    return SQLITE_IOERR;
}

/// The planned code as that file system would give it: whatever keeps these operations from their end, a full disk
/// included, is an I/O error to it.
int CodeOf(FileOperation operation, int planned)
{
    bool const hasOneCode = operation == FileOperation::Sync || operation == FileOperation::FlushFolder ||
                            operation == FileOperation::Unlock;
    return planned == SQLITE_IOERR || (hasOneCode && planned != SQLITE_OK) ? IoErrorOf(operation) : planned;
}

int Ask(FileOperation operation)
{
    Plan& plan = ThePlan();
    std::unique_lock<std::mutex> lock(plan.mutex);
    if (plan.operations.count(operation) == 0)
        return SQLITE_OK;
    ++plan.count;
    if (plan.failAt == 0 || plan.count < plan.failAt || (plan.count > plan.failAt && !plan.forGood))
        return SQLITE_OK;
    plan.hit = true;
    int const code = CodeOf(operation, plan.code);
    std::function<void()> const watcher = std::exchange(plan.watcher, nullptr);
    lock.unlock();
    if (watcher)
        watcher(); // outside the lock, because it may use the files
    return code;
}

/// Takes space for growth, or returns some.
int TakeRoom(qint64 bytes)
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    if (!plan.limited)
        return SQLITE_OK;
    if (bytes > plan.room) {
        plan.hit = true;
        return SQLITE_FULL;
    }
    plan.room -= bytes;
    return SQLITE_OK;
}

/// Reports an operation on a named file to the `UnflushedWrites`, if there is one.
template <class... Parameters, class... Arguments>
void Tell(void (UnflushedWrites::*what)(QByteArray const&, Parameters...),
          char const* name,
          Arguments const&... arguments)
{
    UnflushedWrites* const told = ThePlan().told;
    if (told != nullptr && name != nullptr)
        (told->*what)(name, arguments...);
}

sqlite3_vfs* realVfs = nullptr;

/// The file object for SQLite, followed in memory by that of the real VFS.
struct File
{
    sqlite3_file base;
    char const* name;
    /// How many regions of shared memory are mapped, from the first one on: SQLite asks for them again and again.
    int mappedRegions;
};

char const* NameOf(sqlite3_file* file)
{
    return reinterpret_cast<File*>(file)->name;
}

sqlite3_file* Real(sqlite3_file* file)
{
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<File*>(file) + 1);
}

sqlite3_io_methods const* Methods(sqlite3_file* file)
{
    return Real(file)->pMethods;
}

sqlite3_int64 SizeOf(sqlite3_file* file)
{
    sqlite3_int64 size = 0;
    Methods(file)->xFileSize(Real(file), &size);
    return size;
}

int Close(sqlite3_file* file)
{
    return Methods(file)->xClose(Real(file));
}

int Read(sqlite3_file* file, void* data, int amount, sqlite3_int64 offset)
{
    if (int const code = Ask(FileOperation::Read); code != SQLITE_OK)
        return code;
    return Methods(file)->xRead(Real(file), data, amount, offset);
}

int Write(sqlite3_file* file, void const* data, int amount, sqlite3_int64 offset)
{
    if (int const code = Ask(FileOperation::Write); code != SQLITE_OK)
        return code;
    qint64 const growth = offset + amount - SizeOf(file);
    if (int const code = growth > 0 ? TakeRoom(growth) : SQLITE_OK; code != SQLITE_OK)
        return code;
    int const code = Methods(file)->xWrite(Real(file), data, amount, offset);
    if (code == SQLITE_OK)
        Tell(&UnflushedWrites::Written, NameOf(file), offset, QByteArray(static_cast<char const*>(data), amount));
    return code;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size)
{
    if (int const code = Ask(FileOperation::Truncate); code != SQLITE_OK)
        return code;
    if (int const code = TakeRoom(size - SizeOf(file)); code != SQLITE_OK)
        return code;
    int const code = Methods(file)->xTruncate(Real(file), size);
    if (code == SQLITE_OK)
        Tell(&UnflushedWrites::Truncated, NameOf(file), size);
    return code;
}

/// Flushes nothing: the tests only simulate power cuts, and thousands of flushes would take minutes.
int Sync(sqlite3_file* file, int)
{
    int const code = Ask(FileOperation::Sync);
    Tell(code == SQLITE_OK ? &UnflushedWrites::Flushed : &UnflushedWrites::FlushFailed, NameOf(file));
    return code;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size)
{
    return Methods(file)->xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level)
{
    if (int const code = Ask(FileOperation::Lock); code != SQLITE_OK)
        return code;
    return Methods(file)->xLock(Real(file), level);
}

int Unlock(sqlite3_file* file, int level)
{
    if (int const code = Ask(FileOperation::Unlock); code != SQLITE_OK)
        return code;
    return Methods(file)->xUnlock(Real(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* result)
{
    return Methods(file)->xCheckReservedLock(Real(file), result);
}

int FileControl(sqlite3_file* file, int operation, void* argument)
{
    return Methods(file)->xFileControl(Real(file), operation, argument);
}

int SectorSize(sqlite3_file* file)
{
    return Methods(file)->xSectorSize(Real(file));
}

int DeviceCharacteristics(sqlite3_file* file)
{
    return Methods(file)->xDeviceCharacteristics(Real(file));
}

int ShmMap(sqlite3_file* file, int page, int pageSize, int extend, void volatile** memory)
{
    int& mapped = reinterpret_cast<File*>(file)->mappedRegions;
    if (int const code = page >= mapped ? Ask(FileOperation::MapMemory) : SQLITE_OK; code != SQLITE_OK)
        return code;
    int const code = Methods(file)->xShmMap(Real(file), page, pageSize, extend, memory);
    if (code == SQLITE_OK && *memory != nullptr)
        mapped = std::max(mapped, page + 1);
    return code;
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags)
{
    if ((flags & SQLITE_SHM_LOCK) != 0) {
        if (int const code = Ask(FileOperation::Lock); code != SQLITE_OK)
            return code;
    }
    return Methods(file)->xShmLock(Real(file), offset, count, flags);
}

void ShmBarrier(sqlite3_file* file)
{
    Methods(file)->xShmBarrier(Real(file));
}

int ShmUnmap(sqlite3_file* file, int deletes)
{
    reinterpret_cast<File*>(file)->mappedRegions = 0;
    return Methods(file)->xShmUnmap(Real(file), deletes);
}

int Fetch(sqlite3_file* file, sqlite3_int64 offset, int amount, void** memory)
{
    return Methods(file)->xFetch(Real(file), offset, amount, memory);
}

int Unfetch(sqlite3_file* file, sqlite3_int64 offset, void* memory)
{
    return Methods(file)->xUnfetch(Real(file), offset, memory);
}

sqlite3_io_methods MethodsOfVersion(int version)
{
    return {version,
            Close,
            Read,
            Write,
            Truncate,
            Sync,
            FileSize,
            Lock,
            Unlock,
            CheckReservedLock,
            FileControl,
            SectorSize,
            DeviceCharacteristics,
            ShmMap,
            ShmLock,
            ShmBarrier,
            ShmUnmap,
            Fetch,
            Unfetch};
}

sqlite3_io_methods const withSharedMemory = MethodsOfVersion(3);
sqlite3_io_methods const withoutSharedMemory = MethodsOfVersion(1);

int Open(sqlite3_vfs*, char const* name, sqlite3_file* file, int flags, int* flagsOut)
{
    file->pMethods = nullptr;
    reinterpret_cast<File*>(file)->name = name;
    reinterpret_cast<File*>(file)->mappedRegions = 0;
    if (int const code = Ask(FileOperation::Open); code != SQLITE_OK)
        return code;
    Tell(&UnflushedWrites::Opened, name);
    int const code = realVfs->xOpen(realVfs, name, Real(file), flags, flagsOut);
    if (code == SQLITE_OK)
        file->pMethods = ThePlan().sharedMemory ? &withSharedMemory : &withoutSharedMemory;
    return code;
}

int Delete(sqlite3_vfs*, char const* name, int flushesFolder)
{
    if (int const code = Ask(FileOperation::Delete); code != SQLITE_OK)
        return code;
    struct stat status = {};
    qint64 const size = ::stat(name, &status) == 0 ? status.st_size : 0;
    int const code = realVfs->xDelete(realVfs, name, 0);
    if (code != SQLITE_OK)
        return code;
    TakeRoom(-size);
    int const flushCode = flushesFolder != 0 ? Ask(FileOperation::FlushFolder) : SQLITE_OK;
    Tell(&UnflushedWrites::Deleted, name, flushesFolder != 0 && flushCode == SQLITE_OK);
    return flushCode;
}

sqlite3_vfs& FaultyVfs()
{
    static sqlite3_vfs vfs = [] {
        sqlite3_initialize();
        realVfs = sqlite3_vfs_find(nullptr);
        sqlite3_vfs made = *realVfs;
        made.szOsFile += static_cast<int>(sizeof(File));
        made.zName = "faulty";
        made.pNext = nullptr;
        made.xOpen = Open;
        made.xDelete = Delete;
        return made;
    }();
    return vfs;
}

} // namespace

FaultyFiles::FaultyFiles()
{
    sqlite3_vfs_register(&FaultyVfs(), 1);
}

FaultyFiles::~FaultyFiles()
{
    Recover();
    ThePlan().sharedMemory = true;
    ThePlan().told = nullptr;
    sqlite3_vfs_unregister(&FaultyVfs());
}

void FaultyFiles::Fail(int n, int code, std::vector<FileOperation> const& operations, bool forGood)
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    plan.operations = {operations.begin(), operations.end()};
    plan.failAt = n;
    plan.code = code;
    plan.forGood = forGood;
    plan.count = 0;
    plan.hit = false;
    plan.watcher = nullptr;
}

void FaultyFiles::WatchFailure(std::function<void()> watcher)
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    plan.watcher = std::move(watcher);
}

bool FaultyFiles::Recover()
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    plan.failAt = 0;
    plan.watcher = nullptr;
    plan.limited = false;
    return std::exchange(plan.hit, false);
}

int FaultyFiles::Count() const
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    return plan.count;
}

void FaultyFiles::SetRoom(qint64 bytes)
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    plan.limited = true;
    plan.room = bytes;
    plan.hit = false;
}

void FaultyFiles::Tell(UnflushedWrites* writes)
{
    ThePlan().told = writes;
}

void FaultyFiles::RefuseSharedMemory()
{
    Plan& plan = ThePlan();
    std::lock_guard<std::mutex> const lock(plan.mutex);
    plan.sharedMemory = false;
}

} // namespace tandry::test
