#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class ExportCommandTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    QStringList Lines(QStringList const& options = {})
    {
        QStringList lines = RunSuccessfully(QStringList{"export"_q} + options).split(QLatin1Char('\n'));
        EXPECT_EQ(lines.last(), QString());
        lines.removeLast();
        return lines;
    }

    /// Returns the only line with a record of this kind and number.
    static QString LineOf(QStringList const& lines, char const* record, int number)
    {
        QStringList const found = lines.filter("{\"%1\":%2,"_q.arg(QLatin1String(record)).arg(number));
        EXPECT_EQ(found.size(), 1);
        return found.value(0);
    }
};

} // namespace

TEST_F(ExportCommandTest, OfANewStoreHasTheDefaultSchedule)
{
    EXPECT_EQ(
        Lines(),
        (QStringList{"{\"format\":\"tandry-export\",\"version\":1,\"secrets\":false,\"records\":{\"servers\":0,"
                     "\"accounts\":0,\"products\":0,\"folders\":0,\"files\":0,\"generatedFiles\":0,\"baseFiles\":0,"
                     "\"schedules\":1}}"_q,
                     "{\"schedule\":1,\"folderConfigurationId\":0,\"startTime\":null,\"expireTime\":null,"
                     "\"syncScheduleType\":0,\"syncInterval\":30}"_q}));
}

TEST_F(ExportCommandTest, NumbersRecordsInTheOrderOfTheirIdsAndRefersToThemByNumber)
{
    Sql("INSERT INTO ServerConfiguration (id, alias) VALUES (7, 'first'), (9, 'second');"
        "INSERT INTO AuthenticationConfiguration (id, userName, serverId) VALUES (4, 'ada', 9);"
        "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId, authenticationId, productConfigurationId) "
        "VALUES (20, '/r', 0, 20, 4, -1), (22, '/r/a', 30, 20, 4, NULL), (30, '/r/b', 20, 20, 5, 0);"
        "INSERT INTO FileConfiguration (id, clientPath, folderConfigurationId, rootFolderId) VALUES (100, '/r/b/f', "
        "30, 20);"
        "INSERT INTO GeneratedFileConfiguration (id, parentFileId) VALUES (3, 100), (4, 101);"_q);
    QStringList const lines = Lines();
    EXPECT_TRUE(lines.first().contains("\"servers\":2,\"accounts\":1,\"products\":0,\"folders\":3,\"files\":1,"
                                       "\"generatedFiles\":2,\"baseFiles\":0,"_q))
        << lines.first().toStdString();
    EXPECT_TRUE(LineOf(lines, "server", 1).contains("\"alias\":\"first\""_q));
    EXPECT_TRUE(LineOf(lines, "account", 1).contains("\"serverId\":2"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 1).contains("\"parentId\":0,"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 1).contains("\"rootId\":1,"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 1).contains("\"productConfigurationId\":-1,"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 2).contains("\"parentId\":3,"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 2).contains("\"productConfigurationId\":null,"_q));
    EXPECT_TRUE(LineOf(lines, "folder", 3).contains("{\"folder\":3,\"authenticationId\":{\"missing\":5},"_q));
    EXPECT_TRUE(LineOf(lines, "file", 1).contains("{\"file\":1,\"folderConfigurationId\":3,"_q));
    EXPECT_TRUE(LineOf(lines, "generatedFile", 1).contains("\"parentFileId\":1,"_q));
    EXPECT_TRUE(LineOf(lines, "generatedFile", 2).contains("\"parentFileId\":{\"missing\":101},"_q));
}

