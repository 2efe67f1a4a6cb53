#pragma once

#include "database/sqlite/PreparedStatement.h"

#include <QString>

#include <array>
#include <memory>
#include <unordered_map>

namespace sync::database {

/// The prepared statements of a connection, kept by text. A statement in use is never shared: a second user of the same
/// text gets one of its own, which goes with its lease.
class StatementCache
{
public:
    struct GiveBack
    {
        StatementCache* cache = nullptr;
        void operator()(PreparedStatement* statement) const noexcept { cache->TakeBack(statement); }
    };
    /// A statement for one user; must go before the cache.
    using Lease = std::unique_ptr<PreparedStatement, GiveBack>;

    /// Null on failure.
    Lease Take(sqlite3* handle, QString const& text, StatementError& error);

    /// Whether somebody holds a statement.
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
    Entry*& RecentSlot(QString const& text);
    void MakeRoom();
    void TakeBack(PreparedStatement* statement) noexcept;

    Entries _entries;
    /// By the address of the text's data: callers mostly use the same constant again. The entry keeps a share of the
    /// text, so that no other text can come to the address.
    std::array<Entry*, RecentCount> _recent = {};
    quint64 _uses = 0;
    int _leases = 0;
};

using StatementLease = StatementCache::Lease;

} // namespace sync::database
