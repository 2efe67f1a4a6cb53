#pragma once

#include "database/StoreError.h"

#include <optional>

namespace sync::database {

class SqliteStore;

/// The errors of one thread on a store: logs each, and keeps the first until it is cleared.
class ThreadErrors
{
public:
    explicit ThreadErrors(SqliteStore const& store);

    void Record(StoreError const& error);
    /// The same for writes that were answered with true and are lost; also emits the factory's `CommitFailed`.
    void RecordLostWrites(StoreError const& error);

    std::optional<StoreError> const& first() const { return _first; }
    void Clear() { _first.reset(); }

private:
    SqliteStore const& _store;
    std::optional<StoreError> _first;
};

} // namespace sync::database
