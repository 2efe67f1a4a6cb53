#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QFile>
#include <QRegularExpression>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// Imports into `At("new.db")` what the test's store has.
class ImportCommandTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    QString NewPath() const { return At("new.db"); }

    QByteArray Export(QString const& store, QStringList const& options = {})
    {
        RunResult const ran = RunWithoutStore(QStringList{"--store"_q, store, "export"_q} + options);
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        return ran.out.toUtf8();
    }

    RunResult ImportBytes(QByteArray const& bytes, QStringList const& options = {})
    {
        return RunWithoutStore(QStringList{"--store"_q, NewPath(), "import"_q, "-"_q} + options, {}, bytes);
    }

    /// Imports what the test's store has; expects that to give the same export again, and returns it.
    QByteArray ExpectSameExport(QStringList const& options = {})
    {
        QByteArray const exported = Export(StorePath(), options);
        RunResult const ran = ImportBytes(exported);
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_EQ(ran.err, QString());
        EXPECT_EQ(Export(NewPath(), options).toStdString(), exported.toStdString());
        return exported;
    }

    /// Expects an import of the lines to fail with these words, and to leave the new store without records.
    void ExpectRefusal(QByteArray const& bytes, QString const& words)
    {
        RunResult const ran = ImportBytes(bytes);
        EXPECT_EQ(ran.status, 1) << bytes.constData();
        EXPECT_TRUE(ran.err.contains(words)) << ran.err.toStdString();
        RawStore store(NewPath());
        EXPECT_EQ(store.Count("ServerConfiguration"_q) + store.Count("AuthenticationConfiguration"_q), 0);
        EXPECT_EQ(store.Count("Schedules"_q), 1);
    }

    /// Fills all tables of the test's store, with gaps between ids, missing rows and values of all sorts.
    void Fill()
    {
        Sql("INSERT INTO ServerConfiguration (id, alias, davUrl, nameValueProperties) VALUES (3, NULL, '', 'no "
            "document'), "
            "(9, 's' || char(0) || 'é' || char(65279), 'https://x.example', x'00ff');"
            "INSERT INTO AuthenticationConfiguration (id, userName, serverId) VALUES (2, 'ada', 9), (4, 'bob', 8), "
            "(5, 'c', 'nine'), (6, 'd', 2.5);"
            "INSERT INTO ProductConfiguration (id, name, consumerSecret, serverId) VALUES (5, 'p', 's3cret', 3);"
            "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId, authenticationId, lastSyncTime) VALUES "
            "(10, '/home/ada/r', 0, 10, 2, -9223372036854775808), (12, '/home/ada/r/a/b', 14, 10, 4, NULL), "
            "(14, '/home/ada/r/a', 10, 10, -1, 9223372036854775807), (20, '/home/adam', 0, 20, 0, 0);"
            "INSERT INTO FileConfiguration (id, clientPath, folderConfigurationId, rootFolderId, size, fileLinks) "
            "VALUES "
            "(7, '/home/ada/r/f', 10, 10, 9007199254740993, '<FileLinks FileDate=\"\">\n <FileLink FileId=\"21\" "
            "Path=\"/home/ada/r/a&amp;b/g\"/>\n <FileLink FileId=\"6\" Path=\"f\"/>\n</FileLinks>\n'), "
            "(21, '/home/ada/r/a&b/g', 13, 10, -1, ''), (22, '/home/ada', 2147483647, -7, NULL, NULL);"
            "INSERT INTO GeneratedFileConfiguration (id, parentFileId, fileType) VALUES (1, 21, 1), (2, 500, 1);"
            "INSERT INTO BaseFileConfiguration (id, clientPath, fileType) VALUES (8, '/home/ada/r/f', 3);"
            "INSERT INTO Schedules (id, folderConfigurationId, startTime) VALUES (5, 14, 1), (6, 99, NULL);"_q);
    }
};

constexpr char const* OneServer =
    "{\"format\":\"tandry-export\",\"version\":1,\"secrets\":false,\"records\":{\"servers\":1}}\n";
