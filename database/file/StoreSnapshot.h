#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"
#include "database/sqlite/LockQueue.h"
#include "database/sqlite/SqliteHandle.h"

#include <QStringList>

#include <optional>

namespace sync::database {

/// A handle beside the store's connections that sees one committed state, whatever is written meanwhile.
class StoreSnapshot
{
public:
    StoreSnapshot(StoreFile file, int busyTimeoutMsec);

    /// `readOnly` where the store must not be changed, and no file made beside it.
    Failure Open(bool readOnly);

    sqlite3* handle() const { return _handle.get(); }

    /// What is wrong in the store: `schema::FindDamage`, and a file whose end is missing.
    Failure FindDamage(QStringList& damage) const;

    /// Why what was read up to now may not be one committed state, or nothing when it is.
    Failure CheckUnchanged() const;

private:
    StoreFile const _file;
    LockQueue _queue;
    SqliteHandle _handle;
    std::optional<FileStamp> _stamp; // of a file that is read as if nobody wrote it
};

} // namespace sync::database
