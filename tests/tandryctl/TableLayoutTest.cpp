#include "tools/tandryctl/TableLayout.h"
#include "support/QtPrinters.h"
#include "tools/tandryctl/Text.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>

using namespace tandryctl;
using namespace tandry::test;

namespace {

using Rows = QVector<QVector<QString>>;

TableRow RowOf(QVector<QString> const& texts)
{
    TableRow row;
    for (QString const& text : texts) {
        bool isNumber = false;
        text.toLongLong(&isNumber);
        row.append({text, isNumber});
    }
    return row;
}

QStringList LaidOut(QVector<TableLayout::Column> const& columns, Rows const& rows, std::optional<int> width = {})
{
    TableLayout layout(columns, width);
    for (QVector<QString> const& row : rows)
        layout.Measure(RowOf(row));
    layout.Fit();
    QStringList lines{layout.Header()};
    for (QVector<QString> const& row : rows)
        lines.append(layout.Line(RowOf(row)));
    return lines;
}

QVector<TableLayout::Column> const PathAndState{{"path"_q, CellWidth::MayBeShortened}, {"state"_q, CellWidth::Full}};

} // namespace

TEST(TableLayout, LongCellDoesNotPadTheOtherLines)
{
    QString const path = "/"_q + QString(4095, QLatin1Char('x'));
    QStringList const lines = LaidOut(PathAndState, {{path, "new"_q}, {"/a"_q, "old"_q}});
    EXPECT_EQ(lines, QStringList({"path  state"_q, path + "  new"_q, "/a    old"_q}));
}

TEST(TableLayout, CellsUpToTheMostPaddingAreAligned)
{
    QString const path(TableLayout::MostPadding, QLatin1Char('x'));
    QStringList const lines = LaidOut(PathAndState, {{path, "new"_q}, {"/a"_q, "old"_q}});
    EXPECT_EQ(lines.at(2), "/a"_q + QString(TableLayout::MostPadding, QLatin1Char(' ')) + "old"_q);
}

TEST(TableLayout, LongTextsAreShortenedInTheMiddleToFit)
{
    QStringList const lines =
        LaidOut(PathAndState, {{"/home/ada/Documents/letters/2024/summer.txt"_q, "new"_q}, {"/a"_q, "old"_q}}, 30);
    for (QString const& line : lines)
        EXPECT_LE(DisplayWidth(line), 30) << line.toStdString();
    EXPECT_TRUE(lines.at(1).startsWith("/home/ada"_q)) << lines.at(1).toStdString();
    EXPECT_TRUE(lines.at(1).contains("…"_q));
    EXPECT_TRUE(lines.at(1).endsWith("summer.txt  new"_q));
    EXPECT_EQ(lines.at(2), "/a"_q + QString(23, QLatin1Char(' ')) + "old"_q);
}

TEST(TableLayout, WidestColumnsGiveWayFirst)
{
    QVector<TableLayout::Column> const columns{{"a"_q, CellWidth::MayBeShortened}, {"b"_q, CellWidth::MayBeShortened}};
    QString const narrow(15, QLatin1Char('n'));
    QStringList const lines = LaidOut(columns, {{QString(90, QLatin1Char('w')), narrow}}, 60);
    EXPECT_TRUE(lines.at(1).endsWith("  "_q + narrow)) << lines.at(1).toStdString();
    EXPECT_EQ(DisplayWidth(lines.at(1)), 60);
}

TEST(TableLayout, NumbersAndWordsStayWholeWhereTheyDoNotFit)
{
    QVector<TableLayout::Column> const columns{{"size"_q, CellWidth::Full}, {"path"_q, CellWidth::MayBeShortened}};
    QStringList const lines = LaidOut(columns, {{"1234567890"_q, QString(50, QLatin1Char('x'))}}, 15);
    EXPECT_EQ(lines.at(1), "1234567890  xxxxx…xxxxxx"_q);
}

TEST(TableLayout, NumbersStayWholeAmongTexts)
{
    QVector<TableLayout::Column> const columns{{"a"_q, CellWidth::MayBeShortened}, {"b"_q, CellWidth::MayBeShortened}};
    QStringList const lines = LaidOut(columns,
                                      {{"1234567890123"_q, QString(50, QLatin1Char('x'))},
                                       {""_q, "1234567890123"_q},
                                       {"1"_q, QString(50, QLatin1Char('y'))}},
                                      27);
    EXPECT_EQ(lines.at(1), "1234567890123  xxxxx…xxxxxx"_q) << "a column of numbers, one of them missing";
    EXPECT_EQ(lines.at(2), QString(15, QLatin1Char(' ')) + "1234567890123"_q) << "a number among texts";
    EXPECT_EQ(lines.at(3), "            1  yyyyy…yyyyyy"_q);
}

