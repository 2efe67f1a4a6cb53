#include "tools/findings/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QMetaType>

namespace tandry::findings {

namespace {

constexpr uint FirstOfTwoBytes = 0x80;
constexpr uint FirstOfThreeBytes = 0x800;
constexpr qint64 MsecsPerDay = 86'400'000;

char HexDigit(uint value)
{
    return "0123456789abcdef"[value & 0xfU];
}

char* WriteUnicodeEscape(char* at, uint unit)
{
    *at++ = '\\';
    *at++ = 'u';
    *at++ = HexDigit(unit >> 12U);
    *at++ = HexDigit(unit >> 8U);
    *at++ = HexDigit(unit >> 4U);
    *at++ = HexDigit(unit);
    return at;
}

/// Writes a control character, a quotation mark or a backslash.
char* WriteEscape(char* at, uint unit)
{
    char letter = 0;
    switch (unit) {
    case '"':
    case '\\':
        letter = static_cast<char>(unit);
        break;
    case '\b':
        letter = 'b';
        break;
    case '\f':
        letter = 'f';
        break;
    case '\n':
        letter = 'n';
        break;
    case '\r':
        letter = 'r';
        break;
    case '\t':
        letter = 't';
        break;
    default:
        return WriteUnicodeEscape(at, unit);
    }
    *at++ = '\\';
    *at++ = letter;
    return at;
}

/// Writes a character as a first byte, which has this mark, and a number of bytes that follow it.
char* WriteUtf8(char* at, uint character, uint firstByteMark, uint following)
{
    *at++ = static_cast<char>(firstByteMark | character >> 6U * following);
    while (following-- > 0)
        *at++ = static_cast<char>(0x80U | (character >> 6U * following & 0x3fU));
    return at;
}

char* WriteDigits(char* at, int number, int digits)
{
    for (int i = digits - 1; i >= 0; --i) {
        at[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return at + digits;
}

QJsonValue ToJson(QVariant const& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::QDateTime: {
        QByteArray text;
        AppendIsoTime(text, value.toDateTime());
        return value.toDateTime().isValid() ? QJsonValue(QString::fromLatin1(text)) : QJsonValue();
    }
    case QMetaType::QString:
        return value.toString().isNull() ? QJsonValue() : QJsonValue(value.toString());
    case QMetaType::QVariantMap: {
        QJsonObject object;
        QVariantMap const map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry)
            object.insert(entry.key(), ToJson(entry.value()));
        return object;
    }
    case QMetaType::QVariantList: {
        QJsonArray array;
        for (QVariant const& element : value.toList())
            array.append(ToJson(element));
        return array;
    }
    default:
        return QJsonValue::fromVariant(value);
    }
}

/// Appends what a document has for a single value. It needs a list around it.
void AppendByDocument(QByteArray& json, QJsonValue const& value)
{
    QByteArray const list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    json += list.mid(1, list.size() - 2);
}

/// A document rounds numbers to those that a double can be.
void AppendNumber(QByteArray& json, qint64 number)
{
    constexpr qint64 mostExact = qint64(1) << 53;
    if (number >= -mostExact && number <= mostExact)
        json += QByteArray::number(number);
    else
        AppendByDocument(json, number);
}

} // namespace

void AppendJsonString(QByteArray& json, QString const& text)
{
    constexpr int mostBytesOfAUnit = 6; // of an escape
    int const before = json.size();
    json.resize(before + 2 + mostBytesOfAUnit * text.size());
    char* at = json.data() + before;
    *at++ = '"';
    QChar const* const end = text.constData() + text.size();
    for (QChar const* unit = text.constData(); unit != end; ++unit) {
        uint const code = unit->unicode();
        if (code < FirstOfTwoBytes) {
            if (code < ' ' || code == '"' || code == '\\')
                at = WriteEscape(at, code);
            else
                *at++ = static_cast<char>(code);
        }
        else if (code < FirstOfThreeBytes) {
            at = WriteUtf8(at, code, 0xc0U, 1);
        }
        else if (!unit->isSurrogate()) {
            at = WriteUtf8(at, code, 0xe0U, 2);
        }
        else if (unit->isHighSurrogate() && unit + 1 != end && unit[1].isLowSurrogate()) {
            at = WriteUtf8(at, QChar::surrogateToUcs4(unit[0], unit[1]), 0xf0U, 3);
            ++unit;
        }
        else {
            at = WriteUnicodeEscape(at, code);
        }
    }
    *at++ = '"';
    json.resize(static_cast<int>(at - json.constData()));
}

void AppendIsoTime(QByteArray& text, QDateTime const& time)
{
    if (time.timeSpec() != Qt::UTC || !time.isValid()) {
        text += time.toString(Qt::ISODateWithMs).toLatin1();
        return;
    }
    // The time of day counts from midnight before the epoch too.
    qint64 const msecs = time.toMSecsSinceEpoch();
    qint64 const days = msecs / MsecsPerDay - (msecs % MsecsPerDay < 0 ? 1 : 0);
    int const ofDay = static_cast<int>(msecs - days * MsecsPerDay);
    int year = 0;
    int month = 0;
    int day = 0;
    QDate(1970, 1, 1).addDays(days).getDate(&year, &month, &day);
    if (year < 1 || year > 9999)
        return;

    constexpr int size = sizeof "1970-01-01T00:00:00.000Z" - 1;
    int const before = text.size();
    text.resize(before + size);
    char* at = WriteDigits(text.data() + before, year, 4);
    *at++ = '-';
    at = WriteDigits(at, month, 2);
    *at++ = '-';
    at = WriteDigits(at, day, 2);
    *at++ = 'T';
    at = WriteDigits(at, ofDay / 3'600'000, 2);
    *at++ = ':';
    at = WriteDigits(at, ofDay / 60'000 % 60, 2);
    *at++ = ':';
    at = WriteDigits(at, ofDay / 1000 % 60, 2);
    *at++ = '.';
    at = WriteDigits(at, ofDay % 1000, 3);
    *at = 'Z';
}

void AppendJsonValue(QByteArray& json, QVariant const& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        AppendNumber(json, value.toLongLong());
        break;
    case QMetaType::QString: {
        auto const& text = *static_cast<QString const*>(value.constData());
        if (text.isNull())
            json += "null";
        else
            AppendJsonString(json, text);
        break;
    }
    case QMetaType::QDateTime: {
        auto const& time = *static_cast<QDateTime const*>(value.constData());
        if (!time.isValid()) {
            json += "null";
            break;
        }
        json += '"';
        AppendIsoTime(json, time);
        json += '"';
        break;
    }
    case QMetaType::QVariantMap:
        if (static_cast<QVariantMap const*>(value.constData())->isEmpty())
            json += "{}"; // the properties of most records
        else
            json += QJsonDocument(ToJson(value).toObject()).toJson(QJsonDocument::Compact);
        break;
    case QMetaType::QVariantList:
        if (static_cast<QVariantList const*>(value.constData())->isEmpty())
            json += "[]";
        else
            json += QJsonDocument(ToJson(value).toArray()).toJson(QJsonDocument::Compact);
        break;
    default:
        AppendByDocument(json, ToJson(value));
        break;
    }
}

} // namespace tandry::findings
