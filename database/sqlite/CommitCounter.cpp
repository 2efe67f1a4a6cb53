#include "database/sqlite/CommitCounter.h"

#include "database/sqlite/SqliteHandle.h"

#include <QtEndian>

#include <array>

namespace sync::database {

namespace {

/// The place of the change counter in the file's header, as SQLite documents it.
constexpr int CounterOffset = 24;
/// The place of the write lock among the locks of the log's index, as SQLite documents it.
constexpr int WriteLock = 0;

sqlite3_file* FileOf(sqlite3* handle)
{
    sqlite3_file* file = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

} // namespace

CommitCounter::CommitCounter(sqlite3* handle)
    : _handle(handle)
    , _index(handle)
{}

std::optional<quint32> CommitCounter::Read() const
{
    if (_index.isValid())
        return _index.commits();
    if (_handle == nullptr)
        return std::nullopt;
    // A commit in progress, or one that was interrupted, has written its number already.
    std::optional<quint32> number;
    if (Execute(_handle, "BEGIN; PRAGMA user_version;") == SQLITE_OK)
        number = ReadInTransaction();
    if (sqlite3_get_autocommit(_handle) == 0)
        Execute(_handle, "COMMIT");
    return number;
}

std::optional<quint32> CommitCounter::ReadInTransaction() const
{
    if (_index.isValid())
        return _index.commits();
    sqlite3_file* const file = FileOf(_handle);
    std::array<unsigned char, 4> bytes{};
    if (file == nullptr || file->pMethods->xRead(file, bytes.data(), bytes.size(), CounterOffset) != SQLITE_OK)
        return std::nullopt;
    return qFromBigEndian<quint32>(bytes.data());
}

bool CommitCounter::IsOtherWriting() const
{
    sqlite3_file* const file = FileOf(_handle);
    if (file == nullptr)
        return false;
    if (!_index.isValid()) {
        int isReserved = 0;
        file->pMethods->xCheckReservedLock(file, &isReserved);
        return isReserved != 0;
    }
    // SQLite has no question for this lock. A share of it, and the shortest time, disturb a writer the least.
    if (file->pMethods->xShmLock(file, WriteLock, 1, SQLITE_SHM_LOCK | SQLITE_SHM_SHARED) != SQLITE_OK)
        return true;
    file->pMethods->xShmLock(file, WriteLock, 1, SQLITE_SHM_UNLOCK | SQLITE_SHM_SHARED);
    return false;
}

} // namespace sync::database