TEST(TableLayout, NamesOfColumnsGiveWayBeforeTextsBecomeUnreadable)
{
    QVector<TableLayout::Column> const columns{{"folderConfigurationId"_q, CellWidth::Full},
                                               {"path"_q, CellWidth::MayBeShortened}};
    QStringList const lines = LaidOut(columns, {{"1234567"_q, QString(50, QLatin1Char('x'))}}, 40);
    EXPECT_EQ(lines.at(0), "folder…ationId  path"_q);
    EXPECT_EQ(DisplayWidth(lines.at(1)), 40);
}

TEST(TableLayout, LastColumnsThatMayBeLeftOutAreLeftOutOneByOne)
{
    QVector<TableLayout::Column> const columns{
        {"a"_q, CellWidth::Full, 0, true}, {"b"_q, CellWidth::Full, 0, true}, {"c"_q, CellWidth::Full, 0, true}};
    auto const leftOut = [&](int width) {
        TableLayout layout(columns, width);
        layout.Measure(RowOf({"12345"_q, "1234"_q, "123"_q}));
        EXPECT_EQ(layout.LeftOut(), QStringList()) << "as long as nothing is printed";
        layout.Fit();
        EXPECT_LE(DisplayWidth(layout.Line(RowOf({"12345"_q, "1234"_q, "123"_q}))), std::max(width, 5));
        return layout.LeftOut();
    };
    EXPECT_EQ(leftOut(16), QStringList());
    EXPECT_EQ(leftOut(15), QStringList{"c"_q});
    EXPECT_EQ(leftOut(11), QStringList{"c"_q});
    EXPECT_EQ(leftOut(10), QStringList({"b"_q, "c"_q}));
    EXPECT_EQ(leftOut(1), QStringList({"b"_q, "c"_q})) << "one column stays";
}

TEST(TableLayout, ColumnsBeforeOneThatMustStayAreNotLeftOut)
{
    QVector<TableLayout::Column> const columns{
        {"a"_q, CellWidth::Full, 0, true}, {"b"_q, CellWidth::Full, 0, true}, {"c"_q, CellWidth::Full}};
    EXPECT_EQ(LaidOut(columns, {{"12345"_q, "1234"_q, "123"_q}}, 10).at(1), "12345  1234  123"_q);
}

TEST(TableLayout, TimesAreShortenedToTheMinuteAndThenToTheDay)
{
    QVector<TableLayout::Column> const columns{{"time"_q, CellWidth::Full}, {"path"_q, CellWidth::MayBeShortened}};
    TableRow const row{{"2024-07-01T10:00:00.123Z"_q, false, Style::None, true}, {QString(50, QLatin1Char('x'))}};
    auto const lineOf = [&](int width) {
        TableLayout layout(columns, width);
        layout.Measure(row);
        layout.Fit();
        return layout.Line(row);
    };
    EXPECT_TRUE(lineOf(76).startsWith("2024-07-01T10:00:00.123Z  "_q));
    EXPECT_EQ(lineOf(38), "2024-07-01T10:00:00.123Z  xxxxx…xxxxxx"_q) << "texts give way first";
    EXPECT_EQ(lineOf(37), "2024-07-01T10:00  xxxxxxxxx…xxxxxxxxx"_q) << "and get the room that times leave";
    EXPECT_EQ(lineOf(30), "2024-07-01T10:00  xxxxx…xxxxxx"_q);
    EXPECT_EQ(lineOf(29), "2024-07-01  xxxxxxxx…xxxxxxxx"_q);
    EXPECT_EQ(lineOf(20), "2024-07-01  xxxxx…xxxxxx"_q) << "no further";
}

TEST(TableLayout, TableThatFitsIsNotChanged)
{
    Rows const rows{{"/home/ada"_q, "new"_q}};
    EXPECT_EQ(LaidOut(PathAndState, rows, 80), LaidOut(PathAndState, rows));
}

TEST(TableLayout, StyleIsAroundTheTextAndNotItsPadding)
{
    TableLayout layout(PathAndState);
    layout.Measure({{"/abc"_q}, {"new"_q}});
    layout.Fit();
    EXPECT_EQ(layout.Line({{"/a"_q, false, Style::Attention}, {"new"_q}}), "\x1b[33m/a\x1b[0m    new"_q);
}
