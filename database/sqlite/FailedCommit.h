#pragma once

struct sqlite3;

namespace sync::database {

/// The outcome of a transaction whose commit failed.
enum class CommitOutcome
{
    /// None of it is there, and it cannot come back.
    Gone,
    /// All of it is there and on the disk, although SQLite returned an error.
    Kept,
    /// Unknown: a crash or a power cut may bring it back or remove it.
    Unknown,
};

/// Determines the outcome of a transaction whose COMMIT failed with this result code of SQLite, and makes the outcome
/// durable. Waits for locks as the handle does.
///
/// REQUIRES: the transaction has ended, and no other is open on the handle.
[[nodiscard]] CommitOutcome SettleFailedCommit(sqlite3* handle, bool usesLog, int code);

} // namespace sync::database
