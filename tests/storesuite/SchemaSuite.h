#pragma once

#include "RecordValues.h"
#include "StoreSuiteFixture.h"

#include <QDateTime>
#include <QStringList>

#include <string>

namespace tandry::storesuite {

/// The tables, columns and names that the managers use.
class SchemaSuite : public StoreSuite
{
protected:
    /// Returns a value to store that no other column of the row has; NULL for a column that managers only set to NULL.
    template <class Record>
    static QVariant Distinct(RecordColumn<Record> const& column, int position)
    {
        if (column.isReadOnly())
            return {};
        bool const isDocument = column.kind() == ColumnKind::Properties || column.kind() == ColumnKind::Links;
        return DistinctValue(isDocument ? ColumnKind::Text : column.kind(), position);
    }

    /// Returns the values of all columns except the first one, `id`.
    template <class Record>
    static Bindings DistinctRow()
    {
        auto const& columns = RecordColumns<Record>();
        Bindings bindings;
        for (int position = 1; position < columns.size(); ++position)
            bindings.emplace_back(QLatin1Char(':') + columns[position].name(), Distinct(columns[position], position));
        return bindings;
    }

    template <class Record>
    void ExpectDistinctRow(QString const& select, int id, Bindings const& bindings = {})
    {
        auto const query = Query(select, bindings);
        ASSERT_TRUE(query->exec()) << select.toStdString();
        ASSERT_TRUE(query->next());
        EXPECT_EQ(query->value(0).toInt(), id);
        auto const& columns = RecordColumns<Record>();
        for (int position = 1; position < columns.size(); ++position) {
            QVariant const value = query->value(position);
            QVariant const expected = Distinct(columns[position], position);
            std::string const name = columns[position].name().toStdString();
            switch (expected.userType()) {
            case QMetaType::Int:
                EXPECT_EQ(value.toInt(), expected.toInt()) << name;
                break;
            case QMetaType::LongLong:
                EXPECT_EQ(value.toLongLong(), expected.toLongLong()) << name;
                break;
            case QMetaType::QString:
                EXPECT_EQ(value.toString(), expected.toString()) << name;
                break;
            case QMetaType::QDateTime:
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
    template <class Record>
    void ExpectEachColumnInItsPlace(QString const& insert, QString const& select)
    {
        int const id = Insert(insert, DistinctRow<Record>());
        ExpectDistinctRow<Record>(select, id);
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
    ExpectEachColumnInItsPlace<ServerConfiguration>(statements::AddServer, statements::GetServers);
}

TEST_P(SchemaSuite, AccountsHaveTheirColumns)
{
    ExpectEachColumnInItsPlace<AuthenticationConfiguration>(statements::AddAccount, statements::GetAccounts);
}

TEST_P(SchemaSuite, ProductsHaveTheirColumns)
{
    ExpectEachColumnInItsPlace<ProductConfiguration>(statements::AddProduct, statements::GetProducts);
}

TEST_P(SchemaSuite, FoldersHaveTheirColumns)
{
    ExpectEachColumnInItsPlace<FolderConfiguration>(statements::AddFolder, statements::GetFolders);
}

TEST_P(SchemaSuite, EachTableOfFilesHasItsColumnsAndItsOwnRows)
{
    for (QString const& table : statements::FileTables)
        ExpectEachColumnInItsPlace<FileConfiguration>(statements::AddFile.arg(table), statements::GetFiles.arg(table));
}

TEST_P(SchemaSuite, SchedulesHaveTheirColumns)
{
    int const id = Value(0, statements::GetDefaultSchedule).toInt();
    Bindings bindings = DistinctRow<ScheduleEntry>();
    bindings.emplace_back(QStringLiteral(":id"), id);
    ASSERT_TRUE(Exec(statements::UpdateSchedule, bindings));
    ExpectDistinctRow<ScheduleEntry>(statements::GetScheduleById, id, {{QStringLiteral(":id"), id}});
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
