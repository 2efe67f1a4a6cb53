#pragma once

#include "../database/StoreError.h"

#include <QFuture>

#include <optional>

namespace sync::models {

/// What an operation has returned that ran on another thread, and the error beside it.
///
/// So a miss is told from a failure: a look-up that matches nothing gives the default record and no error. A write that
/// was accepted and then lost, because its commit failed, gives true with an error.
template <class T>
struct Answer
{
    /// What the operation returned; the default value if it did not run or an exception left it.
    T value{};
    /// The store's first error during the operation; nothing if there was none. Of the kind `Refused` if the operation
    /// did not run because the managers had been closed; of the kind `Other`, with the exception's text, if an
    /// exception left it.
    std::optional<sync::database::StoreError> error;
};

/// The same for an operation that returns nothing.
template <>
struct Answer<void>
{
    /// As above.
    std::optional<sync::database::StoreError> error;
};

/// The answer of an operation that may not have run yet.
template <class T>
using FutureAnswer = QFuture<Answer<T>>;

} // namespace sync::models