constexpr char const* Server = "{\"server\":1,\"alias\":\"a\",\"davUrl\":null,\"webServiceUrl\":\"w\","
                               "\"nameValueProperties\":null,\"binaryDiffEncoder\":null}\n";

} // namespace

TEST_F(ImportCommandTest, IntoAnEmptyStoreGivesTheSameExport)
{
    Fill();
    QByteArray const exported = ExpectSameExport();
    EXPECT_EQ(exported.count('\n'), 1 + 2 + 4 + 1 + 4 + 3 + 2 + 1 + 3);
    EXPECT_TRUE(exported.contains("{\"missing\":8}"));
}

TEST_F(ImportCommandTest, OfSecretsAndOfPartsGivesTheSameExport)
{
    Fill();
    ExpectSameExport({"--with-secrets"_q});
    EXPECT_EQ(RawStore(NewPath()).Value("SELECT consumerSecret FROM ProductConfiguration"_q), QVariant("s3cret"_q));
    QFile::remove(NewPath());
    ExpectSameExport({"--only"_q, "accounts,roots,schedules"_q});
    QFile::remove(NewPath());
    ExpectSameExport({"--only"_q, "servers"_q});
    EXPECT_EQ(RawStore(NewPath()).Count("Schedules"_q), 1) << "the default schedule stays";
}

TEST_F(ImportCommandTest, OfAStoreWithoutADefaultScheduleGivesTheSameExport)
{
    Sql("DELETE FROM Schedules"_q);
    ExpectSameExport();
    EXPECT_EQ(RawStore(NewPath()).Count("Schedules"_q), 0);
}

TEST_F(ImportCommandTest, KeepsReferencesBetweenRows)
{
    Fill();
    ASSERT_EQ(ImportBytes(Export(StorePath())).status, 0);
    RawStore store(NewPath());
    EXPECT_EQ(
        store.Value("SELECT server.davUrl FROM AuthenticationConfiguration AS account JOIN ServerConfiguration AS "
                    "server ON server.id = account.serverId WHERE userName = 'ada'"_q),
        QVariant("https://x.example"_q));
    EXPECT_EQ(
        store.Value("SELECT above.clientPath FROM FolderConfiguration AS folder JOIN FolderConfiguration AS above "
                    "ON above.id = folder.parentId WHERE folder.clientPath = '/home/ada/r/a/b'"_q),
        QVariant("/home/ada/r/a"_q));
    EXPECT_EQ(store.Value("SELECT count(*) FROM FileConfiguration AS file JOIN FileConfiguration AS target ON "
                          "instr(file.fileLinks, 'FileId=\"' || target.id || '\" Path=\"/home/ada/r/a&amp;b/g\"') > 0 "
                          "WHERE target.clientPath = '/home/ada/r/a&b/g'"_q),
              QVariant(1LL));
    EXPECT_EQ(
        store.Value("SELECT count(*) FROM AuthenticationConfiguration WHERE userName = 'bob' AND serverId < -1"_q),
        QVariant(1LL))
        << "no later row may get the id of a missing one";
}

TEST_F(ImportCommandTest, GivesNoIdThatTheStoreHasGiven)
{
    Sql("INSERT INTO ServerConfiguration (id, alias) VALUES (1, 'a'), (2, 'b');"_q);
    QByteArray const exported = Export(StorePath());
    Sql("INSERT INTO ServerConfiguration (id) VALUES (40); DELETE FROM ServerConfiguration"_q);
    RunResult const ran = Run({"import"_q, "-"_q}, exported);
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(RawStore(StorePath()).Value("SELECT group_concat(id) FROM ServerConfiguration"_q), QVariant("41,42"_q));
    EXPECT_EQ(Export(StorePath()).toStdString(), exported.toStdString());
    EXPECT_EQ(RunSuccessfully({"server"_q, "add"_q, "--alias"_q, "c"_q, "--dav-url"_q, "u"_q}).left(14),
              "added server 43"_q.left(14));
}

