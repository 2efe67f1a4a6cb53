#include "tools/findings/FileRows.h"

#include "config/FileConfigManager.h"
#include "config/Managers.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace sync::config;
using namespace tandry::findings;
using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;

namespace {

class FileRowsTest : public testing::Test
{
protected:
    FileRowsTest()
        : store(SqliteDatabaseFactory::Open(folder.filePath("store.db"_q)))
        , managers(store)
    {}

    void Sql(QString const& statements) { RawStore(folder.filePath("store.db"_q)).Run(statements); }

    static FileColumn const& Named(char const* column)
    {
        return *FindRecordColumn<FileConfiguration>(QString::fromLatin1(column));
    }

    QVector<int> Ids(FileConditions const& conditions, std::optional<int> limit = {})
    {
        FileRows rows(store, conditions, {&Named("id")});
        return Ids(rows, limit);
    }

    static QVector<int> Ids(FileRows& rows, std::optional<int> limit = {})
    {
        QVector<int> ids;
        rows.Read([&](FileRows::Row const& row) { ids.append(row.front().toInt()); }, limit);
        EXPECT_TRUE(rows.works());
        return ids;
    }

    /// Adds files whose values are equal, missing or odd in places.
    void AddOddFiles()
    {
        Sql("INSERT INTO FileConfiguration (name, clientPath, size, syncStatus, createdDateTime, privileges, "
            "nameValueProperties, fileLinks) VALUES "
            "('b', '/b', 5, 2, 1000, 3, '<N><K><![CDATA[v]]></K></N>', "
            "'<F FileDate=\"\"><L FileId=\"5\" Path=\"p\" RefId=\"r\" ServerFileId=\"q\"/></F>'), "
            "('a', '/a', 5, 0, NULL, NULL, NULL, ''), "
            "(NULL, NULL, NULL, NULL, -5, 0, '', NULL), "
            "('', '', -1, 7, 0, -1, 'no document', 'no document'), "
            // U+FF21 comes before U+1F600 by bytes and code points, and behind it by UTF-16 code units.
            "(char(65313), '/x', 9223372036854775807, 2, 99999999999999, 31, '<!DOCTYPE NameValueXml>', NULL), "
            "(char(128512), '/y', 12.5, 2, '2024-07-03T10:00:00', 'text', NULL, NULL), "
            "('b', '/B', '7', 4294967298, 1000, 3, NULL, NULL);"_q);
    }

    QTemporaryDir folder;
    std::shared_ptr<SqliteDatabaseFactory> store;
    Managers managers;
};

/// Sorts as a caller sorts records by one of their members.
template <class Key>
QVector<int> SortedIds(QVector<FileConfiguration> files, Key const& key, Qt::SortOrder order)
{
    std::stable_sort(files.begin(), files.end(), [&](FileConfiguration const& left, FileConfiguration const& right) {
        return order == Qt::AscendingOrder ? key(left) < key(right) : key(right) < key(left);
    });
    QVector<int> ids;
    for (FileConfiguration const& file : files)
        ids.append(file.id);
    return ids;
}

} // namespace

TEST_F(FileRowsTest, ValuesAreThoseOfTheManagersRecords)
{
    AddOddFiles();
    QVector<FileColumn const*> columns;
    for (FileColumn const& column : RecordColumns<FileConfiguration>())
        columns.append(&column);
    QVector<FileConfiguration> const files = managers.files->GetAll(FileConfigurationTypeFile);
    ASSERT_EQ(files.size(), 7);
    int file = 0;
    FileRows rows(store, {}, columns);
    rows.Read([&](FileRows::Row const& row) {
        for (int column = 0; column < columns.size(); ++column) {
            QVariant const expected = columns.at(column)->Get(files.at(file));
            QVariant const& value = row[std::size_t(column)];
            EXPECT_EQ(value.userType(), expected.userType());
            EXPECT_EQ(value, expected) << columns.at(column)->name().toStdString() << " of " << files.at(file).id;
            EXPECT_EQ(value.toString().isNull(), expected.toString().isNull());
        }
        ++file;
    });
    EXPECT_EQ(file, files.size());
    EXPECT_TRUE(rows.works());
}

