// Differences between the records of two stores.

#include "Screen.h"
#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class StoreDiffTest : public ToolTest
{
protected:
    /// Fills the store, and copies it to the other one.
    void SetUp() override
    {
        Init();
        RawStore(StorePath())
            .Run("INSERT INTO ServerConfiguration (id, davUrl) VALUES (1, 'https://a'), (2, 'https://b');"
                 "INSERT INTO AuthenticationConfiguration (id, domain, userName, serverId)"
                 " VALUES (1, 'D', 'ada', 1), (2, '', 'bob', 2);"
                 "INSERT INTO ProductConfiguration (id, name, consumerKey, consumerSecret, serverId)"
                 " VALUES (1, 'P', 'key', 'hidden-secret', 1);"
                 "INSERT INTO FolderConfiguration (id, authenticationId, name, clientPath, parentId, rootId)"
                 " VALUES (1, 1, 'r', '/r', 0, 1), (2, 1, 'f', '/r/f', 1, 1);"
                 "INSERT INTO FileConfiguration (id, folderConfigurationId, rootFolderId, name, clientPath, size, "
                 "fileLinks)"
                 " VALUES (1, 2, 1, 'a', '/r/f/a', 1, NULL), (2, 1, 1, 'b', '/r/b', 2,"
                 " '<FileLinks><FileLink FileId=\"1\" Path=\"f/a\"/></FileLinks>');"
                 "INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, rootFolderId, clientPath, "
                 "parentFileId)"
                 " VALUES (1, 1, 1, '/r/gen', 1);"
                 "INSERT INTO BaseFileConfiguration (id, folderConfigurationId, rootFolderId, clientPath)"
                 " VALUES (1, 1, 1, '/r/base/2'), (2, 1, 1, '/r/base/1');"
                 "INSERT INTO Schedules (id, folderConfigurationId, syncInterval) VALUES (7, 2, 5);"
                 "INSERT INTO FolderFileSystem (folderConfigurationId, fileSystem, inode) VALUES (1, 'disk', 2)"_q);
        ASSERT_TRUE(QFile::copy(StorePath(), Other()));
    }

    QString Other() const { return At("other.db"); }

    void ChangeOther(char const* statements) const { RawStore(Other()).Run(QString::fromUtf8(statements)); }

    /// Returns the lines of the table below its heading.
    QStringList Lines()
    {
        RunResult const ran = Run({"diff"_q, "--with"_q, Other()});
        EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
        EXPECT_EQ(ran.err, QString());
        QStringList lines = ran.out.split(QLatin1Char('\n'));
        EXPECT_EQ(lines.takeFirst().simplified(), "change kind name columns"_q);
        EXPECT_EQ(lines.takeLast(), QString());
        for (QString& line : lines)
            line = line.simplified();
        return lines;
    }
};

} // namespace

TEST_F(StoreDiffTest, CopyHasTheSameRecords)
{
    EXPECT_EQ(RunSuccessfully({"diff"_q, "--with"_q, Other()}), "the stores have the same records\n"_q);
    EXPECT_EQ(Json({"diff"_q, "--with"_q, Other()}), QJsonArray());
}

TEST_F(StoreDiffTest, RecordsOfEveryTableAreListedWithTheColumnsThatDiffer)
{
    ChangeOther("UPDATE ServerConfiguration SET alias = 'x' WHERE id = 1;"
                "UPDATE AuthenticationConfiguration SET domainId = 'x' WHERE id = 1;"
                "UPDATE ProductConfiguration SET name = 'x';"
                "UPDATE FolderConfiguration SET syncStatus = 2, name = 'x' WHERE id = 2;"
                "UPDATE FileConfiguration SET size = 9 WHERE id = 1;"
                "UPDATE GeneratedFileConfiguration SET size = 9;"
                "UPDATE BaseFileConfiguration SET size = 9 WHERE id = 1;"
                "UPDATE Schedules SET syncInterval = 9 WHERE id = 7;"
                "UPDATE FolderFileSystem SET inode = 9");
    EXPECT_EQ(Lines(),
              QStringList({"changed server https://a alias"_q,
                           "changed account D ada domainId"_q,
                           "changed product https://a key name"_q,
                           "changed folder /r/f name, syncStatus"_q,
                           "changed file /r/f/a size"_q,
                           "changed generated file /r/gen size"_q,
                           "changed base file /r/base/2 size"_q,
                           "changed schedule /r/f syncInterval"_q,
                           "changed file system /r inode"_q}));
}

