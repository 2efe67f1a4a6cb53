#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class FileCommandsTest : public ToolTest
{
protected:
    /// Records root 1, docs, with the file 1, "a", and the link 2, "link", to it.
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
        WriteFile("docs/a"_q, "12345");
        Link("a", "docs/link"_q);
        RunSuccessfully({"scan"_q});
    }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }
};

} // namespace

TEST_F(FileCommandsTest, ShowAcceptsAnIdOrAPath)
{
    QJsonObject const byId = JsonObject({"file"_q, "show"_q, "1"_q});
    EXPECT_EQ(byId.value("clientPath"_q).toString(), At("docs/a"));
    EXPECT_EQ(JsonObject({"file"_q, "show"_q, At("docs/a")}), byId);
    RunResult const relative =
        RunWithoutStore({"--store"_q, StorePath(), "--json"_q, "file"_q, "show"_q, "docs/../docs/a"_q});
    EXPECT_EQ(relative.json().first().toObject(), byId);
}

TEST_F(FileCommandsTest, ShowFindsAFileNamedLikeANumberByItsPath)
{
    WriteFile("docs/1"_q);
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(JsonObject({"file"_q, "show"_q, At("docs/1")}).value("name"_q).toString(), "1"_q);
    EXPECT_EQ(JsonObject({"file"_q, "show"_q, "1"_q}).value("name"_q).toString(), "a"_q);
}

TEST_F(FileCommandsTest, ShowHasALineForEachColumn)
{
    QString const out = RunSuccessfully({"file"_q, "show"_q, "1"_q});
    EXPECT_TRUE(out.contains("size                    5\n"_q)) << out.toStdString();
    EXPECT_TRUE(out.contains("folder                  "_q + At("docs"))) << out.toStdString();
}

TEST_F(FileCommandsTest, ShowNamesTheAccountAndTheServer)
{
    QJsonObject const without = JsonObject({"file"_q, "show"_q, "1"_q});
    EXPECT_TRUE(without.value("account"_q).isNull());
    EXPECT_TRUE(without.value("serverId"_q).isNull());

    RunSuccessfully({"server"_q, "add"_q, "--web-service-url"_q, "https://office.example/api"_q});
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--domain"_q, "corp"_q, "--server"_q, "1"_q});
    Sql("UPDATE FolderConfiguration SET authenticationId = 1;"_q);
    QJsonObject const with = JsonObject({"file"_q, "show"_q, "1"_q});
    EXPECT_EQ(with.value("accountId"_q).toInt(), 1);
    EXPECT_EQ(with.value("account"_q).toString(), "corp\\anna"_q);
    EXPECT_EQ(with.value("serverId"_q).toInt(), 1);
    EXPECT_EQ(with.value("server"_q).toString(), "office"_q);
}

TEST_F(FileCommandsTest, ShowResolvesLinks)
{
    EXPECT_EQ(JsonObject({"file"_q, "show"_q, "2"_q}).value("linksTo"_q).toString(), At("docs/a") + " (file 1)"_q);
}

TEST_F(FileCommandsTest, ShowOfAFileThatIsNotOnRecordFindsNothing)
{
    for (QString const& file : {"77"_q, At("docs/missing"), "-1"_q}) {
        RunResult const ran = Run({"file"_q, "show"_q, "--"_q, file});
        EXPECT_EQ(ran.status, 1) << file.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    }
}

TEST_F(FileCommandsTest, ShowOfGeneratedAndBaseFiles)
{
    Sql("INSERT INTO GeneratedFileConfiguration (clientPath, name, fileType) VALUES ('/g', 'g', 1);"
        "INSERT INTO BaseFileConfiguration (clientPath, name, fileType) VALUES ('/b', 'b', 2);"_q);
    for (QString const& file : {"1"_q, "/g"_q})
        EXPECT_EQ(JsonObject({"file"_q, "show"_q, file, "--type"_q, "generated"_q}).value("name"_q).toString(), "g"_q);
    for (QString const& file : {"1"_q, "/b"_q})
        EXPECT_EQ(JsonObject({"file"_q, "show"_q, file, "--type"_q, "base"_q}).value("name"_q).toString(), "b"_q);
    EXPECT_EQ(Run({"file"_q, "show"_q, "2"_q, "--type"_q, "base"_q}).status, 1);
    EXPECT_EQ(Run({"file"_q, "show"_q, "/b"_q, "--type"_q, "generated"_q}).status, 1);
}

