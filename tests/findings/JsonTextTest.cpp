#include "tools/findings/JsonText.h"

#include "support/QtPrinters.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTime>

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace tandry::findings;
using namespace tandry::test;

namespace {

/// Returns the bytes that Qt's document has for a single value.
QByteArray OfDocument(QJsonValue const& value)
{
    QByteArray const list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return list.mid(1, list.size() - 2);
}

QByteArray OfString(QString const& text)
{
    QByteArray json;
    AppendJsonString(json, text);
    return json;
}

QByteArray OfValue(QVariant const& value)
{
    QByteArray json;
    AppendJsonValue(json, value);
    return json;
}

QByteArray IsoTime(QDateTime const& time)
{
    QByteArray text;
    AppendIsoTime(text, time);
    return text;
}

} // namespace

TEST(JsonText, EveryCodeUnitIsWrittenAsTheDocumentWritesIt)
{
    for (uint unit = 0; unit <= 0xffff; ++unit) { // surrogates alone too
        QString const text = "a"_q + QChar(unit) + "b"_q;
        ASSERT_EQ(OfString(text), OfDocument(text)) << unit;
        QString const atTheEnd(1, QChar(unit));
        ASSERT_EQ(OfString(atTheEnd), OfDocument(atTheEnd)) << unit;
    }
}

TEST(JsonText, CharactersBeyondTheFirstPlaneAreWrittenAsTheDocumentWritesThem)
{
    for (char32_t character : {0x10000U, 0x1f600U, 0xfffffU, 0x10ffffU}) {
        QString const text = QString::fromUcs4(&character, 1);
        EXPECT_EQ(OfString(text), OfDocument(text));
        EXPECT_EQ(OfString(text), "\"" + text.toUtf8() + "\"");
    }
}

TEST(JsonText, OddTextsAreWrittenAsTheDocumentWritesThem)
{
    // Units that need an escape, begin or end a pair, or have one, two or three bytes.
    constexpr ushort Units[] = {'a',
                                '"',
                                '\\',
                                '\n',
                                0,
                                0x1f,
                                0x7f,
                                0x80,
                                0x7ff,
                                0x800,
                                0x2028,
                                0xd800,
                                0xdbff,
                                0xdc00,
                                0xdfff,
                                0xe000,
                                0xfeff,
                                0xffff};
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        QString text;
        for (uint left = random() % 8; left > 0; --left)
            text += QChar(Units[random() % std::size(Units)]);
        ASSERT_EQ(OfString(text), OfDocument(text));
    }
}

TEST(JsonText, StringIsAppended)
{
    QByteArray json = "[";
    AppendJsonString(json, "é\t"_q);
    EXPECT_EQ(json, "[\"\xc3\xa9\\t\"");
}

TEST(JsonText, TimeInUtcHasTheFormOfQt)
{
    constexpr qint64 MsecsPerYear = 31'556'952'000;
    std::mt19937_64 random(7);
    for (int round = 0; round < 20'000; ++round) {
        qint64 const msecs = qint64(random() % quint64(9000 * MsecsPerYear)) - 1960 * MsecsPerYear;
        QDateTime const time = QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
        ASSERT_EQ(QString::fromLatin1(IsoTime(time)), time.toString(Qt::ISODateWithMs)) << msecs;
    }
    for (QDate const date : {QDate(1, 1, 1),
                             QDate(1969, 12, 31),
                             QDate(1970, 1, 1),
                             QDate(2024, 2, 29),
                             QDate(9999, 12, 31),
                             QDate(-1, 12, 31),
                             QDate(10000, 1, 1),
                             QDate(-44, 3, 15)}) {
        for (QTime const ofDay : {QTime(0, 0), QTime(23, 59, 59, 999)}) {
            QDateTime const time(date, ofDay, Qt::UTC);
            EXPECT_EQ(QString::fromLatin1(IsoTime(time)), time.toString(Qt::ISODateWithMs));
        }
    }
    EXPECT_EQ(IsoTime(QDateTime(QDate(2024, 2, 29), QTime(9, 5, 3, 7), Qt::UTC)), "2024-02-29T09:05:03.007Z");
}

TEST(JsonText, ClockReadingHasNoZone)
{
    EXPECT_EQ(IsoTime(QDateTime(QDate(2024, 7, 1), QTime(9, 0), Qt::LocalTime)), "2024-07-01T09:00:00.000");
    EXPECT_EQ(IsoTime(QDateTime()), "");
}

TEST(JsonText, ValuesAreWrittenAsTheDocumentWritesThem)
{
    constexpr qint64 Least = std::numeric_limits<qint64>::min();
    constexpr qint64 Most = std::numeric_limits<qint64>::max();
    for (qint64 const number : {qint64(0), qint64(-1), (qint64(1) << 53) + 1, Least, Most})
        EXPECT_EQ(OfValue(number), OfDocument(number));
    EXPECT_EQ(OfValue(-7), "-7");
    EXPECT_EQ(OfValue(true), "true");
    EXPECT_EQ(OfValue(0.5), "0.5");
    EXPECT_EQ(OfValue(QVariant()), "null");
    EXPECT_EQ(OfValue(QString()), "null");
    EXPECT_EQ(OfValue(""_q), "\"\"");
    EXPECT_EQ(OfValue(QDateTime()), "null");
}

TEST(JsonText, ListsAndMapsHoldTimesAndNulls)
{
    QDateTime const time(QDate(2024, 7, 1), QTime(9, 0), Qt::UTC);
    EXPECT_EQ(OfValue(QVariantMap()), "{}");
    EXPECT_EQ(OfValue(QVariantList()), "[]");
    EXPECT_EQ(OfValue(QVariantMap{{"b"_q, time}, {"a"_q, QVariantList{1, QString(), "x\n"_q}}}),
              R"({"a":[1,null,"x\n"],"b":"2024-07-01T09:00:00.000Z"})");
}