TEST_F(FileRowsTest, OrderIsThatOfTheRecordsWithTiesById)
{
    AddOddFiles();
    QVector<FileConfiguration> const files = managers.files->GetAll(FileConfigurationTypeFile);
    for (Qt::SortOrder const order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
        auto const expect = [&](char const* column, auto const& key) {
            FileRows rows(store, {}, {&Named("id")});
            rows.SortBy(Named(column), order);
            EXPECT_EQ(Ids(rows), SortedIds(files, key, order)) << column << order;
        };
        expect("id", [](auto const& file) { return file.id; });
        expect("name", [](auto const& file) { return file.name; });
        expect("size", [](auto const& file) { return file.size; });
        expect("createdDateTime", [](auto const& file) { return file.createdDateTime; });
        expect("syncStatus", [](auto const& file) { return file.getSyncStatus(); });
    }
}

TEST_F(FileRowsTest, PagesFollowOneAnother)
{
    Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2500) "
        "INSERT INTO FileConfiguration (id, clientPath) SELECT i * 3, '/' || i FROM n;"_q);
    QVector<int> const ids = Ids({});
    ASSERT_EQ(ids.size(), 2500);
    for (int i = 0; i < ids.size(); ++i)
        ASSERT_EQ(ids.at(i), 3 * (i + 1));
    EXPECT_EQ(Ids({}, 1000).size(), 1000); // a page
    EXPECT_EQ(Ids({}, 2001).last(), 6003);
    EXPECT_EQ(Ids({}, 9999).size(), 2500);
    FileRows rows(store, {}, {&Named("id")});
    rows.SortBy(Named("id"), Qt::DescendingOrder);
    EXPECT_EQ(Ids(rows, 2), QVector<int>({7500, 7497}));
    EXPECT_EQ(Ids(rows, 2), QVector<int>({7500, 7497})) << "may be read twice";
}

TEST_F(FileRowsTest, ConditionsNarrowRowsAndCount)
{
    Sql("INSERT INTO FileConfiguration (id, name, folderConfigurationId, rootFolderId, syncStatus) VALUES "
        "(1, 'a.txt', 1, 1, 2), (2, 'A.txt', 2, 1, NULL), (3, 'a.TXT', 2, 1, 2), (4, NULL, 9, 9, 0);"
        "INSERT INTO GeneratedFileConfiguration (id, name, folderConfigurationId) VALUES (8, 'g', 2);"
        "INSERT INTO BaseFileConfiguration (id, name, folderConfigurationId) VALUES (9, 'b', 2);"_q);
    auto const expect = [&](FileConditions const& conditions, QVector<int> const& ids) {
        EXPECT_EQ(Ids(conditions), ids);
        EXPECT_EQ(FileRows(store, conditions, {&Named("id")}).Count(), ids.size());
    };
    FileConditions root;
    root.root = 1;
    expect(root, {1, 2, 3});
    FileConditions folderAndStatus;
    folderAndStatus.folder = 2;
    folderAndStatus.status = 2;
    expect(folderAndStatus, {3});
    FileConditions status;
    status.status = 0;
    expect(status, {2, 4}); // a record has 0 for NULL
    FileConditions name;
    name.name = "*.txt"_q;
    expect(name, {1, 2});
    FileConditions generated;
    generated.type = FileConfigurationTypeGenerated;
    expect(generated, {8});
    FileConditions base;
    base.type = FileConfigurationTypeBase;
    expect(base, {9});
}

TEST_F(FileRowsTest, SortedRowThatIsGoneIsLeftOut)
{
    Sql("INSERT INTO FileConfiguration (id, name) VALUES (1, 'a'), (2, 'b'), (3, 'c');"_q);
    FileRows rows(store, {}, {&Named("id")});
    rows.SortBy(Named("name"), Qt::DescendingOrder);
    Sql("DELETE FROM FileConfiguration WHERE id = 2;"_q);
    EXPECT_EQ(Ids(rows), QVector<int>({3, 1}));
}

TEST_F(FileRowsTest, FailureOfTheStoreIsTold)
{
    Sql("DROP TABLE BaseFileConfiguration;"_q);
    FileConditions base;
    base.type = FileConfigurationTypeBase;
    FileRows rows(store, base, {&Named("id")});
    rows.Read([](FileRows::Row const&) { FAIL(); });
    EXPECT_FALSE(rows.works());
    EXPECT_TRUE(store->LastError().has_value());
}
