#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tandry::findings {

/// Decodes bytes from outside, such as file names; returns nothing if they are not valid UTF-8. A leading U+FEFF
/// belongs to the text.
std::optional<QString> DecodeUtf8(QByteArray const& bytes);

} // namespace tandry::findings
