#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>
#include <QJsonArray>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class HelpColumnsTest : public ToolTest
{
protected:
    QJsonArray Reference()
    {
        RunResult const ran = RunWithoutStore({"help"_q, "columns"_q, "--json"_q});
        EXPECT_EQ(ran.status, 0);
        return ran.json();
    }
};

} // namespace

TEST_F(HelpColumnsTest, HasEveryColumnOfAStoreInItsOrder)
{
    Init();
    QStringList named;
    QStringList tables;
    for (QJsonValue const value : Reference()) {
        QString const table = value.toObject().value("table"_q).toString();
        if (!tables.contains(table))
            tables.append(table);
        named.append(table + QLatin1Char('.') + value.toObject().value("column"_q).toString());
    }
    RawStore raw(StorePath());
    QStringList stored;
    for (QString const& table : tables)
        stored += raw.Value("SELECT group_concat('%1.' || name) FROM pragma_table_info('%1')"_q.arg(table))
                      .toString()
                      .split(QLatin1Char(','));
    EXPECT_EQ(named, stored);
    EXPECT_EQ(
        tables.size(),
        raw.Value("SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"_q).toInt());
}

TEST_F(HelpColumnsTest, SaysWhatEveryColumnHolds)
{
    for (QJsonValue const value : Reference()) {
        QString const meaning = value.toObject().value("meaning"_q).toString();
        EXPECT_TRUE(meaning.endsWith(QLatin1Char('.'))) << value.toObject().value("column"_q).toString().toStdString();
    }
}

TEST_F(HelpColumnsTest, ListsTheValuesOfTheStatusOfFiles)
{
    for (QJsonValue const value : Reference()) {
        QJsonObject const column = value.toObject();
        if (column.value("table"_q) != "FileConfiguration"_q || column.value("column"_q) != "syncStatus"_q)
            continue;
        QStringList names;
        for (QJsonValue const named : column.value("values"_q).toArray())
            names.append("%1 %2"_q.arg(named.toObject().value("value"_q).toInt())
                             .arg(named.toObject().value("name"_q).toString()));
        EXPECT_EQ(names, QStringList({"1 syncing"_q, "2 not synced"_q, "3 link discovered"_q}));
        return;
    }
    ADD_FAILURE() << "no such column";
}

TEST_F(HelpColumnsTest, PageHasTheSameList)
{
    QFile page(QStringLiteral(COLUMNS_PAGE));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    QString const text = QString::fromUtf8(page.readAll());
    QString const fence = "\n```\n"_q;
    EXPECT_EQ(text.section(fence, 1, 1) + QLatin1Char('\n'), RunWithoutStore({"help"_q, "columns"_q}).out);
}
