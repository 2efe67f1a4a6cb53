#include "tools/tandryctl/TableLayout.h"
#include "support/QtPrinters.h"
#include "tools/tandryctl/Text.h"

#include <QStringList>

#include <gtest/gtest.h>

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