TEST_F(ExportCommandTest, HasValuesAsTheyAreStored)
{
    Sql("INSERT INTO FileConfiguration (name, clientPath, serverPath, createdDateTime, lastModifiedDateTime, "
        "lastOperationTime, size, syncStatus, nameValueProperties, ownerId) VALUES ('', NULL, "
        "'/é\"' || char(0, 10, 8232), -9223372036854775808, 9223372036854775807, 1500, 9007199254740993, 77, "
        "'<not a document', x'00ff');"
        "INSERT INTO ServerConfiguration (id) VALUES (1);"
        "INSERT INTO AuthenticationConfiguration (serverId) VALUES ('one'), (1.5), (x'');"_q);
    QStringList const lines = Lines();
    EXPECT_TRUE(LineOf(lines, "file", 1)
                    .contains("\"name\":\"\",\"clientPath\":null,\"serverPath\":\"/é\\\"\\u0000\\n\u2028\","
                              "\"checkSum\":null,\"createdDateTime\":-9223372036854775808,"
                              "\"lastModifiedDateTime\":9223372036854775807,\"syncStatus\":77,"_q))
        << LineOf(lines, "file", 1).toStdString();
    EXPECT_TRUE(LineOf(lines, "file", 1).contains("\"size\":9007199254740993,"_q));
    EXPECT_TRUE(
        LineOf(lines, "file", 1).contains("\"nameValueProperties\":\"<not a document\",\"lastOperationTime\":1500,"_q));
    EXPECT_TRUE(LineOf(lines, "file", 1).contains("\"ownerId\":{\"blob\":\"AP8=\"}"_q));
    EXPECT_TRUE(LineOf(lines, "account", 1).endsWith("\"serverId\":{\"text\":\"one\"}}"_q));
    EXPECT_TRUE(LineOf(lines, "account", 2).endsWith("\"serverId\":{\"real\":\"1.5\"}}"_q));
    EXPECT_TRUE(LineOf(lines, "account", 3).endsWith("\"serverId\":{\"blob\":\"\"}}"_q));
}

TEST_F(ExportCommandTest, HasLinksWithTheNumbersOfTheirFilesAndElseAsStored)
{
    Sql("INSERT INTO FileConfiguration (id, fileLinks) VALUES (5, '<FileLinks FileDate=\"\">\n <FileLink RefId=\"5\" "
        "FileId=\"9\" Path=\"a\"/>\n <FileLink FileId = ''05'' FileID=\"9\"/> <FileLink FileId=\"-1\"/>"
        "<FileLink FileId=\"8\"/>'), (9, '');"_q);
    EXPECT_TRUE(LineOf(Lines(), "file", 1)
                    .contains("\"fileLinks\":\"<FileLinks FileDate=\\\"\\\">\\n <FileLink RefId=\\\"5\\\" "
                              "FileId=\\\"2\\\" Path=\\\"a\\\"/>\\n <FileLink FileId = '1' FileID=\\\"9\\\"/> "
                              "<FileLink FileId=\\\"-1\\\"/><FileLink FileId=\\\"-9\\\"/>\""_q))
        << LineOf(Lines(), "file", 1).toStdString();
}

TEST_F(ExportCommandTest, HasSecretsOnlyIfAskedForAndNeverAPassword)
{
    Sql("INSERT INTO ProductConfiguration (name, consumerSecret) VALUES ('p', 's3cret');"
        "INSERT INTO AuthenticationConfiguration (userName, encryptedPassword) VALUES ('ada', 'pa55word');"_q);
    QString const without = Lines().join(QLatin1Char('\n'));
    EXPECT_FALSE(without.contains("s3cret"_q));
    EXPECT_FALSE(without.contains("consumerSecret"_q));
    QString const with = Lines({"--with-secrets"_q}).join(QLatin1Char('\n'));
    EXPECT_TRUE(with.contains("\"secrets\":true,"_q));
    EXPECT_TRUE(with.contains("\"consumerSecret\":\"s3cret\""_q));
    EXPECT_FALSE(with.contains("assword"_q));
    EXPECT_FALSE(with.contains("pa55word"_q));
}

TEST_F(ExportCommandTest, MayBeLimitedToWhatAPersonHasChosen)
{
    Sql("INSERT INTO ServerConfiguration (alias) VALUES ('s');"
        "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId, authenticationId) VALUES "
        "(2, '/r', 0, 2, 7), (3, '/r/a', 2, 2, 7), (4, '/q', 0, 4, -1);"
        "INSERT INTO FileConfiguration (clientPath) VALUES ('/r/f');"
        "INSERT INTO Schedules (folderConfigurationId) VALUES (4), (3);"_q);
    QStringList const lines = Lines({"--only"_q, "schedules,roots"_q});
    EXPECT_EQ(lines.size(), 1 + 2 + 3);
    EXPECT_TRUE(lines.first().endsWith("\"records\":{\"roots\":2,\"schedules\":3}}"_q));
    EXPECT_TRUE(LineOf(lines, "root", 2).contains("\"clientPath\":\"/q\""_q));
    EXPECT_TRUE(LineOf(lines, "root", 2).contains("\"rootId\":2,"_q));
    EXPECT_TRUE(LineOf(lines, "schedule", 2).contains("\"folderConfigurationId\":2,"_q));
    EXPECT_TRUE(LineOf(lines, "schedule", 3).contains("\"folderConfigurationId\":{\"missing\":3},"_q));
    EXPECT_EQ(Run({"export"_q, "--only"_q, "servers,files"_q}).status, 2);
    EXPECT_EQ(Run({"export"_q, "--only"_q, ""_q}).status, 2);
}

