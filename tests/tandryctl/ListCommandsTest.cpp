#include "ToolFixture.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/RecordColumns.h"
#include "support/RawStore.h"

#include <QFile>

using namespace sync::config;
using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// A value as SQL has it and as the tool prints it in JSON.
struct Cell
{
    QString sql;
    QJsonValue json;
};

/// Returns a value that differs from those of a row's other columns.
Cell DistinctCell(ColumnKind kind, int position)
{
    QString const text = "text %1"_q.arg(position);
    switch (kind) {
    case ColumnKind::Integer:
    case ColumnKind::LongInteger:
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return {QString::number(100 + position), 100 + position};
    case ColumnKind::Text:
        return {"'%1'"_q.arg(text), text};
    case ColumnKind::Time:
        return {QString::number(position * 1000), "1970-01-01T00:00:%1.000Z"_q.arg(position, 2, 10, QLatin1Char('0'))};
    case ColumnKind::Properties:
        return {"'<N><K><![CDATA[%1]]></K></N>'"_q.arg(text), QJsonObject{{"K"_q, text}}};
    case ColumnKind::Links:
        return {
            "'<F FileDate=\"\"><L FileId=\"5\" Path=\"p\" RefId=\"r\" ServerFileId=\"q\"/></F>'"_q,
            QJsonArray{QJsonObject{{"fileId"_q, 5}, {"path"_q, "p"_q}, {"refId"_q, "r"_q}, {"serverFileId"_q, "q"_q}}}};
    }
    return {};
}

class ListCommandsTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    QStringList Column(QStringList const& arguments, char const* column)
    {
        QStringList values;
        for (QJsonValue const row : Json(arguments))
            values.append(row.toObject().value(QString::fromUtf8(column)).toVariant().toString());
        return values;
    }

    /// Returns the names of a table's columns in the order of the keys of a JSON object.
    template <class Record>
    static QStringList ColumnNames()
    {
        QStringList names;
        for (RecordColumn<Record> const& column : RecordColumns<Record>())
            names.append(column.name());
        names.sort();
        return names;
    }

    /// Inserts row 1 with a distinct value in each column, and returns all columns as the tool prints them.
    template <class Record>
    QJsonObject InsertDistinctRow(char const* table)
    {
        QStringList names;
        QStringList values;
        QJsonObject printed;
        auto const& columns = RecordColumns<Record>();
        for (int position = 0; position < columns.size(); ++position) {
            Cell const cell = position == 0 ? Cell{"1"_q, 1} : DistinctCell(columns[position].kind(), position);
            names.append(columns[position].name());
            values.append(cell.sql);
            printed.insert(columns[position].name(), cell.json);
        }
        Sql("INSERT INTO %1 (%2) VALUES (%3);"_q.arg(
            QString::fromUtf8(table), names.join(", "_q), values.join(", "_q)));
        return printed;
    }

    /// Inserts root 1, folder 2 and the files c (1 byte), a (3 bytes, out of sync) and b (2 bytes), and a file of
    /// another root.
    void AddFiles()
    {
        Sql("INSERT INTO FolderConfiguration (id, name, clientPath, serverPath, parentId, rootId) VALUES "
            "(1, 'r', '/r', '/s', 0, 1), (2, 'f', '/r/f', '/s/f', 1, 1);"
            "INSERT INTO FileConfiguration (folderConfigurationId, name, clientPath, syncStatus, size, rootFolderId, "
            "fileType) VALUES (1, 'c', '/r/c', 5, 1, 1, 0), (2, 'a', '/r/f/a', 2, 3, 1, 0), "
            "(2, 'b', '/r/f/b', 5, 2, 1, 0), (9, 'x', '/q/x', 5, 0, 9, 0);"_q);
    }
};

} // namespace

TEST_F(ListCommandsTest, EmptyStoreReportsThatNothingIsOnRecord)
{
    for (char const* what : {"roots", "folders", "files"}) {
        RunResult const ran = Run({"list"_q, QString::fromUtf8(what)});
        EXPECT_EQ(ran.status, 1) << what;
        EXPECT_EQ(ran.out, QString());
        EXPECT_TRUE(ran.err.startsWith("tandryctl: no %1 on record; "_q.arg(QString::fromUtf8(what))));
    }
}

TEST_F(ListCommandsTest, EmptyStoreInJsonIsAnEmptyArray)
{
    RunResult const ran = Run({"list"_q, "files"_q, "--json"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.json().size(), 0);
}

TEST_F(ListCommandsTest, JsonKeysOfFoldersAreTheColumnsWithoutTheProperties)
{
    AddFiles();
    QStringList expected = ColumnNames<FolderConfiguration>();
    expected.removeOne("nameValueProperties"_q);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).first().toObject().keys(), expected);
}

