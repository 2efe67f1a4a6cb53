#include "tools/findings/Utf8.h"

namespace tandry::findings {

std::optional<QString> DecodeUtf8(QByteArray const& bytes)
{
    // The conversion drops a leading byte order mark, and replaces invalid bytes. That of a QByteArray ends at a null
    // in Qt 5.
    QString text = QString::fromStdString(bytes.toStdString());
    if (bytes.startsWith("\xef\xbb\xbf"))
        text.prepend(QChar(QChar::ByteOrderMark));
    if (text.toUtf8() != bytes)
        return std::nullopt;
    return text;
}

} // namespace tandry::findings
