#pragma once

#include "database/file/StoreHandle.h"

namespace sync::database {

/// A handle of its own that sees one committed state of the store, whatever is written meanwhile.
class StoreSnapshot
{
public:
    StoreSnapshot(StoreFile file, int busyTimeoutMsec);

    [[nodiscard]] Failure Open(StoreAccess access);

    StoreHandle const& store() const { return _store; }

private:
    StoreHandle _store;
};

} // namespace sync::database
