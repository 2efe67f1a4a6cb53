#include "tools/tandryctl/Output.h"
#include "support/QtPrinters.h"

#include <QBuffer>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace tandryctl;
using namespace tandry::test;

namespace {

struct Thing
{
    int id;
    QString name;
    QDateTime time;
    qint64 size = 0;
};

Columns<Thing> ThingColumns()
{
    return {{"id", Shown::Always, [](Thing const& thing) { return thing.id; }},
            {"name", Shown::Always, [](Thing const& thing) { return thing.name; }},
            {"time", Shown::InFull, [](Thing const& thing) { return thing.time; }},
            {"size", Shown::InFull, [](Thing const& thing) { return thing.size; }}};
}

class OutputTest : public testing::Test
{
protected:
    OutputTest() { buffer.open(QIODevice::WriteOnly); }

    QByteArray List(OutputFormat format, QVector<Thing> const& things)
    {
        Output output(buffer, format);
        output.List(ThingColumns(), things);
        EXPECT_TRUE(output.Flush());
        return buffer.data();
    }

    QJsonArray Json(QVector<Thing> const& things)
    {
        QJsonDocument const document = QJsonDocument::fromJson(List(OutputFormat::Json, things));
        EXPECT_TRUE(document.isArray());
        return document.array();
    }

    QBuffer buffer;
};

/// A device on which every write fails.
class FullDevice : public QIODevice
{
public:
    FullDevice() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(char const*, qint64) override { return -1; }
};

} // namespace

TEST_F(OutputTest, PlainListingAlignsTheMainColumns)
{
    QVector<Thing> const things{{1, "a"_q, {}}, {12, "letters"_q, {}}};
    EXPECT_EQ(List(OutputFormat::Plain, things),
              "id  name\n"
              " 1  a\n"
              "12  letters\n");
}

TEST_F(OutputTest, PlainListingKeepsARowOnOneLine)
{
    EXPECT_EQ(List(OutputFormat::Plain, {{1, "a\nb\x1b"_q, {}}}),
              "id  name\n"
              " 1  a\\nb\\x1b\n");
}

TEST_F(OutputTest, PlainListingMeasuresWideCharacters)
{
    Columns<Thing> const columns{{"name", Shown::Always, [](Thing const& thing) { return thing.name; }},
                                 {"id", Shown::Always, [](Thing const& thing) { return thing.id; }}};
    Output output(buffer, OutputFormat::Plain);
    output.List(columns, QVector<Thing>{{1, "日本語"_q, {}}, {2, "abcdef"_q, {}}});
    EXPECT_TRUE(output.Flush());
    EXPECT_EQ(buffer.data(),
              "name    id\n"
              "日本語   1\n"
              "abcdef   2\n");
}

TEST_F(OutputTest, PlainListingOfNothingIsEmpty)
{
    EXPECT_EQ(List(OutputFormat::Plain, {}), "");
}

TEST_F(OutputTest, JsonListingOfNothingIsAnEmptyArray)
{
    EXPECT_EQ(Json({}), QJsonArray());
}

TEST_F(OutputTest, JsonListingHasAllColumns)
{
    QDateTime const time(QDate(2024, 2, 29), QTime(12, 30, 5, 7), Qt::UTC);
    QJsonArray const array = Json({{3, "a\nb \"c\""_q, time, 1}});
    ASSERT_EQ(array.size(), 1);
    QJsonObject const object = array.first().toObject();
    EXPECT_EQ(object.keys(), QStringList({"id"_q, "name"_q, "size"_q, "time"_q}));
    EXPECT_EQ(object.value("id"_q).toInt(), 3);
    EXPECT_EQ(object.value("name"_q).toString(), "a\nb \"c\""_q);
    EXPECT_EQ(object.value("time"_q).toString(), "2024-02-29T12:30:05.007Z"_q);
}

TEST_F(OutputTest, JsonListingDistinguishesNullFromEmpty)
{
    QJsonArray const array = Json({{1, QString(), {}}, {2, ""_q, {}}});
    EXPECT_TRUE(array.at(0).toObject().value("name"_q).isNull());
    EXPECT_TRUE(array.at(0).toObject().value("time"_q).isNull());
    EXPECT_TRUE(array.at(1).toObject().value("name"_q).isString());
}

TEST_F(OutputTest, HiddenValueIsAMissingKeyInJsonAndSaidInPlain)
{
    Columns<Thing> const columns{{"id", Shown::Always, [](Thing const& thing) { return thing.id; }},
                                 {"secret", Shown::Always, [](Thing const&) { return QVariant::fromValue(Hidden()); }}};
    Output json(buffer, OutputFormat::Json);
    json.List(columns, QVector<Thing>{{1, {}, {}}});
    EXPECT_TRUE(json.Flush());
    EXPECT_EQ(QJsonDocument::fromJson(buffer.data()).array(), (QJsonArray{QJsonObject{{"id"_q, 1}}}));
    EXPECT_EQ(CellText(QVariant::fromValue(Hidden()), Clock::Local), "(hidden)"_q);
}

