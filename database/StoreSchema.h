#pragma once

#include "database/Failure.h"

#include <QtGlobal>

struct sqlite3;

/// The tables of a store, and the marks by which a file tells that it is one.
namespace sync::database::schema {

/// In the file's header: "TNDY".
constexpr qint32 ApplicationId = 0x544e4459;
/// In the file's header. The first version there is: a store of a lesser one is to be brought up to date, step by step,
/// before its first connection is opened.
constexpr qint32 Version = 1;

/// Why a store of another version is refused.
QString OtherVersion(qint64 version);

/// Makes tables, indices, marks and the default schedule in an empty database, in one transaction. The engine's result
/// code.
[[nodiscard]] int Create(sqlite3* handle);

/// Whether every table is there with every column and can be read at its root. The time doesn't depend on the number of
/// rows.
[[nodiscard]] Failure Check(sqlite3* handle, QString const& path);

} // namespace sync::database::schema