TEST_F(ExportCommandTest, IntoAFileIsForItsOwnerOnlyAndReplacesNone)
{
    RunResult const ran = Run({"export"_q, At("out.jsonl")});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(ran.out, "exported 1 record to '%1'\n"_q.arg(At("out.jsonl")));
    EXPECT_EQ(QString::fromUtf8(tandry::test::ReadFile(At("out.jsonl"))), RunSuccessfully({"export"_q}));
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(At("out.jsonl")) & others);

    WriteFile("taken"_q, "mine");
    EXPECT_EQ(Run({"export"_q, At("taken")}).status, 1);
    EXPECT_EQ(tandry::test::ReadFile(At("taken")), "mine");
    EXPECT_EQ(Run({"export"_q, At("no/such/folder")}).status, 1);
    EXPECT_EQ(JsonObject({"export"_q, At("json")}).value("records"_q).toObject().value("schedules"_q), 1);
}

TEST_F(ExportCommandTest, ThatCannotBeWrittenFailsAndLeavesNoFile)
{
    RunResult const full = RunInShell(">/dev/full"_q, {"export"_q});
    EXPECT_EQ(full.status, 3);
    EXPECT_TRUE(full.err.contains("standard output cannot be written"_q)) << full.err.toStdString();

    Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
        "INSERT INTO ServerConfiguration (alias) SELECT i FROM n;"_q);
    // A limit on the size of files, in 512 bytes, that the copy of the store, which is written first, does not reach.
    ASSERT_LT(QFileInfo(StorePath()).size(), 2400 * 512);
    RunResult const cut = RunInShell(QString(), {"export"_q, At("out.jsonl")}, "ulimit -f 2400; trap '' XFSZ; "_q);
    EXPECT_EQ(cut.status, 3) << cut.err.toStdString();
    EXPECT_TRUE(cut.err.contains("out.jsonl"_q)) << cut.err.toStdString();
    EXPECT_FALSE(QFile::exists(At("out.jsonl")));
}

TEST_F(ExportCommandTest, HasEveryRowOfATableOfManyPages)
{
    Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) "
        "INSERT INTO ServerConfiguration (id, alias) SELECT 2 * i, i FROM n;"_q);
    QStringList const lines = Lines({"--only"_q, "servers"_q});
    ASSERT_EQ(lines.size(), 3001);
    for (int i = 1; i <= 3000; ++i)
        ASSERT_TRUE(lines.at(i).startsWith("{\"server\":%1,\"alias\":\"%1\","_q.arg(i))) << i;
}

TEST_F(ExportCommandTest, ReadsAStoreThatAnotherProgramWritesOrAnOlderOneAndChangesNeither)
{
    RawStore writer(StorePath());
    writer.Run("BEGIN IMMEDIATE; INSERT INTO ServerConfiguration (alias) VALUES ('not committed')"_q);
    EXPECT_FALSE(RunSuccessfully({"export"_q}).contains("not committed"_q));
    writer.Run("ROLLBACK"_q);

    QFile::remove(At("older.db"));
    tandry::test::ReleasedStore{0, sync::database::JournalMode::WriteAheadLog}.CopyTo(At("older.db"));
    QByteArray const before = tandry::test::ReadFile(At("older.db"));
    RunResult const ran = RunWithoutStore({"--store"_q, At("older.db"), "export"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.startsWith("{\"format\":"_q));
    EXPECT_EQ(tandry::test::ReadFile(At("older.db")), before);
}

TEST_F(ExportCommandTest, DashIsStandardOutputAsItIsStandardInputOfAnImport)
{
    EXPECT_EQ(RunSuccessfully({"export"_q, "-"_q}), RunSuccessfully({"export"_q}));
    EXPECT_FALSE(QFile::exists("-"_q));
}

TEST_F(ExportCommandTest, LeavesNothingInTheTemporaryFolder)
{
    MakeDirectory("tmp"_q);
    RunResult const ran = RunWithoutStore({"--store"_q, StorePath(), "export"_q}, {"TMPDIR="_q + At("tmp")});
    EXPECT_EQ(ran.status, 0);
    EXPECT_TRUE(QDir(At("tmp")).isEmpty());
}
