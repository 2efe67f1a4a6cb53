#include "database/file/StoreSnapshot.h"

#include <utility>

namespace sync::database {

StoreSnapshot::StoreSnapshot(StoreFile file, int busyTimeoutMsec)
    : _store(std::move(file), busyTimeoutMsec)
{}

Failure StoreSnapshot::Open(StoreAccess access)
{
    if (Failure failure = _store.Open(OpenPurpose::Snapshot, access))
        return failure;
    // The transaction sees what is committed at its first read.
    int const code = Execute(_store.get(), "BEGIN; PRAGMA user_version;");
    return code == SQLITE_OK ? Failure() : _store.Describe(code);
}

} // namespace sync::database
