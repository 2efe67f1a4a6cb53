#pragma once

#include "database/store/Failure.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <vector>

struct sqlite3;

/// The tables of a store, and the marks by which a store is recognised.
namespace sync::database::schema {

/// SQLite's `application_id`: "TNDY".
constexpr qint32 ApplicationId = 0x544e4459;
/// SQLite's `user_version`. A change of the schema raises it and adds a step to `UpgradeSteps.cpp`.
constexpr qint32 Version = 2;

/// Whether a store of this version can be upgraded.
constexpr bool IsOlder(qint64 version)
{
    return version >= 0 && version < Version;
}

/// Why a store of another version is refused.
StoreError OtherVersion(QString const& path, qint64 version);

/// The statements that create the indices.
std::vector<QByteArray> const& CreateIndices();

/// A set of tables: a bit for each, in the order of the schema.
using TableSet = quint32;
constexpr TableSet AllTables = ~TableSet(0);

/// The set of the table of this name alone, empty if it is none of the schema's.
TableSet TableNamed(char const* name) noexcept;
/// The names of the tables in a set.
QStringList NamesOf(TableSet tables);

/// Creates tables, indices, marks and the default schedule in an empty database, in one transaction. Returns SQLite's
/// result code.
[[nodiscard]] int Create(sqlite3* handle);

/// Fails if the schema of a store of an older version holds a table of a later one, or anything that neither this
/// library nor SQLite itself creates, and names it: a view or a trigger of somebody else runs whatever they like inside
/// our statements.
///
/// The library's tables and indices are recognised by type and name. That is enough for an upgrade, which copies the
/// rows of an older store into tables that it creates anew. Reads the schema alone, so no view is run.
[[nodiscard]] Failure CheckOlder(sqlite3* handle, QString const& path, qint64 version);

/// The same for a store of this version. Also checks that every table has every column, that its root page can be read,
/// and that every table and index has the text with which this library creates it, so that no constraint, default,
/// generated column, collation or uniqueness was added to it. An index may be missing. Takes the same time whatever the
/// number of rows.
[[nodiscard]] Failure Check(sqlite3* handle, QString const& path);

} // namespace sync::database::schema