TEST_F(StoreDiffTest, RecordsThatOneStoreLacksAreAddedOrRemoved)
{
    ChangeOther("DELETE FROM FileConfiguration WHERE id = 2;"
                "INSERT INTO FileConfiguration (clientPath) VALUES ('/r/a new one'), ('/r/z'), (NULL);"
                "INSERT INTO ServerConfiguration (davUrl) VALUES ('https://c')");
    EXPECT_EQ(Lines(),
              QStringList({"added server https://c"_q,
                           "added file"_q,
                           "added file /r/a new one"_q,
                           "removed file /r/b"_q,
                           "added file /r/z"_q}));
}

TEST_F(StoreDiffTest, TableFitsTheTerminal)
{
    ChangeOther("INSERT INTO FileConfiguration (clientPath) VALUES ('/r/with a name that does not fit.txt')");
    RunResult const ran =
        RunOnScreen({"--store"_q, StorePath(), "diff"_q, "--with"_q, Other()}, {46, {"NO_COLOR=1"_q}});
    EXPECT_EQ(ran.out,
              "change   kind            name          columns\r\n"
              "added    file            /r/wi…it.txt\r\n"_q);
}

TEST_F(StoreDiffTest, NumbersOfRecordsDoNotMatter)
{
    ChangeOther("UPDATE ServerConfiguration SET id = id + 10;"
                "UPDATE AuthenticationConfiguration SET id = id + 20, serverId = serverId + 10;"
                "UPDATE ProductConfiguration SET id = id + 30, serverId = serverId + 10;"
                "UPDATE FolderConfiguration SET parentId = parentId + 40 WHERE parentId > 0;"
                "UPDATE FolderConfiguration SET id = id + 40, authenticationId = authenticationId + 20,"
                " rootId = rootId + 40;"
                "UPDATE FileConfiguration SET id = id + 50, folderConfigurationId = folderConfigurationId + 40,"
                " rootFolderId = rootFolderId + 40, fileLinks = replace(fileLinks, '\"1\"', '\"51\"');"
                "UPDATE GeneratedFileConfiguration SET id = 60, folderConfigurationId = 41, rootFolderId = 41,"
                " parentFileId = 51;"
                "UPDATE BaseFileConfiguration SET id = 100 - id, folderConfigurationId = 41, rootFolderId = 41;"
                "UPDATE Schedules SET id = 80, folderConfigurationId = 42 WHERE id = 7;"
                "UPDATE FolderFileSystem SET folderConfigurationId = 41");
    EXPECT_EQ(RunSuccessfully({"diff"_q, "--with"_q, Other()}), "the stores have the same records\n"_q);
}

TEST_F(StoreDiffTest, ReferencesAreComparedByWhatTheyReferTo)
{
    // Every number stays, but the rows that they stand for change places.
    ChangeOther("UPDATE FileConfiguration SET clientPath = 'swap' WHERE id = 1;"
                "UPDATE FileConfiguration SET clientPath = '/r/f/a', size = 1, name = 'a', folderConfigurationId = 2,"
                " fileLinks = NULL WHERE id = 2;"
                "UPDATE FileConfiguration SET clientPath = '/r/b', size = 2, name = 'b', folderConfigurationId = 1,"
                " fileLinks = '<FileLinks><FileLink FileId=\"1\" Path=\"f/a\"/></FileLinks>' WHERE id = 1");
    EXPECT_EQ(Lines(), QStringList({"changed file /r/b fileLinks"_q, "changed generated file /r/gen parentFileId"_q}));
    QJsonArray const changes = Run({"diff"_q, "--json"_q, "--with"_q, Other()}).json();
    QJsonObject const parent = changes.at(1).toObject().value("columns"_q).toArray().first().toObject();
    EXPECT_EQ(parent.value("before"_q), "/r/f/a"_q);
    EXPECT_EQ(parent.value("after"_q), "/r/b"_q);
}

TEST_F(StoreDiffTest, ReferenceToNothingIsComparedByItsNumber)
{
    ChangeOther("UPDATE FileConfiguration SET folderConfigurationId = 77 WHERE id = 1");
    QJsonArray const changes = Run({"diff"_q, "--json"_q, "--with"_q, Other()}).json();
    ASSERT_EQ(changes.size(), 1);
    QJsonObject const column = changes.first().toObject().value("columns"_q).toArray().first().toObject();
    EXPECT_EQ(column.value("name"_q), "folderConfigurationId"_q);
    EXPECT_EQ(column.value("before"_q), "/r/f"_q);
    EXPECT_EQ(column.value("after"_q), 77);
}