TEST_F(ImportCommandTest, IntoAStoreWithRecordsIsRefused)
{
    Fill();
    QByteArray const exported = Export(StorePath());
    RunResult const ran = Run({"import"_q, "-"_q}, exported);
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("the store has records already: servers, accounts, products, folders, files, "
                                 "generatedFiles, baseFiles, schedules"_q))
        << ran.err.toStdString();
    EXPECT_EQ(Export(StorePath()).toStdString(), exported.toStdString());
}

TEST_F(ImportCommandTest, ReportsCountsInWordsAndInJson)
{
    RunResult const ran = ImportBytes(QByteArray(OneServer) + Server);
    EXPECT_EQ(ran.out, "servers  1\nimported 1 record into the store '%1'\n"_q.arg(NewPath()));
    QFile::remove(NewPath());
    QJsonObject const json = ImportBytes(QByteArray(OneServer) + Server, {"--json"_q}).json().first().toObject();
    EXPECT_EQ(json.value("records"_q).toObject().value("servers"_q), 1);
    EXPECT_EQ(json.value("movedPaths"_q), 0);
}

TEST_F(ImportCommandTest, MovesPathsOfWholeNames)
{
    Fill();
    RunResult const ran =
        ImportBytes(Export(StorePath()), {"--map"_q, "/home/ada/=/Users/l&a"_q, "--map"_q, "/home/ada/r/a=/a"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.endsWith("; 7 paths were moved\n"_q)) << ran.out.toStdString();
    RawStore store(NewPath());
    EXPECT_EQ(
        store.Value("SELECT group_concat(clientPath) FROM (SELECT clientPath FROM FolderConfiguration ORDER BY id)"_q),
        QVariant("/Users/l&a/r,/a/b,/a,/home/adam"_q));
    EXPECT_EQ(
        store.Value("SELECT group_concat(clientPath) FROM (SELECT clientPath FROM FileConfiguration ORDER BY id)"_q),
        QVariant("/Users/l&a/r/f,/Users/l&a/r/a&b/g,/Users/l&a"_q));
    QString const links = store.Value("SELECT fileLinks FROM FileConfiguration WHERE fileLinks <> ''"_q).toString();
    EXPECT_TRUE(links.contains(" Path=\"/Users/l&amp;a/r/a&amp;b/g\"/>"_q)) << links.toStdString();
    EXPECT_TRUE(links.contains(" Path=\"f\"/>"_q)) << links.toStdString();
}

TEST_F(ImportCommandTest, OfARootFolderIsMappedToo)
{
    Sql("INSERT INTO FolderConfiguration (clientPath) VALUES ('/'), ('/a'), ('b');"_q);
    ASSERT_EQ(ImportBytes(Export(StorePath()), {"--map"_q, "/=/mnt/old"_q}).status, 0);
    EXPECT_EQ(RawStore(NewPath()).Value(
                  "SELECT group_concat(clientPath) FROM (SELECT clientPath FROM FolderConfiguration ORDER BY id)"_q),
              QVariant("/mnt/old,/mnt/old/a,b"_q));
}

TEST_F(ImportCommandTest, MapThatIsNoneIsWrongUsage)
{
    for (char const* map : {"", "/a", "=/a", "/a=", "/a=/b=/c"})
        EXPECT_EQ(ImportBytes(QByteArray(OneServer) + Server, {"--map"_q, QString::fromUtf8(map)}).status, 2) << map;
}

TEST_F(ImportCommandTest, DryRunChangesNothingAndPrintsTheSame)
{
    QByteArray const bytes = QByteArray(OneServer) + Server;
    RunResult const dry = ImportBytes(bytes, {"--dry-run"_q});
    EXPECT_EQ(dry.status, 0);
    EXPECT_FALSE(QFile::exists(NewPath()));
    EXPECT_EQ(ImportBytes(bytes).out, dry.out);
}

TEST_F(ImportCommandTest, BadFirstLineIsNamed)
{
    ExpectRefusal("", "line 1 of standard input: the file ends before its last record"_q);
    ExpectRefusal("SQLite format 3", "line 1 of standard input: the line is cut off"_q);
    ExpectRefusal("hello\n", "an object is expected (byte 1 of the line)"_q);
    ExpectRefusal("{}\n", "key 'format': this is no export of tandryctl"_q);
    QByteArray const header = OneServer;
    auto const with = [&](char const* before, char const* after) { return QByteArray(header).replace(before, after); };
    ExpectRefusal(with("tandry-export", "other"), "key 'format'"_q);
    ExpectRefusal(with("\"version\":1", "\"version\":2"), "a newer program has written version 2; this one knows 1"_q);
    ExpectRefusal(with("\"version\":1", "\"version\":0"), "key 'version'"_q);
    ExpectRefusal(with("\"version\":1", "\"version\":\"1\""), "key 'version'"_q);
    ExpectRefusal(with("\"secrets\":false", "\"secrets\":null"), "key 'secrets'"_q);
    ExpectRefusal(with(",\"secrets\":false", ""), "key 'secrets'"_q);
    ExpectRefusal(with("\"secrets\"", "\"x\":1,\"secrets\""), "key 'x': there is no such key"_q);
    ExpectRefusal(with("{\"servers\":1}", "[]"), "key 'records'"_q);
    ExpectRefusal(with("\"servers\":1", "\"servers\":-1"), "key 'records': servers is no count of records"_q);
    ExpectRefusal(with("\"servers\":1", "\"servers\":2147483648"), "servers is no count of records"_q);
    ExpectRefusal(with("\"servers\":1", "\"people\":1"), "there is no such kind of records"_q);
    ExpectRefusal(with("\"servers\":1", "\"roots\":1,\"folders\":1"), "roots and folders exclude each other"_q);
}

TEST_F(ImportCommandTest, BadRecordIsNamedByLineAndKeyAndNothingIsImported)
{
    QByteArray const first =
        QByteArray(OneServer).replace("\"servers\":1", "\"servers\":1,\"accounts\":1,\"schedules\":1");
    QByteArray const schedule = "{\"schedule\":1,\"folderConfigurationId\":0,\"startTime\":null,\"expireTime\":null,"
                                "\"syncScheduleType\":0,\"syncInterval\":5}\n";
    QByteArray const account = "{\"account\":1,\"domain\":null,\"domainId\":null,\"userName\":\"u\","
                               "\"nameValueProperties\":null,\"serverId\":1}\n";
    QByteArray const good = first + Server + account + schedule;
    EXPECT_EQ(ImportBytes(good, {"--dry-run"_q}).status, 0);
    auto const with = [&](char const* before, char const* after) {
        QByteArray changed = good;
        EXPECT_TRUE(changed.contains(before)) << before;
        return changed.replace(before, after);
    };
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":7"), "line 2 of standard input, key 'alias': a text or null"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":true"), "line 2 of standard input, key 'alias'"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":{\"blob\":\"=\"}"), "line 2 of standard input, key 'alias'"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":{\"text\":\"a\"}"), "line 2 of standard input, key 'alias'"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":\"\\ud800\""), "key 'alias': the text has a lone surrogate"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":\"\xff\""), "key 'alias': the text is not valid UTF-8"_q);
    ExpectRefusal(with("\"alias\":\"a\"", "\"alias\":\"a\",\"alias\":\"a\""), "key 'alias': the key stands twice"_q);
    ExpectRefusal(with("\"alias\":\"a\",", ""), "line 2 of standard input, key 'alias': the key is missing"_q);
    ExpectRefusal(with("\"davUrl\"", "\"davURL\""), "key 'davUrl': the key is missing"_q);
    ExpectRefusal(with("{\"server\":1,", "{\"server\":1,\"id\":4,"), "key 'id': there is no such key"_q);
    ExpectRefusal(with("{\"server\":1,", "{\"server\":2,"), "the server with number 1 is expected"_q);
    ExpectRefusal(with("{\"server\":1,", "{\"account\":1,"), "the server with number 1 is expected"_q);
    ExpectRefusal(with("\"serverId\":1", "\"serverId\":2"),
                  "line 3 of standard input, key 'serverId': the file has no"_q);
    ExpectRefusal(with("\"serverId\":1", "\"serverId\":-2"), "key 'serverId'"_q);
    ExpectRefusal(with("\"serverId\":1", "\"serverId\":{\"missing\":0}"), "key 'serverId'"_q);
    ExpectRefusal(with("\"serverId\":1", "\"serverId\":\"1\""), "key 'serverId': a whole number or null"_q);
    ExpectRefusal(with("\"folderConfigurationId\":0", "\"folderConfigurationId\":1"), "line 4 of standard input"_q);
    ExpectRefusal(with("\"syncInterval\":5", "\"syncInterval\":5.5"), "line 4 of standard input, key 'syncInterval'"_q);
    ExpectRefusal(with(",\"syncInterval\":5}\n", ",\"syncInterval\":5}"),
                  "line 4 of standard input: the line is cut off"_q);
    ExpectRefusal(first + Server + account, "line 4 of standard input: the file ends before its last record"_q);
    ExpectRefusal(good + schedule, "line 5 of standard input: there are more lines than records"_q);
}

