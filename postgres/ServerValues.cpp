#include "postgres/ServerValues.h"

#include "database/store/StoredValues.h"

#include <charconv>
#include <limits>

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

/// Takes values in the form in which the server reads them.
class ServerSink
{
public:
    using Written = std::optional<QByteArray>;

    explicit ServerSink(QString& words)
        : _words(words)
    {}

    static Written TakeNull() { return std::nullopt; }
    static Written TakeInteger(qint64 value) { return QByteArray::number(value); }
    static Written TakeReal(double value)
    {
        return QByteArray::number(value, 'g', std::numeric_limits<double>::max_digits10);
    }
    Written TakeText(QString const& text)
    {
        if (!IsUnicode(text))
            return Refuse(QStringLiteral("the text for %1 is no Unicode text (it has a lone surrogate)"));
        if (text.contains(QChar(0)))
            return Refuse(QStringLiteral("the text for %1 has a null character, which PostgreSQL can't keep"));
        return text.toUtf8();
    }
    Written TakeBytes(QByteArray const& bytes) { return Refuse(UnknownTypeWords(bytes)); }
    Written Refuse(QString const& words)
    {
        _words = words;
        return std::nullopt;
    }

private:
    QString& _words;
};

} // namespace

std::optional<QByteArray> ToServer(QVariant const& value, QString& words)
{
    return TakeValue(value, ServerSink(words));
}

QVariant FromServer(PGresult const* result, int row, int column, bool isClockReading)
{
    if (PQgetisnull(result, row, column) != 0)
        return {};
    char const* const text = PQgetvalue(result, row, column);
    int const size = PQgetlength(result, row, column);
    switch (PQftype(result, column)) {
    case Int64:
    case Int16:
    case Int32:
    case ObjectId: {
        qlonglong number = 0;
        std::from_chars(text, text + size, number);
        return isClockReading ? QVariant(FromClockReading(number)) : QVariant(number);
    }
    case Bool:
        return static_cast<qlonglong>(*text == 't');
    case Float32:
    case Float64:
    case Numeric:
        return QByteArray::fromRawData(text, size).toDouble();
    case Bytes:
        return QByteArray::fromHex(QByteArray::fromRawData(text, size).mid(2)); // behind "\x"
    default:
        return FromUtf8(text, size);
    }
}

} // namespace sync::database
