#pragma once

#include "database/StoreError.h"

#include <QString>

#include <optional>

struct sqlite3;

namespace sync::database {

/// Why an operation failed, or nothing when it succeeded.
using Failure = std::optional<StoreError>;

/// An error of the store file: the engine's code, what happened and the statement.
StoreError MakeError(QString const& path, int code, QString const& words, QString const& statement = {});

/// An error that the engine told, in words that a user understands. Looks at the handle for the operating system's
/// reason, and for the engine's own words only where `engineWords` says that they can't hold a bound value.
StoreError
DescribeError(sqlite3* handle, int code, QString const& path, QString const& statement = {}, bool engineWords = false);

/// An error that the operating system told by its number.
StoreError DescribeSystemError(QString const& path, QString const& words, int errorNumber);

/// Of an operation on a thread whose own data have gone already, and its connections with them.
Failure NoConnection();

/// The operating system's reason for an error number.
QString SystemReason(int errorNumber);

} // namespace sync::database