TEST_F(ImportCommandTest, LinkToANumberOfNoFileIsRefused)
{
    Sql("INSERT INTO FileConfiguration (id, fileLinks) VALUES (1, '<L> <F FileId=\"1\"/></L>');"_q);
    QByteArray const exported = Export(StorePath());
    ExpectRefusal(QByteArray(exported).replace("FileId=\\\"1", "FileId=\\\"2"),
                  "line 2 of standard input, key 'fileLinks': a FileId is the number of no file"_q);
}

TEST_F(ImportCommandTest, SecretsMustBeThereAsTheFirstLineSays)
{
    Sql("INSERT INTO ProductConfiguration (consumerSecret) VALUES ('s3cret');"_q);
    QByteArray const with = Export(StorePath(), {"--with-secrets"_q});
    ExpectRefusal(QByteArray(with).replace("\"secrets\":true", "\"secrets\":false"),
                  "key 'consumerSecret': there is no such key"_q);
    ExpectRefusal(QByteArray(with).replace(",\"consumerSecret\":\"s3cret\"", ""),
                  "key 'consumerSecret': the key is missing"_q);
}

TEST_F(ImportCommandTest, KeysMayComeInAnyOrder)
{
    QByteArray const server = "{\"binaryDiffEncoder\":null, \"nameValueProperties\":null, \"davUrl\":null, "
                              "\"webServiceUrl\":\"w\", \"alias\":\"a\", \"server\":1 }\r\n";
    EXPECT_EQ(ImportBytes(OneServer + server).status, 0);
    EXPECT_EQ(Export(NewPath(), {"--only"_q, "servers"_q}), QByteArray(OneServer) + Server);
}

