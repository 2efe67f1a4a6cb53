#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/SqliteHandle.h"

#include <QtGlobal>

namespace sync::database {

/// Keeps all programs out of a file by SQLite's own locks, whatever the file holds, as long as the object lives.
class ExclusiveLock
{
public:
    explicit ExclusiveLock(StoreFile file);
    ~ExclusiveLock();
    Q_DISABLE_COPY_MOVE(ExclusiveLock)

    /// Does not wait. Fails if a program, this one included, has a store with a write-ahead log open, or is reading or
    /// writing a store with a journal. Of a store with a journal that is only open, `StorePresence` tells.
    [[nodiscard]] Failure Take();

    /// Copies the locked file's bytes to a new file. Returns 0 or the operating system's error number.
    [[nodiscard]] int CopyTo(char const* name) const;

private:
    StoreFile const _file;
    SqliteHandle _handle;
    sqlite3_file* _opened = nullptr;
};

} // namespace sync::database