TEST_F(ListCommandsTest, JsonKeysOfFilesAreTheColumns)
{
    AddFiles();
    EXPECT_EQ(Json({"list"_q, "files"_q}).first().toObject().keys(), ColumnNames<FileConfiguration>());
}

TEST_F(ListCommandsTest, EveryColumnOfAFileShowsItsOwnValue)
{
    QJsonObject const expected = InsertDistinctRow<FileConfiguration>("FileConfiguration");
    EXPECT_EQ(JsonObject({"list"_q, "files"_q}), expected);
}

TEST_F(ListCommandsTest, EveryColumnOfAFolderShowsItsOwnValue)
{
    QJsonObject expected = InsertDistinctRow<FolderConfiguration>("FolderConfiguration");
    expected.remove("nameValueProperties"_q);
    EXPECT_EQ(JsonObject({"list"_q, "folders"_q}), expected);
}

TEST_F(ListCommandsTest, RootsAreThoseWithoutAParent)
{
    AddFiles();
    EXPECT_EQ(Column({"list"_q, "roots"_q}, "id"), QStringList{"1"_q});
}

TEST_F(ListCommandsTest, FoldersOfOneRoot)
{
    AddFiles();
    Sql("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (3, '/q', 0, 3);"_q);
    EXPECT_EQ(Column({"list"_q, "folders"_q}, "id").size(), 3);
    EXPECT_EQ(Column({"list"_q, "folders"_q, "--root"_q, "1"_q}, "id"), QStringList({"1"_q, "2"_q}));
    EXPECT_EQ(Run({"list"_q, "folders"_q, "--root"_q, "2"_q}).status, 1);
}

TEST_F(ListCommandsTest, FilesByFolderRootAndStatus)
{
    AddFiles();
    EXPECT_EQ(Column({"list"_q, "files"_q}, "name").size(), 4);
    EXPECT_EQ(Column({"list"_q, "files"_q, "--folder"_q, "2"_q}, "name"), QStringList({"a"_q, "b"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--root"_q, "1"_q}, "name"), QStringList({"c"_q, "a"_q, "b"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--status"_q, "2"_q}, "name"), QStringList{"a"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--folder"_q, "2"_q, "--status"_q, "5"_q}, "name"), QStringList{"b"_q});
    EXPECT_EQ(Run({"list"_q, "files"_q, "--status"_q, "-4"_q}).status, 1);
}

TEST_F(ListCommandsTest, StatusIsAcceptedByNameAndShownWithIt)
{
    AddFiles();
    for (char const* status : {"2", "not-synced", "Not synced", "NOT-SYNCED"})
        EXPECT_EQ(Column({"list"_q, "files"_q, "--status"_q, QString::fromUtf8(status)}, "name"), QStringList{"a"_q})
            << status;
    QString const table = RunSuccessfully({"list"_q, "files"_q});
    EXPECT_TRUE(table.contains("  2 not synced  "_q)) << table.toStdString();
    EXPECT_TRUE(table.contains("  5  "_q)) << table.toStdString(); // the client's own
    EXPECT_TRUE(RunSuccessfully({"list"_q, "roots"_q}).contains("  0  "_q));

    RunResult const wrong = Run({"list"_q, "files"_q, "--status"_q, "synced"_q});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.contains("syncing, not-synced and link-discovered"_q)) << wrong.err.toStdString();
}

TEST_F(ListCommandsTest, RightsAndOptionsOfAFileAreShownInWords)
{
    Sql("INSERT INTO FileConfiguration (clientPath, privileges, syncOption, fileType) VALUES ('/f', 41, 64, 0);"_q);
    QString const file = RunSuccessfully({"file"_q, "show"_q, "1"_q});
    for (char const* line : {"\nprivileges              view, delete, 32\n",
                             "\nsyncOption              repath required\n",
                             "\nfileType                0 file\n"})
        EXPECT_TRUE(file.contains(QString::fromUtf8(line))) << line << file.toStdString();
    QJsonObject const object = JsonObject({"file"_q, "show"_q, "1"_q});
    EXPECT_EQ(object.value("privileges"_q), 41);
    EXPECT_EQ(object.value("syncOption"_q), 64);
}

TEST_F(ListCommandsTest, TimesAreLocalWithTheirZoneOrInUtc)
{
    Sql("INSERT INTO FileConfiguration (clientPath, lastModifiedDateTime) VALUES ('/f', 1720000000123);"_q);
    auto const list = [&](QStringList const& options) {
        RunResult const ran = RunWithoutStore(QStringList{"--store"_q, StorePath(), "list"_q, "files"_q} + options,
                                              {"TZ=Asia/Kolkata"_q});
        EXPECT_EQ(ran.status, 0);
        return ran.out;
    };
    EXPECT_TRUE(list({}).contains("  2024-07-03T15:16:40.123+05:30  "_q)) << list({}).toStdString();
    EXPECT_TRUE(list({"--utc"_q}).contains("  2024-07-03T09:46:40.123Z  "_q));
    EXPECT_TRUE(list({"--json"_q}).contains("\"2024-07-03T09:46:40.123Z\""_q));
}

TEST_F(ListCommandsTest, FilesOfAnUnknownFolderOrRootFindNothing)
{
    RunResult const unknown = Run({"list"_q, "files"_q, "--folder"_q, "77"_q});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.err.contains("folder 77"_q));
    EXPECT_EQ(Run({"list"_q, "files"_q, "--root"_q, "77"_q}).status, 1);
}

