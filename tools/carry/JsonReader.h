#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace tandry::carry {

struct JsonMember;

/// A value that an export may hold. There are no arrays and no numbers but 64-bit integers, which Qt's reader rounds.
struct JsonValue
{
    enum class Type
    {
        Null,
        /// In `integer`: 0 or 1.
        Bool,
        Integer,
        Text,
        Object,
    };

    Type type = Type::Null;
    qint64 integer = 0;
    QString text;
    /// In the order in which they are written, no key twice.
    std::vector<JsonMember> members;
};

struct JsonMember
{
    QString key;
    JsonValue value;
};

/// The place and the reason at which reading has ended.
struct JsonFault
{
    /// The number of the byte in the line, from 1 up.
    int column = 0;
    /// The key of the outermost object whose value was read; null before the first.
    QString key;
    QString reason;
};

/// Reads a line, with or without the line break, that holds one object and nothing else. Objects lie in each other
/// three deep at most. Returns nothing if the line is anything else, and sets `fault`.
[[nodiscard]] std::optional<JsonValue> ReadJsonObject(QByteArray const& line, JsonFault& fault);

} // namespace tandry::carry
