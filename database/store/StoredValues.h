#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVariant>

#include <cmath>
#include <limits>
#include <optional>

/// How a store keeps texts and date-times, whatever its database. Inline, since every value passes through here.
namespace sync::database {

constexpr qint64 MsecsPerDay = 86'400'000;
constexpr qint64 JulianDayOfEpoch = 2'440'588;

/// Whether a value is stored as NULL. Qt 5's variant of a null text is null; that of Qt 6 is not.
inline bool IsNull(QVariant const& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return static_cast<QString const*>(value.constData())->isNull();
    case QMetaType::QByteArray:
        return static_cast<QByteArray const*>(value.constData())->isNull();
    default:
        return value.isNull();
    }
}

inline QString UnknownTypeWords(QVariant const& value)
{
    return QStringLiteral("%1 can't keep a value of type ") + QString::fromLatin1(value.typeName());
}

/// Returns false for text with lone surrogates, which UTF-8 cannot express. For the usual text, without any surrogates,
/// the loop becomes vector instructions: `isValidUtf16` alone would add 3 % to an update of a file.
inline bool IsUnicode(QString const& text)
{
    int surrogates = 0;
    for (QChar const unit : text)
        surrogates += unit.isSurrogate() ? 1 : 0;
    return surrogates == 0 || text.isValidUtf16();
}

/// The milliseconds of the clock reading as if it were UTC, whatever its time spec; nothing if there are too many.
inline std::optional<qint64> ClockReading(QDateTime const& time)
{
    qint64 const days = time.date().toJulianDay() - JulianDayOfEpoch;
    if (std::abs(days) > std::numeric_limits<qint64>::max() / MsecsPerDay - 1)
        return std::nullopt;
    return days * MsecsPerDay + time.time().msecsSinceStartOfDay();
}

inline QDateTime FromClockReading(qint64 reading)
{
    return QDateTime::fromMSecsSinceEpoch(reading, Qt::UTC);
}

inline QString FromUtf8(char const* utf8, int size)
{
    QString text = QString::fromUtf8(utf8, size);
    // The conversion takes a leading U+FEFF for a byte order mark and drops it.
    if (size >= 3 && utf8[0] == '\xef' && utf8[1] == '\xbb' && utf8[2] == '\xbf')
        text.prepend(QChar(QChar::ByteOrderMark));
    return text;
}

/// Hands a value to the operation of a store that takes its kind: `TakeNull`, `TakeText`, `TakeInteger`, `TakeReal`,
/// `TakeBytes`; or to `Refuse`, with a reason in which %1 stands for the placeholder. All return the same type.
template <class Sink>
auto TakeValue(QVariant const& value, Sink&& sink)
{
    if (IsNull(value))
        return sink.TakeNull();
    // The kinds that the managers bind are taken as they are, without a conversion.
    switch (value.userType()) {
    case QMetaType::QString:
        return sink.TakeText(*static_cast<QString const*>(value.constData()));
    case QMetaType::Int:
        return sink.TakeInteger(*static_cast<int const*>(value.constData()));
    case QMetaType::LongLong:
    case QMetaType::Bool:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return sink.TakeInteger(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        if (value.toULongLong() > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
            break;
        return sink.TakeInteger(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        if (std::isnan(value.toDouble())) // SQLite would make NULL of it
            break;
        return sink.TakeReal(value.toDouble());
    case QMetaType::QDateTime: {
        QDateTime const time = value.toDateTime();
        if (!time.isValid())
            return sink.TakeNull();
        std::optional<qint64> const reading = ClockReading(time);
        if (!reading)
            break;
        return sink.TakeInteger(*reading);
    }
    case QMetaType::QByteArray:
        return sink.TakeBytes(value.toByteArray());
    default:
        return sink.Refuse(UnknownTypeWords(value));
    }
    return sink.Refuse(QStringLiteral("the value for %1 is out of range"));
}

} // namespace sync::database
