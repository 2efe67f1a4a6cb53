#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

// GoogleTest prints a QString as a list of numbers and a QByteArray likewise; these make failure messages readable.

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

/// Makes "text"_q a QString.
inline QString operator""_q(char const* text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

} // namespace tandry::test
