#pragma once

#include "database/sqlite/Failure.h"

#include <QByteArray>
#include <QStringList>
#include <QtGlobal>

#include <vector>

struct sqlite3;

/// The tables of a store, and the marks by which a file tells that it is one.
namespace sync::database::schema {

/// In the file's header: "TNDY".
constexpr qint32 ApplicationId = 0x544e4459;
/// In the file's header. Who raises it adds a step to `StoreUpgrade`, which brings older stores up to date.
constexpr qint32 Version = 1;

/// Whether a store of this version can be brought up to date.
constexpr bool IsOlder(qint64 version)
{
    return version >= 0 && version < Version;
}

/// A table in the words of its statements.
struct TableText
{
    QByteArray name;
    /// All columns, with commas between.
    QByteArray columns;
    QByteArray create;
};

std::vector<TableText> TableTexts();
/// The statements that make the indices.
std::vector<QByteArray> IndexTexts();
/// Puts the default schedule into a store that has none.
QByteArray DefaultScheduleText();

/// Why a store of another version is refused.
QString OtherVersion(qint64 version);

/// Makes tables, indices, marks and the default schedule in an empty database, in one transaction. The engine's result
/// code.
[[nodiscard]] int Create(sqlite3* handle);

/// Whether every table is there with every column and can be read at its root. The time doesn't depend on the number of
/// rows.
[[nodiscard]] Failure Check(sqlite3* handle, QString const& path);

/// What is wrong inside a store, in the words of the engine: pages, rows and indices that don't belong together, and in
/// a store of this version what `Check` looks for and indices that are missing. Reads the whole file.
[[nodiscard]] Failure FindDamage(sqlite3* handle, QString const& path, QStringList& damage);

/// The table whose rows hold secrets.
constexpr char const* SecretsTable = "ProductConfiguration";
/// Writes the rows of that table anew, all or none: the engine overwrites what it removes, but where it has moved a row
/// within its page or to another one, it may leave a copy of it in between. The engine's result code.
[[nodiscard]] int RewriteSecrets(sqlite3* handle);

} // namespace sync::database::schema
