#pragma once

#include "config/RecordColumns.h"
#include "tools/carry/JsonReader.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace tandry::carry {

/// Appends a value as an export has it: texts and documents as texts, numbers and bits as numbers, times as the
/// milliseconds that are stored. What a column of this kind should not hold is an object that names its type, such as
/// {"text": "x"} in a column of numbers.
void AppendValue(QByteArray& json, sync::config::ColumnKind kind, QVariant const& value);

/// Returns the value to be stored. If an export holds no such value in a column of this kind, returns nothing and sets
/// `reason`.
[[nodiscard]] std::optional<QVariant> ToStored(JsonValue const& value, sync::config::ColumnKind kind, QString& reason);

/// An id that a row refers to, as an export has it: the number of the record, or the id of a row that is not there, or
/// one of those that name no row, 0 and -1.
///
/// A store gives no id below 1. So a missing row is stored with the negative of its id minus 1, which no later row
/// gets.
namespace reference {

/// Appends a reference; `number` is that of the record, or nothing if there is no such row.
void Append(QByteArray& json, qint64 id, std::optional<qint64> number);

/// Returns the id to be stored for a missing row; nothing for other values.
[[nodiscard]] std::optional<qint64> MissingId(JsonValue const& value);

/// Whether the id names no row and is none that was removed.
constexpr bool NamesNone(qint64 id)
{
    return id == 0 || id == -1;
}

/// Returns the id by which a store keeps a missing row.
constexpr qint64 ToMissing(qint64 id)
{
    return id > 0 ? -id - 1 : id;
}

} // namespace reference

/// Returns the document of a file's links with other ids in it; the rest of the text stays as it is. `newId` gets ids
/// from 1 up; if it returns nothing, so does this function.
[[nodiscard]] std::optional<QString> ReplaceFileIds(QString const& links,
                                                    std::function<std::optional<qint64>(qint64 id)> const& newId);

} // namespace tandry::carry
