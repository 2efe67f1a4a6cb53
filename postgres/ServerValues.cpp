#include "postgres/ServerValues.h"

#include "database/store/StoredValues.h"

#include <QMetaType>

#include <cmath>

namespace sync::database {

namespace {

/// The server's numbers of types, which never change.
enum ServerType : Oid
{
    Bool = 16,
    Bytes = 17,
    Int64 = 20,
    Int16 = 21,
    Int32 = 23,
    ObjectId = 26,
    Float32 = 700,
    Float64 = 701,
    Numeric = 1700,
};

std::optional<QByteArray> TextToServer(QString const& text, QString& words)
{
    if (!IsUnicode(text))
        words = QStringLiteral("the text for %1 is no Unicode text (it has a lone surrogate)");
    else if (text.contains(QChar(0)))
        words = QStringLiteral("the text for %1 has a null character, which PostgreSQL can't keep");
    else
        return text.toUtf8();
    return std::nullopt;
}

} // namespace

std::optional<QByteArray> ToServer(QVariant const& value, QString& words)
{
    if (value.isNull())
        return std::nullopt;
    switch (value.userType()) {
    case QMetaType::QString:
        return TextToServer(*static_cast<QString const*>(value.constData()), words);
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Bool:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return QByteArray::number(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        if (value.toULongLong() > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
            break;
        return QByteArray::number(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        if (std::isnan(value.toDouble()))
            break;
        return QByteArray::number(value.toDouble(), 'g', std::numeric_limits<double>::max_digits10);
    case QMetaType::QDateTime: {
        QDateTime const time = value.toDateTime();
        if (!time.isValid())
            return std::nullopt;
        std::optional<qint64> const reading = ClockReading(time);
        if (!reading)
            break;
        return QByteArray::number(*reading);
    }
    default:
        words = QStringLiteral("%1 can't keep a value of type ") + QString::fromLatin1(value.typeName());
        return std::nullopt;
    }
    words = QStringLiteral("the value for %1 is out of range");
    return std::nullopt;
}

QVariant FromServer(PGresult const* result, int row, int column, bool isClockReading)
{
    if (PQgetisnull(result, row, column) != 0)
        return {};
    char const* const text = PQgetvalue(result, row, column);
    int const size = PQgetlength(result, row, column);
    QByteArray const bytes = QByteArray::fromRawData(text, size);
    switch (PQftype(result, column)) {
    case Int64:
        if (isClockReading)
            return FromClockReading(bytes.toLongLong());
        [[fallthrough]];
    case Int16:
    case Int32:
    case ObjectId:
        return bytes.toLongLong();
    case Bool:
        return static_cast<qlonglong>(bytes == "t");
    case Float32:
    case Float64:
    case Numeric:
        return bytes.toDouble();
    case Bytes:
        return QByteArray::fromHex(bytes.mid(2)); // behind "\x"
    default:
        return FromUtf8(text, size);
    }
}

} // namespace sync::database
