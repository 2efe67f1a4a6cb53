#pragma once

struct sqlite3;

namespace sync::database {

/// The outcome of a transaction whose commit failed.
enum class CommitOutcome
{
    /// Nothing of it is there, nor will be.
    Gone,
    /// All of it is there and on the disk, although SQLite returned an error.
    Kept,
    /// Neither could be made sure of: a crash or a power cut may bring it back or take it away.
    Unknown,
};

/// Finds out what became of a transaction whose COMMIT failed with SQLite's code, and makes that durable where it isn't
/// yet. Waits for the locks of others as the handle does.
///
/// REQUIRES: the transaction has ended, and no other is open on the handle.
[[nodiscard]] CommitOutcome SettleFailedCommit(sqlite3* handle, bool usesLog, int code);

} // namespace sync::database
