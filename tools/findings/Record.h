#pragma once

#include <QByteArray>
#include <QVariant>
#include <QtGlobal>

#include <optional>
#include <vector>

namespace tandry::findings {

/// Reads SQLite's variable-length integer at `offset` and moves `offset` behind it. Returns nothing, and leaves
/// `offset` alone, if the bytes end before the integer does.
[[nodiscard]] std::optional<quint64> ReadVarint(QByteArray const& bytes, int& offset);

/// Decodes a record, the values of one row: integers as `qlonglong`, reals as `double`, texts as `QString`, blobs as
/// `QByteArray`, NULL as an invalid value.
///
/// Returns nothing if the header does not describe exactly these bytes, or if a text is not UTF-8 or contains U+0000:
/// a store accepts no such text, so the bytes are not what was written.
[[nodiscard]] std::optional<std::vector<QVariant>> DecodeRecord(QByteArray const& payload);

} // namespace tandry::findings
