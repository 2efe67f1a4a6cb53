#include "tools/carry/JsonReader.h"

#include "support/QtPrinters.h"
#include "tools/findings/JsonText.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace tandry::carry;
using tandry::test::operator""_q;

namespace {

QByteArray Written(QString const& text)
{
    QByteArray json;
    tandry::findings::AppendJsonString(json, text);
    return json;
}

/// Returns the value of the only member; fails the test if the line is refused.
JsonValue Member(QByteArray const& value)
{
    JsonFault fault;
    auto const object = ReadJsonObject("{\"a\":" + value + "}\n", fault);
    EXPECT_TRUE(object) << value.constData() << ": " << fault.reason.toStdString();
    return object && object->members.size() == 1 ? object->members.front().value : JsonValue();
}

QString ReasonAgainst(QByteArray const& line)
{
    JsonFault fault;
    return ReadJsonObject(line, fault) ? QString() : fault.reason;
}

/// Any UTF-16, with more of what needs an escape than chance would give.
QString RandomText(std::mt19937& random)
{
    static QString const special = "\"\\/\n\t"_q + QChar(0) + QChar(0x1f) + QChar(0x7f) + QChar(0xd800) +
                                   QChar(0xdbff) + QChar(0xdc00) + QChar(0xdfff) + QChar(0xfeff) + QChar(0xffff) +
                                   QChar(0x2028);
    QString text(""_q);
    for (auto length = random() % 12; length > 0; --length)
        text += random() % 2 == 0 ? special.at(int(random() % ulong(special.size()))) : QChar(ushort(random()));
    return text;
}

} // namespace

TEST(JsonReaderTest, AnyTextIsReadAsItWasWritten)
{
    std::mt19937 random(20261122);
    for (int i = 0; i < 20'000; ++i) {
        QString const text = RandomText(random);
        JsonValue const value = Member(Written(text));
        EXPECT_EQ(value.type, JsonValue::Type::Text);
        ASSERT_TRUE(value.text == text) << Written(text).toHex().constData();
        EXPECT_FALSE(value.text.isNull());
    }
}

TEST(JsonReaderTest, ValuesOfEachTypeAreRead)
{
    EXPECT_EQ(Member("null").type, JsonValue::Type::Null);
    EXPECT_EQ(Member("true").integer, 1);
    EXPECT_EQ(Member("false").type, JsonValue::Type::Bool);
    EXPECT_EQ(Member("{}").type, JsonValue::Type::Object);
    EXPECT_EQ(Member(" {\"b\" : -1 , \"c\":\"\"}").members.at(0).value.integer, -1);
    EXPECT_EQ(Member("\"\\u00e9\\/\\b\\f\\r\\t\\n\"").text, "é/\b\f\r\t\n"_q);
}

TEST(JsonReaderTest, IntegersOf64BitsAreExact)
{
    for (qint64 const number : {qint64(0),
                                qint64(-1),
                                (qint64(1) << 53) + 1,
                                std::numeric_limits<qint64>::max(),
                                std::numeric_limits<qint64>::min()}) {
        JsonValue const value = Member(QByteArray::number(number));
        EXPECT_EQ(value.type, JsonValue::Type::Integer);
        EXPECT_EQ(value.integer, number);
    }
    for (char const* number : {"9223372036854775808",
                               "-9223372036854775809",
                               "99999999999999999999",
                               "1.0",
                               "1e3",
                               "01",
                               "-0",
                               "+1",
                               "-",
                               ".5",
                               "0x1",
                               "NaN"})
        EXPECT_NE(ReasonAgainst(QByteArray("{\"a\":") + number + '}'), QString()) << number;
}

TEST(JsonReaderTest, WhatIsNoObjectIsRefused)
{
    for (char const* line : {"",
                             "\n",
                             "null",
                             "[]",
                             "{",
                             "{}x",
                             "{}{}",
                             "{a:1}",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1,}",
                             "{,}",
                             "{\"a\":1 \"b\":2}",
                             "{\"a\":[1]}",
                             "{\"a\":nul}",
                             "{\"a\":nullx}",
                             "{\"a\":\"b",
                             "{\"a\":\"b\\",
                             "{\"a\":\"\\u00e\"}",
                             "{\"a\":\"\\u00eg\"}",
                             "{\"a\":\"\\x\"}",
                             "{\"a\":\"\t\"}",
                             "{\"a\":{\"b\":{\"c\":{}}}}"})
        EXPECT_NE(ReasonAgainst(line), QString()) << line;
    EXPECT_NE(ReasonAgainst(QByteArray("{\"a\":\"\0\"}", 9)), QString());
    EXPECT_NE(ReasonAgainst(QByteArray("{}\0", 3)), QString());
    EXPECT_EQ(ReasonAgainst("{\"a\":{\"b\":{\"c\":1}}} \r\n"), QString());
}

TEST(JsonReaderTest, TextThatIsNotUtf8IsRefused)
{
    // Cut, overlong, a surrogate, beyond Unicode, and a byte that no text has.
    for (char const* bytes : {"\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xff"})
        EXPECT_EQ(ReasonAgainst(QByteArray("{\"a\":\"") + bytes + "\"}"), "the text is not valid UTF-8"_q) << bytes;
}

TEST(JsonReaderTest, KeyThatStandsTwiceIsRefusedAndNamed)
{
    JsonFault fault;
    EXPECT_FALSE(ReadJsonObject("{\"a\":1,\"b\":{\"c\":1,\"c\":2}}", fault));
    EXPECT_EQ(fault.key, "b"_q);
    EXPECT_FALSE(ReadJsonObject("{\"a\":1,\"\\u0061\":2}", fault));
    EXPECT_EQ(fault.key, "a"_q);
    EXPECT_EQ(fault.reason, "the key stands twice"_q);
}

TEST(JsonReaderTest, AnyLineIsReadOrRefusedWithAPlaceInIt)
{
    QByteArray const line =
        "{\"file\":12,\"name\":\"a\\ud800\xc3\xa9\",\"size\":-34,\"n\":null,\"m\":{\"missing\":5}}\n";
    std::mt19937 random(815);
    int refused = 0;
    for (int i = 0; i < 50'000; ++i) {
        QByteArray spoilt = line;
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            int const at = int(random() % ulong(spoilt.size()));
            switch (random() % 3) {
            case 0:
                spoilt[at] = char(random());
                break;
            case 1:
                spoilt.remove(at, 1);
                break;
            default:
                spoilt.insert(at, line.at(int(random() % ulong(line.size()))));
            }
        }
        JsonFault fault;
        if (ReadJsonObject(spoilt, fault))
            continue;
        ++refused;
        ASSERT_NE(fault.reason, QString());
        ASSERT_GE(fault.column, 1);
        ASSERT_LE(fault.column, spoilt.size() + 1);
    }
    EXPECT_GT(refused, 10'000);
}
