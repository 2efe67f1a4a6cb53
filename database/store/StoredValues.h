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

} // namespace sync::database
