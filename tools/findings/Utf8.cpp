#include "tools/findings/Utf8.h"

namespace tandry::findings {

std::optional<QString> DecodeUtf8(QByteArray const& bytes)
{
    // QString::fromUtf8 drops a leading byte order mark, and replaces invalid bytes.
    QString text = QString::fromUtf8(bytes);
    if (bytes.startsWith("\xef\xbb\xbf"))
        text.prepend(QChar(QChar::ByteOrderMark));
    if (text.toUtf8() != bytes)
        return std::nullopt;
    return text;
}

} // namespace tandry::findings