TEST_F(FileCommandsTest, LinksListsEachLinkWithItsTarget)
{
    QJsonArray const links = Json({"file"_q, "links"_q, At("docs/link")});
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links.first().toObject(),
              (QJsonObject{{"fileId"_q, 1},
                           {"path"_q, "a"_q},
                           {"refId"_q, ""_q},
                           {"serverFileId"_q, ""_q},
                           {"linksTo"_q, At("docs/a")}}));
}

TEST_F(FileCommandsTest, LinkToAFileThatIsNotOnRecordHasNoTarget)
{
    Sql("UPDATE FileConfiguration SET fileLinks = '<F><L FileId=\"-1\" Path=\"gone\"/></F>' WHERE id = 2;"_q);
    QJsonObject const link = JsonObject({"file"_q, "links"_q, "2"_q});
    EXPECT_EQ(link.value("fileId"_q).toInt(), -1);
    EXPECT_TRUE(link.value("linksTo"_q).isNull());
    EXPECT_EQ(JsonObject({"file"_q, "show"_q, "2"_q}).value("linksTo"_q).toString(), "gone (not on record)"_q);
}

TEST_F(FileCommandsTest, LinksOfAFileWithoutLinksFindsNothing)
{
    EXPECT_EQ(Run({"file"_q, "links"_q, "1"_q}).status, 1);
}

TEST_F(FileCommandsTest, RemoveRemovesTheRecordAndKeepsTheFile)
{
    RunSuccessfully({"file"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 1);
    EXPECT_TRUE(QFile::exists(At("docs/a")));
}

TEST_F(FileCommandsTest, RemoveReportsAndDeletesGeneratedFilesInStoreAndOnDisk)
{
    WriteFile("made"_q);
    Sql("INSERT INTO GeneratedFileConfiguration (clientPath, parentFileId, fileType) VALUES ('%1', 1, 1);"_q.arg(
        At("made")));
    RunResult const refused = Run({"file"_q, "remove"_q, "1"_q});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.contains("1 generated file"_q) && refused.err.contains("disk"_q))
        << refused.err.toStdString();
    EXPECT_TRUE(QFile::exists(At("made")));

    RunSuccessfully({"file"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_FALSE(QFile::exists(At("made")));
    EXPECT_EQ(Run({"list"_q, "files"_q, "--type"_q, "generated"_q}).status, 1);
}

TEST_F(FileCommandsTest, RemoveAsksOnATerminal)
{
    EXPECT_EQ(RunOnTerminal({"file"_q, "remove"_q, "1"_q}, "n\n").status, 1);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 2);
    EXPECT_EQ(RunOnTerminal({"file"_q, "remove"_q, "1"_q}, "Y\n").status, 0);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 1);
}

TEST_F(FileCommandsTest, RemoveInJsonPrintsTheRecord)
{
    EXPECT_EQ(JsonObject({"file"_q, "remove"_q, "1"_q, "--yes"_q}).value("name"_q).toString(), "a"_q);
}

TEST_F(FileCommandsTest, RemoveOfAnUnknownFileFindsNothing)
{
    EXPECT_EQ(Run({"file"_q, "remove"_q, "77"_q, "--yes"_q}).status, 1);
}

TEST_F(FileCommandsTest, RemoveReportsThatTheStoreRefusesToWrite)
{
    SpoilIndex("FileConfiguration_server");
    EXPECT_EQ(Run({"file"_q, "remove"_q, "1"_q, "--yes"_q}).status, 3);
}
