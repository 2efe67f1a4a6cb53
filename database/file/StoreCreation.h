#pragma once

#include "database/OpenOptions.h"
#include "database/store/Failure.h"

namespace sync::database {

class StoreFile;

/// Creates an empty store that appears whole, with a rollback journal if a log does not work in its place. Succeeds as
/// well if another process or thread created the file meanwhile.
[[nodiscard]] Failure CreateStore(StoreFile const& file, JournalMode mode);

} // namespace sync::database