TEST_F(ImportCommandTest, OfFilesThatCannotBeReadIsRefused)
{
    EXPECT_EQ(Run({"import"_q, At("missing")}).status, 1);
    EXPECT_EQ(Run({"import"_q, folder.path()}).status, 1);
    WriteFile("cut"_q, QByteArray(OneServer) + QByteArray(Server).chopped(10));
    RunResult const ran = Run({"import"_q, At("cut"), "--json"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("\"code\":\"unusable-file\""_q)) << ran.err.toStdString();
    EXPECT_TRUE(ran.err.contains("line 2"_q)) << ran.err.toStdString();
}

TEST_F(ImportCommandTest, ThatTheStoreRefusesMidwayImportsNothing)
{
    Fill();
    QByteArray const exported = Export(StorePath());
    ASSERT_EQ(RunWithoutStore({"--store"_q, NewPath(), "init"_q}).status, 0);
    RawStore(NewPath()).Run("INSERT INTO sqlite_sequence VALUES ('BaseFileConfiguration', 2147483647)"_q);
    RunResult const ran = ImportBytes(exported);
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("the store has no ids left"_q)) << ran.err.toStdString();
    RawStore store(NewPath());
    EXPECT_EQ(store.Count("ServerConfiguration"_q), 0);
    EXPECT_EQ(store.Count("Schedules"_q), 1);
}
