#pragma once

#include "storesuite/StoreSuiteFixture.h"

#include <QDateTime>
#include <QStringList>

#include <string_view>
#include <utility>

namespace tandry::storesuite {

/// The tables, columns and names that the managers use.
class SchemaSuite : public StoreSuite
{
protected:
    /// Returns a value that no other column of the row has. The kinds are i for an integer, l for one of 64 bits, t for
    /// a text, d for a date-time, and n for a column that managers only set to NULL.
    static QVariant Distinct(char kind, int column)
    {
        switch (kind) {
        case 'i':
            return 100 + column;
        case 'l':
            return 5'000'000'000LL + column;
        case 't':
            return QStringLiteral("text %1").arg(column);
        case 'd':
            return QDateTime(QDate(2024, 1, column), QTime(1, 2, 3, 4), Qt::UTC);
        default:
            return {};
        }
    }

    /// Returns the columns of a SELECT list except the first one, `id`.
    static QStringList ColumnsOf(QString const& select)
    {
        int const begin = int(qstrlen("SELECT id, "));
        QStringList columns =
            select.mid(begin, select.indexOf(QStringLiteral(" FROM ")) - begin).split(QLatin1Char(','));
        for (QString& column : columns)
            column = column.trimmed();
        return columns;
    }

    static Bindings DistinctRow(QString const& select, std::string_view kinds)
    {
        QStringList const columns = ColumnsOf(select);
        EXPECT_EQ(columns.size(), int(kinds.size()));
        Bindings bindings;
        for (int i = 0; i < columns.size(); ++i)
            bindings.emplace_back(QLatin1Char(':') + columns[i], Distinct(kinds[std::size_t(i)], i + 1));
        return bindings;
    }

    void ExpectDistinctRow(QString const& select, std::string_view kinds, int id, Bindings const& bindings = {})
    {
        auto const query = Query(select, bindings);
        ASSERT_TRUE(query->exec()) << select.toStdString();
        ASSERT_TRUE(query->next());
        EXPECT_EQ(query->value(0).toInt(), id);
        QStringList const columns = ColumnsOf(select);
        for (int i = 0; i < columns.size(); ++i) {
            QVariant const value = query->value(i + 1);
            QVariant const expected = Distinct(kinds[std::size_t(i)], i + 1);
            std::string const name = columns[i].toStdString();
            switch (kinds[std::size_t(i)]) {
            case 'i':
                EXPECT_EQ(value.toInt(), expected.toInt()) << name;
                break;
            case 'l':
                EXPECT_EQ(value.toLongLong(), expected.toLongLong()) << name;
                break;
            case 't':
                EXPECT_EQ(value.toString(), expected.toString()) << name;
                break;
            case 'd':
                EXPECT_EQ(value.toDateTime().date(), expected.toDateTime().date()) << name;
                EXPECT_EQ(value.toDateTime().time(), expected.toDateTime().time()) << name;
                break;
            default:
                EXPECT_TRUE(value.isNull()) << name;
            }
        }
        EXPECT_FALSE(query->next());
    }

