#pragma once

#include <QByteArray>

#include <variant>

namespace sync::database {

/// Text as SQLite stores it, which need not be valid UTF-8.
struct SqliteText
{
    QByteArray utf8;
};

struct SqliteBlob
{
    QByteArray bytes;
};

/// A value as SQLite has it, without a conversion: NULL, an integer, a floating-point number, a text or a BLOB.
using SqliteValue = std::variant<std::monostate, qint64, double, SqliteText, SqliteBlob>;

} // namespace sync::database
