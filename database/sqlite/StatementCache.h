#pragma once

#include "database/sqlite/PreparedStatement.h"

#include <QString>

#include <array>
#include <cstddef>
#include <memory>
#include <unordered_map>

namespace sync::database {

/// The prepared statements of a connection, kept by text. A statement in use is never shared: a second user of the same
/// text gets a statement of its own, which is finalized with its lease.
class StatementCache
{
    struct Entry;

public:
    struct GiveBack
    {
        StatementCache* cache = nullptr;
        /// Null for a statement that is not kept.
        Entry* entry = nullptr;

        void operator()(PreparedStatement* statement) const noexcept { cache->TakeBack(statement, entry); }
    };
    /// A statement for one user; must be destroyed before the cache.
    using Lease = std::unique_ptr<PreparedStatement, GiveBack>;

    /// Null on failure.
    Lease Take(sqlite3* handle, QString const& text, StatementError& error);

    /// Whether a statement is in use.
    bool hasLeases() const { return _leases > 0; }

private:
    struct Entry
    {
        std::unique_ptr<PreparedStatement> statement;
        bool inUse = false;
        quint64 lastUse = 0;
    };
    using Entries = std::unordered_map<QString, Entry>;

    /// More than the store's clients have statements; what goes beyond comes from texts with lists of ids in them.
    static constexpr std::size_t Capacity = 160;
    /// In characters. Longer texts are such lists, which hardly come again.
    static constexpr int LongestText = 4096;
    /// A power of two.
    static constexpr std::size_t RecentCount = 256;

    Entry* Find(QString const& text);
    Lease Lend(Entry& entry);
    void MakeRoom();
    void TakeBack(PreparedStatement* statement, Entry* entry) noexcept;

    Entries _entries;
    /// The entries that were found last, by the address of the caller's text: callers mostly use the same constant
    /// again, and comparing its characters takes a fraction of the time of hashing them.
    std::array<Entry*, RecentCount> _recent = {};
    quint64 _uses = 0;
    int _leases = 0;
};

using StatementLease = StatementCache::Lease;

} // namespace sync::database
