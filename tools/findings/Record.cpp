#include "tools/findings/Record.h"

#include "tools/findings/ByteOrder.h"

#include <cstring>

namespace tandry::findings {

namespace {

constexpr int LongestVarint = 9;
constexpr quint64 FirstBlobType = 12;

/// Returns the size of a value of this serial type in bytes; -1 for a type that is not in use.
qint64 SizeOf(quint64 type)
{
    constexpr qint64 Sizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, -1, -1};
    if (type < FirstBlobType)
        return Sizes[type];
    return static_cast<qint64>((type - FirstBlobType) / 2);
}

qlonglong IntegerAt(QByteArray const& payload, int offset, int size)
{
    quint64 number = (payload.at(offset) & 0x80) != 0 ? ~quint64(0) : 0;
    for (int i = 0; i < size; ++i)
        number = (number << 8) | static_cast<quint8>(payload.at(offset + i));
    return static_cast<qlonglong>(number);
}

double RealAt(QByteArray const& payload, int offset)
{
    auto const bits = BigEndianAt<quint64>(payload, offset);
    double real = 0;
    std::memcpy(&real, &bits, sizeof real);
    return real;
}

/// Returns an invalid value if these bytes are no text of a store.
QVariant TextOf(QByteArray const& utf8)
{
    if (utf8.isEmpty())
        return QStringLiteral("");
    if (utf8.contains('\0'))
        return {};
    QString text = QString::fromUtf8(utf8);
    if (utf8.startsWith("\xef\xbb\xbf"))
        text.prepend(QChar(QChar::ByteOrderMark)); // the conversion drops it
    return text.toUtf8() == utf8 ? QVariant(text) : QVariant();
}

QVariant ValueAt(QByteArray const& payload, int offset, quint64 type, int size)
{
    switch (type) {
    case 0:
        return {};
    case 7:
        return RealAt(payload, offset);
    case 8:
        return 0LL;
    case 9:
        return 1LL;
    default:
        break;
    }
    if (type < FirstBlobType)
        return IntegerAt(payload, offset, size);
    QByteArray const bytes = payload.mid(offset, size);
    if (type % 2 != 0)
        return TextOf(bytes);
    return bytes.isNull() ? QByteArray("") : bytes;
}

} // namespace

std::optional<quint64> ReadVarint(QByteArray const& bytes, int& offset)
{
    quint64 number = 0;
    for (int i = 0; i < LongestVarint; ++i) {
        if (offset + i >= bytes.size())
            return std::nullopt;
        auto const byte = static_cast<quint8>(bytes.at(offset + i));
        if (i == LongestVarint - 1) {
            offset += LongestVarint;
            return (number << 8) | byte;
        }
        number = (number << 7) | (byte & 0x7fu);
        if ((byte & 0x80u) == 0) {
            offset += i + 1;
            return number;
        }
    }
    return std::nullopt;
}

std::optional<std::vector<QVariant>> DecodeRecord(QByteArray const& payload)
{
    int header = 0;
    std::optional<quint64> const headerSize = ReadVarint(payload, header);
    if (!headerSize || *headerSize > static_cast<quint64>(payload.size()) || *headerSize < quint64(header))
        return std::nullopt;

    std::vector<quint64> types;
    qint64 end = static_cast<qint64>(*headerSize);
    while (header < static_cast<int>(*headerSize)) {
        std::optional<quint64> const type = ReadVarint(payload, header);
        if (!type || SizeOf(*type) < 0 || SizeOf(*type) > payload.size() - end)
            return std::nullopt;
        types.push_back(*type);
        end += SizeOf(*type);
    }
    if (header != static_cast<int>(*headerSize) || end != payload.size())
        return std::nullopt;

    std::vector<QVariant> values;
    values.reserve(types.size());
    int offset = header;
    for (quint64 const type : types) {
        int const size = static_cast<int>(SizeOf(type));
        values.push_back(ValueAt(payload, offset, type, size));
        if (type != 0 && !values.back().isValid())
            return std::nullopt;
        offset += size;
    }
    return values;
}

} // namespace tandry::findings