TEST_F(OutputTest, JsonListingHasOneObjectPerLine)
{
    EXPECT_EQ(List(OutputFormat::Json, {{1, {}, {}}, {2, {}, {}}}).count('\n'), 4);
}

TEST_F(OutputTest, LocalDatesHaveNoZone)
{
    QDateTime const time(QDate(2024, 7, 1), QTime(9, 0), Qt::LocalTime);
    EXPECT_EQ(CellText(time, Clock::Local), "2024-07-01T09:00:00.000"_q);
}

TEST_F(OutputTest, UtcTimesHaveTheirZoneInEveryClock)
{
    QDateTime const time(QDate(2024, 7, 1), QTime(9, 0), Qt::UTC);
    EXPECT_EQ(CellText(time, Clock::Utc), "2024-07-01T09:00:00.000Z"_q);
    QDateTime const shown = QDateTime::fromString(CellText(time, Clock::Local), Qt::ISODateWithMs);
    EXPECT_EQ(shown, time);
    EXPECT_NE(shown.timeSpec(), Qt::LocalTime);
}

TEST_F(OutputTest, NamedValueHasItsNameInPlainAndIsANumberInJson)
{
    static constexpr sync::config::NamedValue Values[] = {{7, "done well"}};
    tandry::findings::ValueNames const names(sync::config::ValueNames(Values, Values + 1, false));
    Columns<Thing> columns{{"id", Shown::Always, [](Thing const& thing) { return thing.id; }}};
    columns.first().names = &names;
    QVector<Thing> const things{{7, {}, {}}, {8, {}, {}}};
    Output plain(buffer, OutputFormat::Plain);
    plain.List(columns, things);
    EXPECT_TRUE(plain.Flush());
    EXPECT_EQ(buffer.data(), "id\n7 done well\n8\n");

    buffer.buffer().clear();
    buffer.seek(0);
    Output json(buffer, OutputFormat::Json);
    json.List(columns, things);
    EXPECT_TRUE(json.Flush());
    EXPECT_EQ(QJsonDocument::fromJson(buffer.data()).array(),
              (QJsonArray{QJsonObject{{"id"_q, 7}}, QJsonObject{{"id"_q, 8}}}));
}

TEST_F(OutputTest, ShownRecordHasALineForEachColumnAndExtra)
{
    Output output(buffer, OutputFormat::Plain);
    output.Show(ThingColumns(), Thing{7, "x"_q, {}, 5}, {{"server", "office"_q}});
    EXPECT_TRUE(output.Flush());
    EXPECT_EQ(buffer.data(),
              "id      7\n"
              "name    x\n"
              "time\n"
              "size    5\n"
              "server  office\n");
}

TEST_F(OutputTest, ShownRecordInJsonIsAnArrayOfOneWithTheExtras)
{
    Output output(buffer, OutputFormat::Json);
    output.Show(ThingColumns(), Thing{7, "x"_q, {}, 5}, {{"serverId", QVariant()}});
    EXPECT_TRUE(output.Flush());
    QJsonArray const array = QJsonDocument::fromJson(buffer.data()).array();
    ASSERT_EQ(array.size(), 1);
    EXPECT_TRUE(array.first().toObject().value("serverId"_q).isNull());
    EXPECT_EQ(array.first().toObject().value("id"_q).toInt(), 7);
}

TEST_F(OutputTest, ReportIsASentenceInPlainAndARecordInJson)
{
    Output plain(buffer, OutputFormat::Plain);
    plain.Report("done it"_q, ThingColumns(), Thing{7, "x"_q, {}});
    EXPECT_TRUE(plain.Flush());
    EXPECT_EQ(buffer.data(), "done it\n");

    buffer.buffer().clear();
    buffer.seek(0);
    Output json(buffer, OutputFormat::Json);
    json.Report("done it"_q, ThingColumns(), Thing{7, "x"_q, {}});
    EXPECT_TRUE(json.Flush());
    EXPECT_EQ(QJsonDocument::fromJson(buffer.data()).array().size(), 1);
}

TEST_F(OutputTest, LineIsNotPartOfJson)
{
    Output output(buffer, OutputFormat::Json);
    output.PrintLine("for people"_q);
    EXPECT_TRUE(output.Flush());
    EXPECT_EQ(buffer.data(), "");
}

TEST_F(OutputTest, FlushReportsAFullDisk)
{
    FullDevice device;
    Output output(device, OutputFormat::Plain);
    output.PrintLine("lost"_q);
    EXPECT_FALSE(output.Flush());
}

TEST_F(OutputTest, FlushReportsAnEarlierFailure)
{
    FullDevice device;
    Output output(device, OutputFormat::Plain);
    for (int i = 0; i < 100'000; ++i)
        output.PrintLine("lost"_q);
    EXPECT_FALSE(output.Flush());
}
