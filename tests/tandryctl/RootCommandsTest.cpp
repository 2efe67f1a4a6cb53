#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class RootCommandsTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    RunResult Add(QString const& directory, QStringList const& more = {})
    {
        return Run(QStringList{"root"_q, "add"_q, directory, "--server-path"_q, "/s"_q} + more);
    }
};

} // namespace

TEST_F(RootCommandsTest, AddRecordsADirectoryAsARoot)
{
    MakeDirectory("docs"_q);
    QJsonObject const root = JsonObject({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/team/docs"_q});
    EXPECT_EQ(root.value("clientPath"_q).toString(), At("docs"));
    EXPECT_EQ(root.value("serverPath"_q).toString(), "/team/docs"_q);
    EXPECT_EQ(root.value("name"_q).toString(), "docs"_q);
    EXPECT_EQ(root.value("parentId"_q).toInt(), 0);
    EXPECT_EQ(root.value("rootId"_q), root.value("id"_q));
    EXPECT_EQ(root.value("authenticationId"_q).toInt(), -1);
    EXPECT_EQ(JsonObject({"list"_q, "roots"_q}), root);
}

TEST_F(RootCommandsTest, AddAcceptsANameAndAnAccount)
{
    MakeDirectory("docs"_q);
    RunSuccessfully({"server"_q, "add"_q, "--dav-url"_q, "https://a.example/d"_q});
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
    QJsonObject const root = JsonObject(
        {"root"_q, "add"_q, At("docs"), "--server-path"_q, "/s"_q, "--account"_q, "1"_q, "--name"_q, "Papers"_q});
    EXPECT_EQ(root.value("name"_q).toString(), "Papers"_q);
    EXPECT_EQ(root.value("authenticationId"_q).toInt(), 1);
}

TEST_F(RootCommandsTest, AddMakesTheDirectoryAbsoluteAndCleansBothPaths)
{
    MakeDirectory("docs"_q);
    QJsonObject const root = RunWithoutStore({"--store"_q,
                                              StorePath(),
                                              "--json"_q,
                                              "root"_q,
                                              "add"_q,
                                              "./docs/../docs/"_q,
                                              "--server-path"_q,
                                              "/s//t/"_q})
                                 .json()
                                 .first()
                                 .toObject();
    EXPECT_EQ(root.value("clientPath"_q).toString(), At("docs"));
    EXPECT_EQ(root.value("serverPath"_q).toString(), "/s/t"_q);
}

TEST_F(RootCommandsTest, AddRefusesAPathThatIsNoDirectory)
{
    WriteFile("file"_q);
    for (char const* name : {"file", "missing"}) {
        RunResult const ran = Add(At(name));
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(ran.err.contains(At(name)));
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    }
    EXPECT_EQ(Run({"list"_q, "roots"_q}).status, 1);
}

TEST_F(RootCommandsTest, AddRefusesAnOverlappingDirectoryAndNamesTheRoot)
{
    MakeDirectory("a/docs/sub/deep"_q);
    RunSuccessfully({"root"_q, "add"_q, At("a/docs"), "--server-path"_q, "/s"_q});
    for (char const* name : {"a/docs", "a/docs/sub", "a/docs/sub/deep", "a", "."}) {
        RunResult const ran = Add(At(name));
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_TRUE(ran.err.contains("root 1 '"_q + At("a/docs"))) << ran.err.toStdString();
    }
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(RootCommandsTest, AddAcceptsASiblingWithTheSamePrefix)
{
    AddRoot("docs"_q, "/a"_q);
    AddRoot("docs2"_q, "/b"_q);
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 2);
}

TEST_F(RootCommandsTest, AddRefusesALinkIntoARoot)
{
    AddRoot("docs"_q, "/a"_q);
    Link("docs", "link"_q);
    EXPECT_EQ(Add(At("link")).status, 1);
}

TEST_F(RootCommandsTest, AddRefusesAnUnknownAccount)
{
    MakeDirectory("docs"_q);
    RunResult const ran = Add(At("docs"), {"--account"_q, "9"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("account 9"_q));
    EXPECT_EQ(Run({"list"_q, "roots"_q}).status, 1);
}

TEST_F(RootCommandsTest, AddWithoutAServerPathIsWrongUsage)
{
    MakeDirectory("docs"_q);
    EXPECT_EQ(Run({"root"_q, "add"_q, At("docs")}).status, 2);
    EXPECT_EQ(Run({"root"_q, "add"_q, At("docs"), "--server-path"_q, ""_q}).status, 2);
}

TEST_F(RootCommandsTest, AddReportsThatTheStoreRefusesToWrite)
{
    UseUpIds("FolderConfiguration");
    MakeDirectory("docs"_q);
    RunResult const ran = Add(At("docs"));
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("constraint failed"_q)) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
}

TEST_F(RootCommandsTest, RemoveRemovesTheRootWithEverythingInIt)
{
    AddRoot("docs"_q, "/a"_q);
    AddRoot("other"_q, "/b"_q);
    MakeDirectory("docs/sub"_q);
    WriteFile("docs/sub/file"_q, "x");
    WriteFile("other/file"_q, "x");
    RunSuccessfully({"scan"_q});
    RawStore(StorePath())
        .Run("INSERT INTO GeneratedFileConfiguration (clientPath, rootFolderId, fileType) VALUES ('/g', 1, 1);"_q);

    QString const out = RunSuccessfully({"root"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("with 1 folder, 1 file and 1 generated file"_q)) << out.toStdString();

    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 1);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--type"_q, "generated"_q}).status, 1);
    EXPECT_TRUE(QFile::exists(At("docs/sub/file"))); // nothing is deleted on disk
}

TEST_F(RootCommandsTest, RemoveListsOrphans)
{
    AddRoot("docs"_q, "/a"_q);
    RawStore(StorePath())
        .Run("INSERT INTO Schedules (folderConfigurationId) VALUES (1);"
             "INSERT INTO BaseFileConfiguration (rootFolderId) VALUES (1);"_q);
    QString const out = RunSuccessfully({"root"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("leaving 1 base file and 1 schedule that belong to nothing"_q)) << out.toStdString();
}

TEST_F(RootCommandsTest, RemoveWithoutTerminalAndYesRefusesAndShowsWhatItWouldRemove)
{
    AddRoot("docs"_q, "/a"_q);
    MakeDirectory("docs/sub"_q);
    RunSuccessfully({"scan"_q});
    RunResult const ran = Run({"root"_q, "remove"_q, "1"_q}, "y\n");
    EXPECT_EQ(ran.status, 2);
    EXPECT_TRUE(ran.err.contains("1 folder"_q) && ran.err.contains("--yes"_q)) << ran.err.toStdString();
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 2);
}

TEST_F(RootCommandsTest, RemoveOnATerminalAcceptsYes)
{
    AddRoot("docs"_q, "/a"_q);
    RunResult const ran = RunOnTerminal({"root"_q, "remove"_q, "1"_q}, "y\n");
    EXPECT_EQ(ran.status, 0) << ran.out.toStdString();
    EXPECT_TRUE(ran.out.contains("Remove root 1 '"_q)) << ran.out.toStdString();
    EXPECT_EQ(Run({"list"_q, "roots"_q}).status, 1);
}

TEST_F(RootCommandsTest, RemoveOnATerminalTreatsAnyOtherAnswerAsNo)
{
    AddRoot("docs"_q, "/a"_q);
    for (char const* answer : {"n\n", "\n", "perhaps\n", "\x04"}) {
        RunResult const ran = RunOnTerminal({"root"_q, "remove"_q, "1"_q}, answer);
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(ran.out.contains("nothing was removed"_q)) << ran.out.toStdString();
    }
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(RootCommandsTest, RemoveWithYesAsksNothingOnATerminal)
{
    AddRoot("docs"_q, "/a"_q);
    RunResult const ran = RunOnTerminal({"root"_q, "remove"_q, "1"_q, "-y"_q});
    EXPECT_EQ(ran.status, 0);
    EXPECT_FALSE(ran.out.contains(QLatin1Char('?'))) << ran.out.toStdString();
}

TEST_F(RootCommandsTest, RemoveOfAnUnknownRootOrASubFolderFindsNothing)
{
    AddRoot("docs"_q, "/a"_q);
    MakeDirectory("docs/sub"_q);
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(Run({"root"_q, "remove"_q, "77"_q, "--yes"_q}).status, 1);
    EXPECT_EQ(Run({"root"_q, "remove"_q, "2"_q, "--yes"_q}).status, 1);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 2);
}

TEST_F(RootCommandsTest, RemoveThatFailsMidwayKeepsEverything)
{
    AddRoot("docs"_q, "/a"_q);
    MakeDirectory("docs/sub"_q);
    WriteFile("docs/file"_q);
    RunSuccessfully({"scan"_q});
    SpoilIndex("FileConfiguration_server");
    EXPECT_EQ(Run({"root"_q, "remove"_q, "1"_q, "--yes"_q}).status, 3);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 2);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 1);
}

TEST_F(RootCommandsTest, MessagesShowPercentSignsInNamesUnchanged)
{
    MakeDirectory("%1%2%3 %L1/%2"_q);
    EXPECT_EQ(RunSuccessfully({"root"_q, "add"_q, At("%1%2%3 %L1"), "--server-path"_q, "/%1"_q}),
              "recorded root 1 '"_q + At("%1%2%3 %L1") + "'; 'tandryctl scan 1' records what is in it\n"_q);
    RunResult const inside = Add(At("%1%2%3 %L1/%2"));
    EXPECT_TRUE(
        inside.err.contains("'"_q + At("%1%2%3 %L1/%2") + "' lies inside root 1 '"_q + At("%1%2%3 %L1") + "';"_q))
        << inside.err.toStdString();
    RunResult const folder1 = Run({"folder"_q, "remove"_q, "1"_q});
    EXPECT_TRUE(folder1.err.contains("folder 1 '"_q + At("%1%2%3 %L1") + "' is a root"_q)) << folder1.err.toStdString();
    EXPECT_TRUE(Run({"root"_q, "remove"_q, "1"_q}).err.contains("root 1 '"_q + At("%1%2%3 %L1") + "'"_q));
}
