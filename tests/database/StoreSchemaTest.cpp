#include "support/Queries.h"
#include "support/StatementList.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

namespace {

using namespace tandry::test;

constexpr char const* FileTable =
    "id integer, folderConfigurationId integer, name text, clientPath text, serverPath text, checkSum text, "
    "createdDateTime datetime, lastModifiedDateTime datetime, syncStatus integer, lastOperationType integer, "
    "size integer, nameValueProperties text, lastOperationTime datetime, rootFolderId integer, syncOption integer, "
    "parentFileId integer, fileType integer, ownerId text, privileges integer, productConfigurationId integer, "
    "serverFileId text, serverFileVersionId text, checkSumMD5 text, fileLinks text";

/// Every table with its columns in their order, and what they hold.
QMap<QString, QString> ExpectedTables()
{
    return {{"ServerConfiguration"_q,
             "id integer, alias text, davUrl text, webServiceUrl text, nameValueProperties text, "
             "binaryDiffEncoder text"_q},
            {"AuthenticationConfiguration"_q,
             "id integer, domain text, domainId text, userName text, encryptedPassword text, "
             "nameValueProperties text, serverId integer"_q},
            {"ProductConfiguration"_q,
             "id integer, name text, consumerKey text, consumerSecret text, serverId integer, "
             "nameValueProperties text"_q},
            {"FolderConfiguration"_q,
             "id integer, authenticationId integer, name text, remoteShortKey text, remoteLongKey text, "
             "clientPath text, serverPath text, syncStatus integer, nameValueProperties text, parentId integer, "
             "lastOperationTime datetime, lastSyncTime datetime, folderOption integer, lastOperationType integer, "
             "syncDriveType integer, rootId integer, syncOption integer, ownerId text, privileges integer, "
             "serverRoot text, productConfigurationId integer, serverFolderId text"_q},
            {"FileConfiguration"_q, QString::fromLatin1(FileTable)},
            {"GeneratedFileConfiguration"_q, QString::fromLatin1(FileTable)},
            {"BaseFileConfiguration"_q, QString::fromLatin1(FileTable)},
            {"Schedules"_q,
             "id integer, folderConfigurationId integer, startTime datetime, expireTime datetime, "
             "syncScheduleType integer, syncInterval integer"_q},
            {"FolderFileSystem"_q, "id integer, folderConfigurationId integer, fileSystem text, inode integer"_q}};
}

/// A column in docs/columns.md: its name, and the numbers of its values.
struct ListedColumn
{
    QString name;
    QString kind;
    QStringList numbers;
};

/// The columns in docs/columns.md, by table.
QMap<QString, std::vector<ListedColumn>> ColumnsPage()
{
    QFile file(QStringLiteral(TANDRY_SOURCE "/docs/columns.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QString const list = QString::fromUtf8(file.readAll()).section("\n```\n"_q, 1, 1);
    QMap<QString, std::vector<ListedColumn>> tables;
    QStringList names;
    QRegularExpression const column("^  ([A-Za-z0-9]+) +([a-z]+) "_q);
    QRegularExpression const number("^ {10,}([0-9]+) "_q);
    for (QString const& line : list.split(QLatin1Char('\n'))) {
        if (QRegularExpression("^[A-Za-z]+(, [A-Za-z]+ and [A-Za-z]+)?$"_q).match(line).hasMatch())
            names = line.split(QRegularExpression(", | and "_q));
        for (QString const& name : names) {
            if (auto const match = column.match(line); match.hasMatch())
                tables[name].push_back({match.captured(1), match.captured(2), {}});
            else if (auto const value = number.match(line); value.hasMatch() && !tables[name].empty())
                tables[name].back().numbers.append(value.captured(1));
        }
    }
    return tables;
}

/// The type of a column with values of this kind.
QString TypeOf(QString const& kind)
{
    if (kind == "time"_q)
        return "DATETIME"_q;
    return QStringList{"text"_q, "properties"_q, "links"_q}.contains(kind) ? "TEXT"_q : "INTEGER"_q;
}

/// The numbers of an enumeration, as the header has them.
QStringList NumbersOf(QString const& header, QString const& enumeration)
{
    QFile file(QStringLiteral(TANDRY_SOURCE "/") + header);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << header.toStdString();
    QString const body =
        QString::fromUtf8(file.readAll()).section("enum %1 : int\n"_q.arg(enumeration), 1).section("};"_q, 0, 0);
    QStringList numbers;
    for (auto matches = QRegularExpression(" = ([0-9]+),"_q).globalMatch(body); matches.hasNext();)
        numbers.append(matches.next().captured(1));
    return numbers;
}

class StoreSchema : public StoreFixture
{
protected:
    /// Returns the steps of SQLite's plan for a statement.
    QStringList Plan(QString const& statement)
    {
        QStringList steps;
        for (QVector<QVariant> const& row : RawStore(StorePath()).Rows("EXPLAIN QUERY PLAN "_q + statement))
            steps.append(row.value(3).toString());
        return steps;
    }
};

TEST_F(StoreSchema, HasItsTablesWithTheirColumnsInOrder)
{
    RawStore raw(StorePath());
    QMap<QString, QString> tables;
    for (QVector<QVariant> const& table :
         raw.Rows("SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"_q)) {
        QStringList columns;
        for (QVector<QVariant> const& column :
             raw.Rows("SELECT name, lower(type) FROM pragma_table_info('%1') ORDER BY cid"_q.arg(table[0].toString())))
            columns.append(column[0].toString() + QLatin1Char(' ') + column[1].toString());
        tables.insert(table[0].toString(), columns.join(", "_q));
    }
    EXPECT_EQ(tables, ExpectedTables());
}

TEST_F(StoreSchema, ColumnsPageListsEveryColumnOfEveryTable)
{
    auto const page = ColumnsPage();
    RawStore raw(StorePath());
    int tables = 0;
    for (QVector<QVariant> const& row :
         raw.Rows("SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"_q)) {
        QString const table = row.value(0).toString();
        QStringList columns;
        for (QVector<QVariant> const& column : raw.Rows("PRAGMA table_info(%1)"_q.arg(table)))
            columns.append(column.value(1).toString() + QLatin1Char(' ') + column.value(2).toString());
        QStringList listed;
        for (ListedColumn const& column : page.value(table))
            listed.append(column.name + QLatin1Char(' ') + TypeOf(column.kind));
        EXPECT_EQ(listed, columns) << table.toStdString();
        ++tables;
    }
    EXPECT_EQ(page.size(), tables);
}

TEST_F(StoreSchema, ColumnsPageListsTheNumbersOfTheEnumerations)
{
    QMap<QString, QStringList> numbers;
    auto const page = ColumnsPage();
    for (auto table = page.cbegin(); table != page.cend(); ++table) {
        for (ListedColumn const& column : table.value())
            numbers[table.key() + QLatin1Char('.') + column.name] = column.numbers;
    }
    QString const folders = "config/FolderConfiguration.h"_q;
    QString const files = "config/FileConfiguration.h"_q;
    EXPECT_EQ(numbers["FolderConfiguration.syncStatus"_q], NumbersOf(folders, "FolderSynchronizationStatus"_q));
    EXPECT_EQ(numbers["FolderConfiguration.folderOption"_q], NumbersOf(folders, "SynchronizationFolderOption"_q));
    EXPECT_EQ(numbers["FolderConfiguration.privileges"_q],
              QStringList{"0"_q} + NumbersOf(folders, "FolderPrivileges"_q));
    EXPECT_EQ(numbers["FileConfiguration.fileType"_q], NumbersOf(files, "FileConfigurationType"_q));
    EXPECT_EQ(numbers["FileConfiguration.syncStatus"_q], NumbersOf(files, "FileSynchronizationStatus"_q));
    EXPECT_EQ(numbers["FileConfiguration.syncOption"_q], NumbersOf(files, "FileSyncOption"_q));
    EXPECT_FALSE(numbers["FolderConfiguration.syncStatus"_q].isEmpty());
}

TEST_F(StoreSchema, BeginsWithTheDefaultScheduleAlone)
{
    RawStore raw(StorePath());
    QMap<QString, QString> const tables = ExpectedTables();
    for (QString const& table : tables.keys())
        EXPECT_EQ(raw.Count(table), table == "Schedules"_q ? 1 : 0) << table.toStdString();
    std::vector<QVector<QVariant>> const rows = raw.Rows(
        "SELECT folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval FROM Schedules"_q);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows.front(), (QVector<QVariant>{0LL, QVariant(), QVariant(), 0LL, 30LL}));
}

TEST_F(StoreSchema, StatementsWithAWhereClauseFindTheirRowsByAnIndex)
{
    int seen = 0;
    for (QString const& statement : ListedStatements()) {
        if (!statement.contains("WHERE"_q))
            continue;
        QString const plan = Plan(statement).join("; "_q);
        // No index helps to find what is on none of a list's numbers.
        bool const excludes = statement.contains("NOT IN"_q);
        EXPECT_EQ(plan.contains("SCAN"_q), excludes) << statement.toStdString() << ": " << plan.toStdString();
        ++seen;
    }
    EXPECT_GT(seen, 50);
}

TEST_F(StoreSchema, RowsInAFixedOrderComeFromTheIndexInThatOrder)
{
    int seen = 0;
    for (QString const& statement : ListedStatements()) {
        bool const fixed = statement.endsWith("WHERE parentId = :parentId ORDER BY name"_q) ||
                           statement.endsWith("syncStatus = :syncStatus ORDER BY name"_q) ||
                           statement.endsWith("parentFileId = :parentFileId ORDER BY id"_q);
        if (!fixed)
            continue;
        QString const plan = Plan(statement).join("; "_q);
        EXPECT_FALSE(plan.contains("TEMP B-TREE"_q)) << statement.toStdString() << ": " << plan.toStdString();
        ++seen;
    }
    EXPECT_EQ(seen, 3);
}

TEST_F(StoreSchema, EveryIndexServesAStatement)
{
    QSet<QString> used;
    QRegularExpression const index("USING (?:COVERING )?INDEX (\\w+)"_q);
    for (QString const& statement : ListedStatements()) {
        for (QString const& step : Plan(statement))
            used.insert(index.match(step).captured(1));
    }
    used.remove(QString());

    QSet<QString> made;
    for (QVector<QVariant> const& row :
         RawStore(StorePath()).Rows("SELECT name FROM sqlite_schema WHERE type = 'index'"_q))
        made.insert(row[0].toString());
    EXPECT_EQ(used, made);
}

TEST_F(StoreSchema, IdsAreNeverGivenTwice)
{
    QMap<QString, QString> const tables = ExpectedTables();
    QString const insert = "INSERT INTO %1 (id) VALUES (NULL)"_q;
    QMap<QString, int> last;
    for (QString const& table : tables.keys()) {
        auto const query = Prepared(*store, insert.arg(table));
        ASSERT_TRUE(query->exec());
        ASSERT_TRUE(query->exec());
        last[table] = query->lastInsertId().toInt();
        EXPECT_GT(last[table], 1);
        ASSERT_TRUE(Execute(*store, "DELETE FROM %1"_q.arg(table)));
    }
    ReopenStore();
    for (QString const& table : tables.keys()) {
        auto const query = Prepared(*store, insert.arg(table));
        ASSERT_TRUE(query->exec());
        EXPECT_GT(query->lastInsertId().toInt(), last[table]) << table.toStdString();
    }
}

TEST_F(StoreSchema, IdThatARecordCannotCarryIsRefused)
{
    ASSERT_TRUE(Execute(*store, "INSERT INTO ServerConfiguration (id) VALUES (:id)"_q, {{":id", 2147483647}}));
    EXPECT_FALSE(AddServer(*store, "one more"_q));
    EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_CONSTRAINT);
    EXPECT_EQ(CountServers(*store), 1);
    store->ClearError();
}

} // namespace