TEST_F(ListCommandsTest, FilesByKind)
{
    AddFiles();
    Sql("INSERT INTO GeneratedFileConfiguration (name, fileType, rootFolderId, folderConfigurationId) VALUES "
        "('g', 1, 1, 2), ('h', 1, 1, 1);"
        "INSERT INTO BaseFileConfiguration (name, fileType, rootFolderId, folderConfigurationId) VALUES ('i', 2, 1, 2);"_q);
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "generated"_q}, "name"), QStringList({"g"_q, "h"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "generated"_q, "--folder"_q, "2"_q}, "name"),
              QStringList{"g"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "BASE"_q, "--root"_q, "1"_q}, "name"), QStringList{"i"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "file"_q, "--root"_q, "1"_q}, "name").size(), 3);
}

TEST_F(ListCommandsTest, FilesInEveryOrder)
{
    // Every column sorts the files differently from their ids.
    Sql("INSERT INTO FileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, checkSum, "
        "createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size) VALUES "
        "(1, 2, 'b', 'b', 'b', 'b', 2, 2, 2, 2, 2), (2, 3, 'c', 'c', 'c', 'c', 3, 3, 3, 3, 3), "
        "(3, 1, 'a', 'a', 'a', 'a', 1, 1, 1, 1, 1);"_q);
    for (char const* column : {"name",
                               "folderConfigurationId",
                               "clientPath",
                               "serverPath",
                               "checkSum",
                               "createdDateTime",
                               "lastModifiedDateTime",
                               "syncStatus",
                               "lastOperationType",
                               "size"}) {
        QString const order = QString::fromUtf8(column);
        EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, order}, "id"), QStringList({"3"_q, "1"_q, "2"_q}))
            << column;
        EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, order + "-desc"_q}, "id"),
                  QStringList({"2"_q, "1"_q, "3"_q}))
            << column;
    }
    EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, "ID-desc"_q}, "id"), QStringList({"3"_q, "2"_q, "1"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, "id"_q}, "id"), QStringList({"1"_q, "2"_q, "3"_q}));
}

TEST_F(ListCommandsTest, UnknownKindOrderOrNumberIsWrongUsage)
{
    EXPECT_EQ(Run({"list"_q, "files"_q, "--type"_q, "nonsense"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--order"_q, "1"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--status"_q, "many"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "0"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "99999999999"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "1"_q, "--root"_q, "1"_q}).status, 2);
}

TEST_F(ListCommandsTest, PlainListingEscapesControlCharacters)
{
    AddRoot("a\n\x1b[31mb"_q, "/s"_q);
    QString const out = RunSuccessfully({"list"_q, "roots"_q});
    EXPECT_EQ(out.count(QLatin1Char('\n')), 2) << out.toStdString();
    EXPECT_TRUE(out.contains("a\\n\\x1b[31mb"_q));
    EXPECT_EQ(JsonObject({"list"_q, "roots"_q}).value("name"_q).toString(), "a\n\x1b[31mb"_q);
}

