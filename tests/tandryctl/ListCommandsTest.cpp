#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

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

TEST_F(ListCommandsTest, JsonKeysOfFoldersAreTheColumns)
{
    AddFiles();
    QStringList const keys = Json({"list"_q, "folders"_q}).first().toObject().keys();
    EXPECT_EQ(keys,
              QStringList({"authenticationId"_q,  "clientPath"_q,        "folderOption"_q,  "id"_q,
                           "lastOperationTime"_q, "lastOperationType"_q, "lastSyncTime"_q,  "name"_q,
                           "ownerId"_q,           "parentId"_q,          "privileges"_q,    "productConfigurationId"_q,
                           "remoteLongKey"_q,     "remoteShortKey"_q,    "rootId"_q,        "serverFolderId"_q,
                           "serverPath"_q,        "serverRoot"_q,        "syncDriveType"_q, "syncOption"_q,
                           "syncStatus"_q}));
}

TEST_F(ListCommandsTest, JsonKeysOfFilesAreTheColumns)
{
    AddFiles();
    QStringList const keys = Json({"list"_q, "files"_q}).first().toObject().keys();
    EXPECT_EQ(keys,
              QStringList({"checkSum"_q,
                           "checkSumMD5"_q,
                           "clientPath"_q,
                           "createdDateTime"_q,
                           "fileLinks"_q,
                           "fileType"_q,
                           "folderConfigurationId"_q,
                           "id"_q,
                           "lastModifiedDateTime"_q,
                           "lastOperationTime"_q,
                           "lastOperationType"_q,
                           "name"_q,
                           "nameValueProperties"_q,
                           "ownerId"_q,
                           "parentFileId"_q,
                           "privileges"_q,
                           "productConfigurationId"_q,
                           "rootFolderId"_q,
                           "serverFileId"_q,
                           "serverFileVersionId"_q,
                           "serverPath"_q,
                           "size"_q,
                           "syncOption"_q,
                           "syncStatus"_q}));
}

TEST_F(ListCommandsTest, EveryColumnOfAFileShowsItsOwnValue)
{
    Sql("INSERT INTO FileConfiguration (folderConfigurationId, name, clientPath, serverPath, checkSum, "
        "createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, "
        "lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, "
        "productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES "
        "(11, 'n', '/c', '/s', 'sum', 1000, 2000, 12, 13, 14, '<N><K><![CDATA[v]]></K></N>', 3000, 15, 16, 17, 0, "
        "'o', 18, 19, 'sf', 'sv', 'md5', '<F FileDate=\"\"><L FileId=\"5\" Path=\"p\" RefId=\"r\" ServerFileId=\"q\"/></F>');"_q);
    QJsonObject const expected{
        {"id"_q, 1},
        {"folderConfigurationId"_q, 11},
        {"name"_q, "n"_q},
        {"clientPath"_q, "/c"_q},
        {"serverPath"_q, "/s"_q},
        {"checkSum"_q, "sum"_q},
        {"createdDateTime"_q, "1970-01-01T00:00:01.000Z"_q},
        {"lastModifiedDateTime"_q, "1970-01-01T00:00:02.000Z"_q},
        {"syncStatus"_q, 12},
        {"lastOperationType"_q, 13},
        {"size"_q, 14},
        {"nameValueProperties"_q, QJsonObject{{"K"_q, "v"_q}}},
        {"lastOperationTime"_q, "1970-01-01T00:00:03.000Z"_q},
        {"rootFolderId"_q, 15},
        {"syncOption"_q, 16},
        {"parentFileId"_q, 17},
        {"fileType"_q, 0},
        {"ownerId"_q, "o"_q},
        {"privileges"_q, 18},
        {"productConfigurationId"_q, 19},
        {"serverFileId"_q, "sf"_q},
        {"serverFileVersionId"_q, "sv"_q},
        {"checkSumMD5"_q, "md5"_q},
        {"fileLinks"_q,
         QJsonArray{QJsonObject{{"fileId"_q, 5}, {"path"_q, "p"_q}, {"refId"_q, "r"_q}, {"serverFileId"_q, "q"_q}}}}};
    EXPECT_EQ(JsonObject({"list"_q, "files"_q}), expected);
}

TEST_F(ListCommandsTest, EveryColumnOfAFolderShowsItsOwnValue)
{
    Sql("INSERT INTO FolderConfiguration (authenticationId, name, remoteShortKey, remoteLongKey, clientPath, "
        "serverPath, syncStatus, parentId, lastOperationTime, lastSyncTime, folderOption, lastOperationType, "
        "syncDriveType, rootId, syncOption, ownerId, privileges, serverRoot, productConfigurationId, serverFolderId) "
        "VALUES (11, 'n', 'rs', 'rl', '/c', '/s', 12, 13, 1000, 2000, 14, 15, 16, 17, 18, 'o', 19, 'sr', 20, 'sf');"_q);
    QJsonObject const expected{{"id"_q, 1},
                               {"authenticationId"_q, 11},
                               {"name"_q, "n"_q},
                               {"remoteShortKey"_q, "rs"_q},
                               {"remoteLongKey"_q, "rl"_q},
                               {"clientPath"_q, "/c"_q},
                               {"serverPath"_q, "/s"_q},
                               {"syncStatus"_q, 12},
                               {"parentId"_q, 13},
                               {"lastOperationTime"_q, "1970-01-01T00:00:01.000Z"_q},
                               {"lastSyncTime"_q, "1970-01-01T00:00:02.000Z"_q},
                               {"folderOption"_q, 14},
                               {"lastOperationType"_q, 15},
                               {"syncDriveType"_q, 16},
                               {"rootId"_q, 17},
                               {"syncOption"_q, 18},
                               {"ownerId"_q, "o"_q},
                               {"privileges"_q, 19},
                               {"serverRoot"_q, "sr"_q},
                               {"productConfigurationId"_q, 20},
                               {"serverFolderId"_q, "sf"_q}};
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
