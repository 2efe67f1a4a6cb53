#pragma once

#include "StoreSuiteFixture.h"

#include <QDateTime>
#include <QTimeZone>

#include <limits>

namespace tandry::storesuite {

/// Values that are written and read back: integers, texts, date-times and NULL.
class ValueSuite : public StoreSuite
{
protected:
    /// Writes a text and reads it back; returns an invalid value if the store refuses it.
    QVariant TextThroughStore(QString const& text)
    {
        auto const query = Query(statements::AddServer, {{QStringLiteral(":alias"), text}});
        if (!query->exec())
            return {};
        return Value(1, statements::GetServerById, {{QStringLiteral(":id"), query->lastInsertId()}});
    }

    void ExpectUnchanged(QString const& text)
    {
        QVariant const back = TextThroughStore(text);
        ASSERT_TRUE(back.isValid()) << "the store refused " << text.toStdString();
        EXPECT_EQ(back.toString(), text) << text.toStdString();
    }

    /// For texts that not every store can keep: it may refuse but must not change them.
    void ExpectUnchangedOrRefused(QString const& text)
    {
        QVariant const back = TextThroughStore(text);
        EXPECT_TRUE(!back.isValid() || back.toString() == text) << "came back as " << back.toString().toStdString();
    }

    QVariant DateThroughStore(QVariant const& date)
    {
        int const id = Insert(statements::AddFolder, {{QStringLiteral(":lastSyncTime"), date}});
        return Value(11, statements::GetFolderById, {{QStringLiteral(":id"), id}});
    }