    /// Inserts a row with a distinct value in each column, and expects to read each value back from its column.
    void ExpectEachColumnInItsPlace(QString const& insert, QString const& select, std::string_view kinds)
    {
        int const id = Insert(insert, DistinctRow(select, kinds));
        ExpectDistinctRow(select, kinds, id);
    }
};

TEST_P(SchemaSuite, NewStoreContainsOnlyTheDefaultSchedule)
{
    auto const schedule = Query(statements::GetDefaultSchedule);
    ASSERT_TRUE(schedule->exec());
    ASSERT_TRUE(schedule->next());
    EXPECT_EQ(schedule->value(1).toInt(), 0);
    EXPECT_FALSE(schedule->value(2).toDateTime().isValid());
    EXPECT_FALSE(schedule->value(3).toDateTime().isValid());
    EXPECT_EQ(schedule->value(4).toInt(), 0);
    EXPECT_EQ(schedule->value(5).toInt(), 30);
    EXPECT_FALSE(schedule->next());

    for (QString const& all :
         {statements::GetServers, statements::GetAccounts, statements::GetProducts, statements::GetFolders})
        EXPECT_TRUE(Column(0, all).empty()) << all.toStdString();
    for (QString const& table : statements::FileTables)
        EXPECT_TRUE(Column(0, statements::GetFiles.arg(table)).empty()) << table.toStdString();
}

TEST_P(SchemaSuite, ServersHaveTheirColumns)
{
    ExpectEachColumnInItsPlace(statements::AddServer, statements::GetServers, "ttttt");
}

TEST_P(SchemaSuite, AccountsHaveTheirColumns)
{
    ExpectEachColumnInItsPlace(statements::AddAccount, statements::GetAccounts, "tttnti");
}

TEST_P(SchemaSuite, ProductsHaveTheirColumns)
{
    ExpectEachColumnInItsPlace(statements::AddProduct, statements::GetProducts, "tttit");
}

TEST_P(SchemaSuite, FoldersHaveTheirColumns)
{
    ExpectEachColumnInItsPlace(statements::AddFolder, statements::GetFolders, "itttttitiddiiiiititit");
}

TEST_P(SchemaSuite, EachTableOfFilesHasItsColumnsAndItsOwnRows)
{
    std::string_view const kinds = "ittttddiiltdiiiitiitttt";
    for (QString const& table : statements::FileTables)
        ExpectEachColumnInItsPlace(statements::AddFile.arg(table), statements::GetFiles.arg(table), kinds);
}

TEST_P(SchemaSuite, SchedulesHaveTheirColumns)
{
    int const id = Value(0, statements::GetDefaultSchedule).toInt();
    Bindings bindings = DistinctRow(statements::GetScheduleById, "iddii");
    bindings.emplace_back(QStringLiteral(":id"), id);
    ASSERT_TRUE(Exec(statements::UpdateSchedule, bindings));
    ExpectDistinctRow(statements::GetScheduleById, "iddii", id, {{QStringLiteral(":id"), id}});
}

TEST_P(SchemaSuite, NamesAreCaseInsensitive)
{
    int const server = AddServer(QStringLiteral("a"));
    int const account = Insert(statements::AddAccount, {{QStringLiteral(":serverId"), server}});
    // The statements have "ServerID" and "Id".
    EXPECT_EQ(Value(0, statements::GetServerByAccount, {{QStringLiteral(":id"), account}}).toInt(), server);
    EXPECT_TRUE(Exec(statements::RemoveServer, {{QStringLiteral(":id"), server}}));
    EXPECT_TRUE(Aliases().isEmpty());
}

TEST_P(SchemaSuite, ParentMatchesZeroAsNumberAndAsText)
{
    int const root = Insert(statements::AddFolder, {{QStringLiteral(":parentId"), 0}});
    Insert(statements::AddFolder, {{QStringLiteral(":parentId"), root}});
    Insert(statements::AddFolder, {{QStringLiteral(":parentId"), -1}});
    EXPECT_EQ(Value(0, statements::GetRoots).toInt(), root);
    EXPECT_EQ(Value(0, statements::CountRoots).toInt(), 1);
}

TEST_P(SchemaSuite, CountsAreNumbersEvenWithoutRows)
{
    EXPECT_EQ(Value(0, statements::CountOutOfSync), 0);
    Insert(statements::AddFolder, {{QStringLiteral(":syncStatus"), 2}});
    Insert(statements::AddFolder, {{QStringLiteral(":syncStatus"), 1}});
    EXPECT_EQ(Value(0, statements::CountOutOfSync).toInt(), 1);
}

TEST_P(SchemaSuite, RowsComeInTheRequestedOrder)
{
    for (char const* name : {"b", "c", "a"})
        Insert(statements::AddFolder,
               {{QStringLiteral(":name"), QString::fromUtf8(name)}, {QStringLiteral(":parentId"), 1}});
    QStringList names;
    for (QVariant const& name : Column(2, statements::GetFoldersByParent, {{QStringLiteral(":parentId"), 1}}))
        names.append(name.toString());
    EXPECT_EQ(names, QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
}

TEST_P(SchemaSuite, DuplicateRowsAreAllowed)
{
    // Uniqueness is up to the managers.
    EXPECT_NE(AddServer(QStringLiteral("a")), AddServer(QStringLiteral("a")));
    Bindings const account{{QStringLiteral(":domain"), QStringLiteral("domain")},
                           {QStringLiteral(":userName"), QStringLiteral("user")}};
    EXPECT_NE(Insert(statements::AddAccount, account), Insert(statements::AddAccount, account));
    EXPECT_EQ(Column(0, statements::GetAccountNames).size(), 1U);
}

TEST_P(SchemaSuite, ReferencesToRemovedRowsStay)
{
    int const server = AddServer(QStringLiteral("a"));
    Insert(statements::AddAccount, {{QStringLiteral(":serverId"), server}});
    EXPECT_TRUE(Exec(statements::RemoveServer, {{QStringLiteral(":id"), server}}));
    EXPECT_EQ(Value(6, statements::GetAccounts).toInt(), server);
}

} // namespace tandry::storesuite
