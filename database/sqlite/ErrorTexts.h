#pragma once

#include "database/StoreError.h"

#include <QString>

struct sqlite3;

namespace sync::database {

/// An error with SQLite's extended result code and the kind that belongs to it. Every error is made here.
StoreError MakeError(int code, QString const& text, QString const& statement = {});

/// The same for a store file, whose path goes in front of the words.
StoreError MakeError(QString const& path, int code, QString const& words, QString const& statement = {});

/// An error that SQLite reported, in words that a user understands. Asks the handle, which may be null, for the
/// operating system's reason, and for SQLite's message only if `withMessage` says that it cannot quote a bound value.
StoreError
DescribeError(sqlite3* handle, int code, QString const& path, QString const& statement = {}, bool withMessage = false);

/// An error that the operating system reported by its number.
StoreError DescribeSystemError(QString const& path, QString const& words, int errorNumber);

} // namespace sync::database