    /// Expects the same clock reading. The store need not keep the time zone: the reader sets it, as the managers do.
    void ExpectSameReading(QDateTime const& date, Qt::TimeSpec readAs = Qt::UTC)
    {
        QDateTime back = DateThroughStore(date).toDateTime();
        ASSERT_TRUE(back.isValid()) << date.toString(Qt::ISODateWithMs).toStdString();
        back.setTimeSpec(readAs);
        EXPECT_EQ(back.date(), date.date()) << date.toString(Qt::ISODateWithMs).toStdString();
        EXPECT_EQ(back.time(), date.time()) << date.toString(Qt::ISODateWithMs).toStdString();
    }
};

// Integers.

TEST_P(ValueSuite, IntegersOf32BitsComeBack)
{
    for (int value : {0, 1, -1, 31, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        int const id = Insert(statements::AddFolder, {{QStringLiteral(":privileges"), value}});
        QVariant const back = Value(18, statements::GetFolderById, {{QStringLiteral(":id"), id}});
        EXPECT_FALSE(back.isNull());
        EXPECT_EQ(back.toInt(), value);
    }
}

TEST_P(ValueSuite, SizesOf64BitsComeBack)
{
    qlonglong const limits[] = {std::numeric_limits<qlonglong>::min(), std::numeric_limits<qlonglong>::max()};
    for (qlonglong value : {0LL, -1LL, 5'000'000'000LL, 9'007'199'254'740'993LL, limits[0], limits[1]}) {
        ASSERT_TRUE(Exec(statements::AddFile.arg(statements::FileTables[0]), {{QStringLiteral(":size"), value}}));
        EXPECT_EQ(Column(10, statements::GetFiles.arg(statements::FileTables[0])).back().toLongLong(), value);
    }
}

TEST_P(ValueSuite, IdOf64BitsFindsTheRow)
{
    int const id = AddServer(QStringLiteral("a"));
    QVariant const wide(static_cast<qlonglong>(id));
    EXPECT_EQ(Value(1, statements::GetServerById, {{QStringLiteral(":id"), wide}}).toString(), QStringLiteral("a"));
}

TEST_P(ValueSuite, IdBeyond32BitsIsNotCut)
{
    int const id = AddServer(QStringLiteral("a"));
    QVariant const beyond((1LL << 32) + id);
    EXPECT_TRUE(Column(0, statements::GetServerById, {{QStringLiteral(":id"), beyond}}).empty());
}

// Texts.

TEST_P(ValueSuite, TextsComeBackUnchanged)
{
    for (char const* text : {"plain",
                             " blanks around ",
                             "\ttab\nline\r\nend\r",
                             "it's \"quoted\" `here` [and] there",
                             "back\\slash % _ * ?",
                             "<a href='x'>&amp;]]></a>",
                             "Zo\u00eb na\u00efve \u0416\u0443\u043a \u6f22\u5b57",
                             "e\u0301 is not \u00e9",
                             "\U0001F600\U0001F468\u200D\U0001F469\u200D\U0001F467",
                             "\uFEFFmark in front",
                             "\uFFFD\uFFFC\U0010FFFD"})
        ExpectUnchanged(QString::fromUtf8(text));
}

TEST_P(ValueSuite, TextsThatLookLikeNumbersOrDatesStayTexts)
{
    for (char const* text :
         {"0", "007", "1e3", "0x10", "-0", "1.0", "9999999999999999999", " 5", "NULL", "true", "2024-01-02T03:04:05Z"})
        ExpectUnchanged(QString::fromUtf8(text));
}

TEST_P(ValueSuite, LongTextComesBackComplete)
{
    ExpectUnchanged(QStringLiteral("\u00e4bc").repeated(300'000));
}

TEST_P(ValueSuite, TextWithAnEmbeddedNulComesBackOrIsRefused)
{
    ExpectUnchangedOrRefused(QString::fromUtf8("before\0after", 12));
    ExpectUnchangedOrRefused(QString(QChar(0)));
}

TEST_P(ValueSuite, LoneSurrogatesComeBackOrAreRefused)
{
    ExpectUnchangedOrRefused(QString(QChar(0xD83D)));
    ExpectUnchangedOrRefused(QStringLiteral("high at the end ") + QChar(0xD83D));
    ExpectUnchangedOrRefused(QChar(0xDE00) + QStringLiteral(" low in front"));
    ExpectUnchangedOrRefused(QString(QChar(0xDE00)) + QChar(0xD83D));
}

TEST_P(ValueSuite, NoncharactersComeBackOrAreRefused)
{
    for (char const* text : {"\uFFFE", "\uFFFF", "\uFDD0", "\U0001FFFE", "\U0010FFFF"})
        ExpectUnchangedOrRefused(QString::fromUtf8(text));
}

TEST_P(ValueSuite, RefusedTextLeavesNoRow)
{
    QString const text = QString(QChar(0xD83D));
    bool const kept = Exec(statements::AddServer, Server(text));
    EXPECT_EQ(Aliases().size(), kept ? 1 : 0);
}

TEST_P(ValueSuite, EmptyTextComesBackEmptyAndIsFoundByAnEmptyText)
{
    Insert(statements::AddServer,
           {{QStringLiteral(":davUrl"), QStringLiteral("")}, {QStringLiteral(":webServiceUrl"), QStringLiteral("")}});
    QVariant const back = Value(
        2,
        statements::GetServerByUrls,
        {{QStringLiteral(":davUrl"), QStringLiteral("")}, {QStringLiteral(":webServiceUrl"), QStringLiteral("")}});
    EXPECT_TRUE(back.toString().isEmpty());
}

TEST_P(ValueSuite, NullTextIsNullAndMatchesNothing)
{
    int const id = Insert(statements::AddServer,
                          {{QStringLiteral(":davUrl"), QString()}, {QStringLiteral(":webServiceUrl"), QString()}});
    EXPECT_TRUE(Value(2, statements::GetServerById, {{QStringLiteral(":id"), id}}).isNull());
    EXPECT_TRUE(Column(0,
                       statements::GetServerByUrls,
                       {{QStringLiteral(":davUrl"), QString()}, {QStringLiteral(":webServiceUrl"), QString()}})
                    .empty());
}

TEST_P(ValueSuite, TextsMatchOnlyThemselves)
{
    QString const path = QStringLiteral("/Caf\u00e9/a");
    Insert(statements::AddFolder, {{QStringLiteral(":clientPath"), path}});
    auto const found = [&](QString const& other) {
        return !Column(0, statements::GetFolderByClientPath, {{QStringLiteral(":clientPath"), other}}).empty();
    };
    EXPECT_TRUE(found(path));
    EXPECT_FALSE(found(QStringLiteral("/caf\u00e9/a"))) << "case";
    EXPECT_FALSE(found(QStringLiteral("/Cafe/a"))) << "accent";
    EXPECT_FALSE(found(QStringLiteral("/Cafe\u0301/a"))) << "normal form";
    EXPECT_FALSE(found(QStringLiteral("/Caf\u00e9/a "))) << "blank behind";
    EXPECT_FALSE(found(QStringLiteral("/Caf\u00e9/a/"))) << "slash behind";
    EXPECT_FALSE(found(QStringLiteral("/Caf_/a"))) << "wildcard";
}

// Date-times.

TEST_P(ValueSuite, DateInUtcComesBackWithItsMilliseconds)
{
    ExpectSameReading(QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 999), Qt::UTC));
}

TEST_P(ValueSuite, DateInLocalTimeKeepsItsClockReading)
{
    ExpectSameReading(QDateTime(QDate(2024, 7, 1), QTime(12, 30, 0, 1), Qt::LocalTime));
    ExpectSameReading(QDateTime(QDate(2024, 1, 1), QTime(12, 30, 0, 1), Qt::LocalTime), Qt::LocalTime);
}

TEST_P(ValueSuite, DateWithAnOffsetKeepsItsClockReading)
{
    ExpectSameReading(QDateTime(QDate(2024, 7, 1), QTime(1, 2, 3, 4), Qt::OffsetFromUTC, 5 * 3600 + 1800));
    ExpectSameReading(QDateTime(QDate(2024, 7, 1), QTime(23, 2, 3, 4), Qt::OffsetFromUTC, -11 * 3600));
}

TEST_P(ValueSuite, DateInATimeZoneKeepsItsClockReading)
{
    QTimeZone const zone("America/St_Johns");
    if (!zone.isValid())
        GTEST_SKIP() << "this system knows no time zones";
    ExpectSameReading(QDateTime(QDate(2024, 7, 1), QTime(1, 2, 3, 4), zone));
}

TEST_P(ValueSuite, HourThatSummerTimeSkipsComesBack)
{
    // These local times do not exist in time zones of Europe and America.
    ExpectSameReading(QDateTime(QDate(2021, 3, 28), QTime(2, 30), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(2021, 3, 28), QTime(1, 30), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(2021, 3, 14), QTime(2, 30), Qt::UTC));
}

TEST_P(ValueSuite, FarDatesComeBack)
{
    ExpectSameReading(QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(1600, 2, 29), QTime(6, 7, 8, 9), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC));
    ExpectSameReading(QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999), Qt::UTC));
}

TEST_P(ValueSuite, InvalidDateComesBackInvalid)
{
    EXPECT_FALSE(DateThroughStore(QDateTime()).toDateTime().isValid());
    EXPECT_FALSE(DateThroughStore(QVariant()).toDateTime().isValid());
}

// NULL.

TEST_P(ValueSuite, NullReadsAsZeroAsAnEmptyTextAndAsAnInvalidDate)
{
    int const id = Insert(statements::AddFolder, {});
    auto const query = Query(statements::GetFolderById, {{QStringLiteral(":id"), id}});
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    for (int column = 1; column < 22; ++column) {
        EXPECT_TRUE(query->value(column).isNull()) << column;
        EXPECT_EQ(query->value(column).toInt(), 0) << column;
        EXPECT_TRUE(query->value(column).toString().isEmpty()) << column;
        EXPECT_FALSE(query->value(column).toDateTime().isValid()) << column;
    }
}

} // namespace tandry::storesuite
