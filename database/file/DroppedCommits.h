#pragma once

namespace sync::database {

class StoreFile;

/// Returns how many commits SQLite will drop, without an error, from a log that was left behind and is spoilt: those
/// that stand behind the spoilt place. 0 if there are none, if another connection is writing, and if the log cannot be
/// read.
///
/// To be called before the store is written to, since new commits take the place of the dropped ones.
int CountDroppedCommits(StoreFile const& file);

} // namespace sync::database