TEST_F(ListCommandsTest, SchedulesAreAllListed)
{
    Sql("INSERT INTO Schedules (folderConfigurationId, startTime, syncScheduleType, syncInterval) "
        "VALUES (4, 1719828000000, 2, 15);"_q);
    QJsonArray const schedules = Json({"list"_q, "schedules"_q});
    ASSERT_EQ(schedules.size(), 2);
    EXPECT_EQ(schedules.first().toObject(),
              (QJsonObject{{"id"_q, 1},
                           {"folderConfigurationId"_q, 0},
                           {"startTime"_q, QJsonValue()},
                           {"expireTime"_q, QJsonValue()},
                           {"syncScheduleType"_q, 0},
                           {"syncInterval"_q, 30}}));
    EXPECT_EQ(schedules.last().toObject().value("startTime"_q).toString(), "2024-07-01T10:00:00.000"_q);
}

TEST_F(ListCommandsTest, DefaultScheduleIsShown)
{
    EXPECT_EQ(JsonObject({"schedule"_q, "default"_q}).value("syncInterval"_q).toInt(), 30);
    EXPECT_TRUE(RunSuccessfully({"schedule"_q, "default"_q}).contains("syncInterval           30"_q));
}

TEST_F(ListCommandsTest, MissingDefaultScheduleFindsNothing)
{
    Sql("DELETE FROM Schedules;"_q);
    EXPECT_EQ(Run({"schedule"_q, "default"_q}).status, 1);
}

TEST_F(ListCommandsTest, TreeIndentsFoldersBelowTheirParentsSortedByName)
{
    AddRoot("docs"_q, "/s"_q);
    for (char const* name : {"docs/b/z", "docs/a", "docs/b/y/x"})
        MakeDirectory(QString::fromUtf8(name));
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(RunSuccessfully({"tree"_q}), At("docs") + "\n  a\n  b\n    y\n      x\n    z\n"_q);
}

TEST_F(ListCommandsTest, TreeInJsonHasTheSameOrderWithDepths)
{
    AddFiles();
    QJsonArray const nodes = Json({"tree"_q});
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes.first().toObject().value("depth"_q).toInt(), 0);
    EXPECT_EQ(nodes.last().toObject(),
              (QJsonObject{{"id"_q, 2},
                           {"parentId"_q, 1},
                           {"depth"_q, 1},
                           {"name"_q, "f"_q},
                           {"clientPath"_q, "/r/f"_q},
                           {"serverPath"_q, "/s/f"_q}}));
}

TEST_F(ListCommandsTest, TreeOfOneRoot)
{
    AddRoot("a"_q, "/a"_q);
    AddRoot("b"_q, "/b"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q, "2"_q}), At("b") + "\n"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}), At("a") + "\n"_q + At("b") + "\n"_q);
    EXPECT_EQ(Run({"tree"_q, "77"_q}).status, 1);
}

TEST_F(ListCommandsTest, TreeShowsFoldersWhoseParentIsMissing)
{
    Sql("INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) VALUES "
        "(1, 'r', '/r', 0, 1), (3, 'c', '/r/b/c', 2, 1), (4, 'd', '/r/b/c/d', 3, 1);"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}), "/r\n  c\n    d\n"_q);
}

TEST_F(ListCommandsTest, TreeEndsWhenParentsFormARing)
{
    Sql("INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) VALUES "
        "(1, 'r', '/r', 0, 1), (2, 'b', '/r/b', 3, 1), (3, 'c', '/r/c', 2, 1), (4, 'self', '/r/d', 4, 1);"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}).count(QLatin1Char('\n')), 4);
}

TEST_F(ListCommandsTest, TreeWithoutARootFindsNothing)
{
    EXPECT_EQ(Run({"tree"_q}).status, 1);
}

TEST_F(ListCommandsTest, ListingThatBreaksOffFails)
{
    QString statement = "INSERT INTO FileConfiguration (clientPath, name) VALUES ('/x', 'x')"_q;
    for (int i = 0; i < 500; ++i)
        statement += ", ('/path/of/some/length/to/fill/the/pages/%1', '%1')"_q.arg(i);
    Sql(statement);
    RawStore raw(StorePath());
    raw.Run("PRAGMA wal_checkpoint(TRUNCATE);"_q);
    int const pageSize = raw.Value("PRAGMA page_size"_q).toInt();
    // Damages the last leaf page of the table, so that the rows before it can be read.
    int const page =
        raw.Value("SELECT max(pageno) FROM dbstat WHERE name = 'FileConfiguration' AND pagetype = 'leaf'"_q).toInt();
    ASSERT_GT(page, 1);
    QFile file(StorePath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(qint64(page - 1) * pageSize));
    ASSERT_EQ(file.write(QByteArray(pageSize, '\xff')), pageSize);
    file.close();

    RunResult const ran = Run({"list"_q, "files"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
    EXPECT_EQ(Run({"list"_q, "schedules"_q}).status, 0); // another table
}
