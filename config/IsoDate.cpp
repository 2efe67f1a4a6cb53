#include "config/IsoDate.h"

#include <QLocale>
#include <QStringView>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace sync::config {

namespace {

constexpr int DateSize = 10;  // "2020-01-02"
constexpr int MinuteSize = 5; // "03:04"
constexpr int SecondSize = 8; // "03:04:05"

/// Returns the number that a text is, around which there may be blanks.
std::optional<int> ToInt(QStringView text)
{
    bool isNumber = false;
    int const number = QLocale::c().toInt(text, &isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// Returns the number that a text without blanks is.
std::optional<int> ToIntAlone(QStringView text)
{
    auto const isBlank = [](QChar character) { return character.isSpace(); };
    return std::none_of(text.begin(), text.end(), isBlank) ? ToInt(text) : std::nullopt;
}

bool HasCharacterAt(QStringView text, int place, char first, char second)
{
    return text.size() > place && (text.at(place) == QLatin1Char(first) || text.at(place) == QLatin1Char(second));
}

QDate ToDate(QStringView text)
{
    if (text.size() < DateSize || !text.at(4).isPunct() || !text.at(7).isPunct() ||
        (text.size() > DateSize && text.at(DateSize).isDigit()))
        return {};
    auto const year = ToIntAlone(text.mid(0, 4));
    auto const month = ToIntAlone(text.mid(5, 2));
    auto const day = ToIntAlone(text.mid(8, 2));
    return year && month && day && *year > 0 ? QDate(*year, *month, *day) : QDate();
}

/// Whether the text is a difference from UTC, such as "+02:00", "+0200" or "+2".
bool IsOffset(QStringView text)
{
    constexpr int mostSize = 6;
    if (text.size() < 2 || text.size() > mostSize)
        return false;
    QStringView const numbers = text.mid(1);
    auto const colon = numbers.indexOf(QLatin1Char(':'));
    QStringView const hours = numbers.left(colon == -1 ? 2 : colon);
    QStringView const minutes = numbers.mid(colon == -1 ? hours.size() : colon + 1);
    auto const hour = ToInt(hours);
    auto const minute = minutes.isEmpty() ? 0 : ToInt(minutes);
    return hour && *hour < 24 && minute && *minute >= 0 && *minute < 60;
}

/// Removes the zone from the end of a time. Returns false if what looks like one is none.
bool RemoveZone(QStringView& time)
{
    if (time.endsWith(QLatin1Char('Z'), Qt::CaseInsensitive)) {
        time.chop(1);
        return true;
    }
    auto const isSign = [](QChar character) { return character == QLatin1Char('+') || character == QLatin1Char('-'); };
    auto const sign = std::find_if(time.rbegin(), time.rend(), isSign);
    if (sign == time.rend())
        return true;
    auto const place = time.rend() - sign - 1;
    bool const isOffset = IsOffset(time.mid(place));
    time = time.left(place);
    return isOffset;
}

/// Returns the fraction that digits behind a point are.
std::optional<double> ToFraction(QStringView digits)
{
    auto const number = ToIntAlone(digits);
    return number ? std::optional(*number / std::pow(10, double(digits.size()))) : std::nullopt;
}

QStringView WithoutBlanksAtItsEnd(QStringView text)
{
    while (!text.isEmpty() && text.last().isSpace())
        text.chop(1);
    return text;
}

/// Rounds, but to no whole second.
int ToMsec(double fraction)
{
    return std::min(qRound(fraction * 1000), 999);
}

/// The seconds and milliseconds behind the minutes; nothing if they cannot be read.
std::optional<std::pair<int, int>> ToSeconds(QStringView text)
{
    constexpr int mostOfSecond = 4; // digits
    constexpr int mostOfMinute = 5;
    if (text.size() == MinuteSize)
        return std::pair(0, 0);
    if (HasCharacterAt(text, MinuteSize, '.', ',')) {
        auto const minute = ToFraction(text.mid(MinuteSize + 1, mostOfMinute));
        if (!minute)
            return std::nullopt;
        double const seconds = *minute * 60;
        return std::pair(int(seconds), ToMsec(seconds - int(seconds)));
    }
    auto const second = ToIntAlone(text.mid(MinuteSize + 1, 2));
    if (text.at(MinuteSize) != QLatin1Char(':') || !second)
        return std::nullopt;
    if (!HasCharacterAt(text, SecondSize, '.', ','))
        return std::pair(*second, 0); // whatever stands behind them
    QStringView const digits = text.mid(SecondSize + 1, mostOfSecond);
    if (digits.isEmpty())
        return std::pair(*second, 0);
    auto const fraction = digits.first().isDigit() ? ToFraction(WithoutBlanksAtItsEnd(digits)) : std::nullopt;
    return fraction ? std::optional(std::pair(*second, ToMsec(*fraction))) : std::nullopt;
}

} // namespace

QDateTime ReadIsoDate(QString const& text)
{
    QDateTime const none({}, {}, Qt::UTC);
    QDate const date = ToDate(text);
    if (!date.isValid())
        return none;
    if (text.size() == DateSize)
        return {date, QTime(0, 0), Qt::UTC};

    QStringView time = QStringView(text).mid(DateSize + 1);
    QChar const separator = text.at(DateSize).toUpper();
    bool const isSeparated = separator == QLatin1Char('T') || separator == QLatin1Char(' ');
    if (!isSeparated || time.isEmpty() || !RemoveZone(time) || time.size() < MinuteSize ||
        time.at(2) != QLatin1Char(':'))
        return none;
    auto const hour = ToIntAlone(time.left(2));
    auto const minute = ToIntAlone(time.mid(3, 2));
    auto const seconds = ToSeconds(time);
    if (!hour || !minute || !seconds)
        return none;
    bool const isEndOfDay = *hour == 24 && *minute == 0 && *seconds == std::pair(0, 0);
    QTime const clock(isEndOfDay ? 0 : *hour, *minute, seconds->first, seconds->second);
    return clock.isValid() ? QDateTime(date.addDays(isEndOfDay ? 1 : 0), clock, Qt::UTC) : none;
}

} // namespace sync::config
