#pragma once

#include <atomic>

struct sqlite3;

namespace sync::database {

/// Erases removed secrets from a store's file; shared by the store's connections.
///
/// SQLite overwrites what it removes, but where it has moved a row within its page or to another page, it may leave a
/// copy of the row behind. So after a row with secrets was changed or removed, all of them are written anew.
class SecretErasure
{
public:
    /// Call this for every change of a row. SQLite does not report rows that are removed together with all others of
    /// their table; they leave no copies.
    void NoticeChange(int action, char const* table) noexcept;

    /// Claims a due erasure; false if none is due.
    [[nodiscard]] bool Claim() noexcept { return _isDue.exchange(false); }
    /// Makes an erasure due again that was claimed and failed.
    void Return() noexcept { _isDue = true; }

    /// Writes all rows with secrets anew, in the handle's open transaction. Returns SQLite's result code.
    [[nodiscard]] static int Run(sqlite3* handle) noexcept;

private:
    std::atomic<bool> _isDue{false};
};

} // namespace sync::database
