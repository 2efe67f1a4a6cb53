#pragma once

namespace sync::database {

class StoreFile;

/// Returns the number of commits behind the first damage of a log that a killed program has left: SQLite will drop them
/// without an error. Returns 0 if there are none, if another connection is writing, and if the log cannot be read.
///
/// Call this before the store is written to, since new commits overwrite the dropped ones.
int CountDroppedCommits(StoreFile const& file);

} // namespace sync::database
