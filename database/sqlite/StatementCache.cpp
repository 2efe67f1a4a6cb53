#include "database/sqlite/StatementCache.h"

#include <algorithm>
#include <utility>

namespace sync::database {

StatementCache::Lease StatementCache::Take(sqlite3* handle, QString const& text, StatementError& error)
{
    Entry* entry = Find(text);
    if (entry != nullptr && !entry->inUse) {
        entry->inUse = true;
        entry->lastUse = ++_uses;
        ++_leases;
        return {entry->statement.get(), GiveBack{this}};
    }

    QString const kept = OwnsItsData(text) ? text : QString(text.constData(), text.size());
    bool const keep = entry == nullptr && text.size() <= LongestText;
    std::unique_ptr<PreparedStatement> statement = PreparedStatement::Prepare(handle, kept, keep, error);
    if (statement == nullptr)
        return {nullptr, GiveBack{this}};
    ++_leases;
    if (!keep)
        return {statement.release(), GiveBack{this}};

    MakeRoom();
    entry = &_entries[kept];
    *entry = {std::move(statement), true, ++_uses};
    RecentSlot(kept) = entry;
    return {entry->statement.get(), GiveBack{this}};
}

StatementCache::Entry*& StatementCache::RecentSlot(QString const& text)
{
    // QString's data are aligned to 8 bytes at least.
    return _recent[(reinterpret_cast<quintptr>(text.constData()) >> 3) % RecentCount];
}

StatementCache::Entry* StatementCache::Find(QString const& text)
{
    Entry*& recent = RecentSlot(text);
    if (recent != nullptr && recent->statement->text().constData() == text.constData() &&
        recent->statement->text().size() == text.size())
        return recent;
    auto const found = _entries.find(text);
    if (found == _entries.end())
        return nullptr;
    if (found->first.constData() == text.constData())
        recent = &found->second;
    return &found->second;
}

void StatementCache::MakeRoom()
{
    if (_entries.size() < Capacity)
        return;
    auto oldest = _entries.end();
    for (auto entry = _entries.begin(); entry != _entries.end(); ++entry) {
        if (!entry->second.inUse && (oldest == _entries.end() || entry->second.lastUse < oldest->second.lastUse))
            oldest = entry;
    }
    if (oldest == _entries.end())
        return;
    std::replace(_recent.begin(), _recent.end(), &oldest->second, static_cast<Entry*>(nullptr));
    _entries.erase(oldest);
}

void StatementCache::TakeBack(PreparedStatement* statement) noexcept
{
    --_leases;
    Entry* const entry = Find(statement->text());
    if (entry == nullptr || entry->statement.get() != statement) {
        delete statement;
        return;
    }
    statement->Clear();
    entry->inUse = false;
}

} // namespace sync::database
