#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

/// Readable texts in the messages of failed expectations, where a QString would be a list of numbers.
inline void PrintTo(QString const& text, std::ostream* out)
{
    if (text.isNull())
        *out << "null text";
    else
        *out << '"' << text.toUtf8().constData() << '"';
}

inline void PrintTo(QByteArray const& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(QByteArrayLiteral(" <>[]!=,;:()'*%?/")).constData() << '"';
}

namespace tandry::test {

/// "text"_q is a QString.
inline QString operator""_q(char const* text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

} // namespace tandry::test