TEST_F(StoreDiffTest, JsonHasTheValuesButNoSecretsAndNoDocuments)
{
    ChangeOther("UPDATE ProductConfiguration SET consumerSecret = 'other-secret', nameValueProperties = '<a/>';"
                "UPDATE FileConfiguration SET lastModifiedDateTime = 1767225600123 WHERE id = 1");
    RunResult const ran = Run({"diff"_q, "--json"_q, "--with"_q, Other()});
    EXPECT_FALSE(ran.out.contains("secret\""_q)) << ran.out.toStdString();
    QJsonArray const changes = ran.json();
    ASSERT_EQ(changes.size(), 2);
    QJsonObject const product = changes.at(0).toObject();
    EXPECT_EQ(product.value("change"_q), "changed"_q);
    EXPECT_EQ(product.value("kind"_q), "product"_q);
    EXPECT_EQ(
        product.value("columns"_q),
        QJsonArray({QJsonObject{{"name"_q, "consumerSecret"_q}}, QJsonObject{{"name"_q, "nameValueProperties"_q}}}));
    QJsonObject const time = changes.at(1).toObject().value("columns"_q).toArray().first().toObject();
    EXPECT_EQ(time.value("before"_q), QJsonValue());
    EXPECT_EQ(time.value("after"_q), "2026-01-01T00:00:00.123Z"_q);
}

TEST_F(StoreDiffTest, RecordsOfTheSameNameAreMatchedInTheirOrder)
{
    RawStore(StorePath()).Run("INSERT INTO FileConfiguration (clientPath, size) VALUES ('/twin', 1), ('/twin', 2)"_q);
    ChangeOther("INSERT INTO FileConfiguration (id, clientPath, size)"
                " VALUES (30, '/twin', 1), (31, '/twin', 2), (32, '/twin', 3)");
    EXPECT_EQ(Lines(), QStringList{"added file /twin"_q});
}

TEST_F(StoreDiffTest, TextsAreMatchedByTheirBytes)
{
    ChangeOther("UPDATE FileConfiguration SET clientPath = '/R/b' WHERE id = 2;"
                "INSERT INTO FileConfiguration (clientPath) VALUES ('/r/\u00e9'), ('/r/e\u0301'), ('/r/\uffff'),"
                " ('/r/\U0001F600')");
    EXPECT_EQ(Lines(),
              QStringList({"added file /R/b"_q,
                           "removed file /r/b"_q,
                           "added file /r/e\\u0301"_q, // not in composed form
                           QString::fromUtf8("added file /r/\u00e9"),
                           QString::fromUtf8("added file /r/\uffff"),
                           QString::fromUtf8("added file /r/\U0001F600")}));
}

TEST_F(StoreDiffTest, NeitherStoreIsWrittenAndNoWriterIsKeptOut)
{
    RawStore writer(StorePath());
    writer.Run("BEGIN IMMEDIATE; UPDATE FileConfiguration SET size = 7"_q);
    QMap<QString, QByteArray> const before = tandry::test::FolderContents(folder.path());
    EXPECT_EQ(RunSuccessfully({"diff"_q, "--with"_q, Other()}), "the stores have the same records\n"_q);
    EXPECT_EQ(tandry::test::FolderContents(folder.path()).value("other.db"_q), before.value("other.db"_q));
    EXPECT_EQ(tandry::test::FolderContents(folder.path()).value("store.db"_q), before.value("store.db"_q));
    writer.Run("COMMIT"_q);
    EXPECT_EQ(Run({"diff"_q, "--with"_q, Other()}).status, 1);
}

TEST_F(StoreDiffTest, MissingOtherStoreAndARootBesideItAreErrors)
{
    RunResult const missing = Run({"diff"_q, "--with"_q, At("none.db")});
    EXPECT_EQ(missing.status, 3);
    EXPECT_TRUE(missing.err.contains("none.db"_q)) << missing.err.toStdString();
    EXPECT_EQ(Run({"diff"_q, "1"_q, "--with"_q, Other()}).status, 2);
}

TEST_F(StoreDiffTest, MemoryDoesNotGrowWithTheDifferences)
{
    ChangeOther("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000)"
                " INSERT INTO FileConfiguration (clientPath, checkSum, folderConfigurationId, rootFolderId)"
                " SELECT '/r/' || printf('%.1000c', 'p') || i, printf('%.9000c', 'x'), 1, 1 FROM n");
    // 200 MB of rows in a process that may have 300.
    RunResult const ran = RunInShell("| wc -l"_q, {"diff"_q, "--with"_q, Other()}, "ulimit -v 300000; "_q);
    EXPECT_EQ(ran.err, QString());
    EXPECT_EQ(ran.out.trimmed(), "20001"_q) << "with the heading";
}
