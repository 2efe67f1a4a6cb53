#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"

class QByteArray;

namespace sync::database {

/// Copies a store while others write to it.
class StoreBackup
{
public:
    /// `readOnly` where the store must not be changed, and no file made beside it.
    StoreBackup(StoreFile source, bool readOnly, int busyTimeoutMsec);

    /// Writes one committed state of the store into a new file, readable and writable by its owner only, which appears
    /// whole, looked through and flushed, or not at all. Errors name the new file.
    Failure Write(StoreFile const& target) const;

private:
    Failure Copy(StoreFile const& target, QByteArray const& name) const;

    StoreFile const _source;
    bool const _readOnly;
    int const _busyTimeoutMsec;
};

} // namespace sync::database
