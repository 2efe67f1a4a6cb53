#pragma once

#include "database/StoreError.h"

#include <optional>
#include <vector>

namespace sync::database {

class Store;

/// The errors of one thread on a store: logs each, and keeps the first until it is cleared.
class ThreadErrors
{
public:
    explicit ThreadErrors(Store const& store);

    void Record(StoreError const& error);
    /// The same for writes that returned true and are lost; also emits the factory's `CommitFailed`.
    ///
    /// If slots of the signal write and their writes are lost too, one more signal reports this after they have
    /// returned. Losses during that signal are only recorded: on a disk that keeps failing there would be no end.
    void RecordLostWrites(StoreError const& error);

    std::optional<StoreError> const& first() const { return _first; }
    void Clear() { _first.reset(); }

private:
    void Emit(StoreError const& error) noexcept;

    Store const& _store;
    std::optional<StoreError> _first;
    bool _isEmitting = false;
    /// The writes that slots lost while the signal was being emitted.
    std::vector<StoreError> _lostBySlots;
};

} // namespace sync::database
