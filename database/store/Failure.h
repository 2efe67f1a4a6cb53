#pragma once

#include "database/StoreError.h"

#include <optional>
#include <utility>

namespace sync::database {

/// The outcome of an internal operation: its error, or nothing if it succeeded. True means failed.
class [[nodiscard]] Failure
{
public:
    /// Success.
    Failure() = default;
    Failure(StoreError error)
        : _error(std::move(error))
    {}

    explicit operator bool() const noexcept { return _error.has_value(); }

    /// The error of an operation that failed.
    StoreError& operator*() noexcept { return *_error; }
    StoreError const& operator*() const noexcept { return *_error; }
    StoreError* operator->() noexcept { return &*_error; }
    StoreError const* operator->() const noexcept { return &*_error; }

private:
    std::optional<StoreError> _error;
};

} // namespace sync::database
