#include "database/sqlite/StatementCache.h"

#include <algorithm>
#include <utility>

namespace sync::database {

StatementCache::Lease StatementCache::Take(sqlite3* handle, QString const& text, StatementError& error)
{
    Entry* const found = Find(text);
    if (found != nullptr && !found->inUse)
        return Lend(*found);

    // A text made by `fromRawData` belongs to somebody else, who may change or free it.
    QString const copy(text.constData(), text.size());
    bool const keep = found == nullptr && text.size() <= LongestText;
    std::unique_ptr<PreparedStatement> statement = PreparedStatement::Prepare(handle, copy, keep, error);
    if (statement == nullptr)
        return {nullptr, GiveBack{this}};
    if (!keep) {
        ++_leases;
        return {statement.release(), GiveBack{this}};
    }

    MakeRoom();
    Entry& entry = _entries[copy];
    entry.statement = std::move(statement);
    return Lend(entry);
}

StatementCache::Entry* StatementCache::Find(QString const& text)
{
    // QString's data are aligned to 8 bytes at least.
    Entry*& recent = _recent[(reinterpret_cast<quintptr>(text.constData()) >> 3) % RecentCount];
    if (recent != nullptr && IsSameText(recent->statement->text(), text))
        return recent;
    auto const found = _entries.find(text);
    return found == _entries.end() ? nullptr : recent = &found->second;
}

StatementCache::Lease StatementCache::Lend(Entry& entry)
{
    entry.inUse = true;
    entry.lastUse = ++_uses;
    ++_leases;
    return {entry.statement.get(), GiveBack{this, &entry}};
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

void StatementCache::TakeBack(PreparedStatement* statement, Entry* entry) noexcept
{
    --_leases;
    if (entry == nullptr) {
        delete statement;
        return;
    }
    statement->Clear();
    entry->inUse = false;
}

} // namespace sync::database
