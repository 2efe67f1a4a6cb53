#pragma once

#include <QtGlobal>

#include <functional>
#include <vector>

namespace tandry::test {

class UnflushedWrites;

/// The file operations of SQLite that can be made to fail.
enum class FileOperation
{
    Open,
    Read,
    Write,
    Truncate,
    Sync,
    Delete,
    /// The flush of a folder from which a file was deleted.
    FlushFolder,
    Lock,
    Unlock,
    MapMemory,
};

inline constexpr std::initializer_list<FileOperation> AllOperations{FileOperation::Open,
                                                                    FileOperation::Read,
                                                                    FileOperation::Write,
                                                                    FileOperation::Truncate,
                                                                    FileOperation::Sync,
                                                                    FileOperation::Delete,
                                                                    FileOperation::FlushFolder,
                                                                    FileOperation::Lock,
                                                                    FileOperation::Unlock,
                                                                    FileOperation::MapMemory};
/// Reading and unlocking need neither room nor memory of the system.
inline constexpr std::initializer_list<FileOperation> AllThatNeedResources{FileOperation::Open,
                                                                           FileOperation::Write,
                                                                           FileOperation::Truncate,
                                                                           FileOperation::Sync,
                                                                           FileOperation::Delete,
                                                                           FileOperation::FlushFolder,
                                                                           FileOperation::Lock,
                                                                           FileOperation::MapMemory};

/// Makes SQLite's file operations fail as planned while the object exists. There may be one object at a time, and the
/// connections that were opened meanwhile must be closed before it is destroyed. Any thread may call any operation.
class FaultyFiles
{
public:
    FaultyFiles();
    ~FaultyFiles();
    FaultyFiles(FaultyFiles const&) = delete;
    FaultyFiles& operator=(FaultyFiles const&) = delete;

    /// The nth of these operations from now on, counted from 1, gives the error code, and with `forGood` every later
    /// one. SQLITE_IOERR stands for the code of the operation that fails.
    void Fail(int n, int code, std::vector<FileOperation> const& operations, bool forGood = false);
    /// Has a function called when the planned failure is reached, before the operation answers; for one time. With
    /// SQLITE_OK as the code the operation is only watched.
    void WatchFailure(std::function<void()> watcher);
    /// No further failure. Whether one was reached.
    bool Recover();
    /// How many operations of the last `Fail` there were since.
    int Count() const;

    /// Files may grow by so many bytes in all, until `Recover`; what is cut off or deleted makes room again.
    void SetRoom(qint64 bytes);

    /// Tells of every change and every flush of the files opened from now on; null ends it.
    void Tell(UnflushedWrites* writes);

    /// Files opened from now on have no shared memory, like those of a network home.
    void RefuseSharedMemory();
};

} // namespace tandry::test
