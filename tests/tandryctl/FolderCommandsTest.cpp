#include "ToolFixture.h"

#include "support/RawStore.h"

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class FolderCommandsTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
    }

    /// Records docs/a/b/c with a file in each of b and c: the folders 2, 3 and 4.
    void ScanTree()
    {
        MakeDirectory("docs/a/b/c"_q);
        WriteFile("docs/a/b/file"_q);
        WriteFile("docs/a/b/c/file"_q);
        RunSuccessfully({"scan"_q});
    }
};

} // namespace

TEST_F(FolderCommandsTest, AddRecordsAFolderAndItsMissingParents)
{
    QJsonObject const added = JsonObject({"folder"_q, "add"_q, At("docs/a/b/c")});
    EXPECT_EQ(added.value("clientPath"_q).toString(), At("docs/a/b/c"));
    EXPECT_EQ(added.value("serverPath"_q).toString(), "/s/a/b/c"_q);
    EXPECT_EQ(added.value("rootId"_q).toInt(), 1);
    QJsonArray const all = Json({"list"_q, "folders"_q});
    ASSERT_EQ(all.size(), 4);
    EXPECT_EQ(all.at(1).toObject().value("name"_q).toString(), "a"_q);
    EXPECT_EQ(added.value("parentId"_q), all.at(2).toObject().value("id"_q));
}

TEST_F(FolderCommandsTest, AddReportsHowManyItRecorded)
{
    EXPECT_TRUE(RunSuccessfully({"folder"_q, "add"_q, At("docs/a/b")}).contains("and 1 folder above it"_q));
}

TEST_F(FolderCommandsTest, AddOfARecordedFolderReportsThat)
{
    RunSuccessfully({"folder"_q, "add"_q, At("docs/a")});
    EXPECT_TRUE(RunSuccessfully({"folder"_q, "add"_q, At("docs/a")}).contains("already on record"_q));
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 2);
}

TEST_F(FolderCommandsTest, AddOutsideOfAllRootsFindsNothing)
{
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("elsewhere")}).status, 1);
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("docs2")}).status, 1);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, AddInAnotherCaseThanTheRootsFails)
{
    RunResult const ran = Run({"folder"_q, "add"_q, At("DOCS/a")});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, AddRefusesAFile)
{
    WriteFile("docs/file"_q);
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("docs/file")}).status, 1);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, AddConsidersOnlyTheGivenAccount)
{
    RunSuccessfully({"server"_q, "add"_q, "--dav-url"_q, "https://a.example/d"_q});
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("docs/a"), "--account"_q, "1"_q}).status, 1);
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("docs/a"), "--account"_q, "2"_q}).status, 1);
}

TEST_F(FolderCommandsTest, AddReportsThatTheStoreRefusesToWrite)
{
    UseUpIds("FolderConfiguration");
    EXPECT_EQ(Run({"folder"_q, "add"_q, At("docs/a")}).status, 3);
}

TEST_F(FolderCommandsTest, RemoveRemovesOnlyTheFoldersRowAndListsTheOrphans)
{
    ScanTree();
    QString const out = RunSuccessfully({"folder"_q, "remove"_q, "3"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("leaving 1 sub-folder and 1 file that belong to nothing"_q)) << out.toStdString();
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 3);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 2);
}

TEST_F(FolderCommandsTest, RemoveRecursivelyRemovesEverythingBelow)
{
    ScanTree();
    QString const out = RunSuccessfully({"folder"_q, "remove"_q, "2"_q, "--recursive"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("with 2 sub-folders and 2 files"_q)) << out.toStdString();
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
    EXPECT_EQ(Run({"list"_q, "files"_q}).status, 1);
}

TEST_F(FolderCommandsTest, RemoveRecursivelyListsOrphanedSchedulesAndGeneratedFiles)
{
    ScanTree();
    RawStore(StorePath())
        .Run("INSERT INTO Schedules (folderConfigurationId) VALUES (4);"
             "INSERT INTO GeneratedFileConfiguration (folderConfigurationId) VALUES (3), (4);"_q);
    QString const out = RunSuccessfully({"folder"_q, "remove"_q, "2"_q, "-r"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("leaving 2 generated files and 1 schedule"_q)) << out.toStdString();
}

TEST_F(FolderCommandsTest, RemoveRecursivelyNamesARingOfParentsAndRemovesNothing)
{
    ScanTree();
    RawStore(StorePath()).Run("UPDATE FolderConfiguration SET parentId = 4 WHERE id = 2"_q);
    RunResult const ran = Run({"folder"_q, "remove"_q, "3"_q, "--recursive"_q, "--yes"_q});
    EXPECT_EQ(ran.status, 1);
    for (char const* word : {"folder 2", "folder 3", "folder 4", "a ring", "folder remove 3"})
        EXPECT_TRUE(ran.err.contains(QLatin1String(word))) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 4);
    RunSuccessfully({"folder"_q, "remove"_q, "3"_q, "--yes"_q});
    RunSuccessfully({"folder"_q, "remove"_q, "4"_q, "--recursive"_q, "--yes"_q});
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, RemoveRecursivelyOfAVeryDeepTreeNeedsNoDeepStack)
{
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 30000) "
             "INSERT INTO FolderConfiguration (id, parentId, rootId) SELECT i, i - 1, 1 FROM n"_q);
    QString const out = RunSuccessfully({"folder"_q, "remove"_q, "2"_q, "--recursive"_q, "--yes"_q});
    EXPECT_TRUE(out.contains("with 29998 sub-folders"_q)) << out.toStdString();
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, RemoveWithoutTerminalAndYesRefuses)
{
    ScanTree();
    EXPECT_EQ(Run({"folder"_q, "remove"_q, "4"_q}).status, 2);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 4);
}

TEST_F(FolderCommandsTest, RemoveAsksOnATerminal)
{
    ScanTree();
    EXPECT_EQ(RunOnTerminal({"folder"_q, "remove"_q, "4"_q}, "n\n").status, 1);
    EXPECT_EQ(RunOnTerminal({"folder"_q, "remove"_q, "4"_q}, "yes\n").status, 0);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 3);
}

TEST_F(FolderCommandsTest, RemoveOfARootRefersToTheOtherCommand)
{
    RunResult const ran = Run({"folder"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("root remove 1"_q));
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 1);
}

TEST_F(FolderCommandsTest, RemoveOfAnUnknownFolderFindsNothing)
{
    EXPECT_EQ(Run({"folder"_q, "remove"_q, "77"_q, "--yes"_q}).status, 1);
}

TEST_F(FolderCommandsTest, RemoveThatFailsMidwayKeepsTheWholeTree)
{
    ScanTree();
    SpoilIndex("FolderConfiguration_server"); // files go first
    EXPECT_EQ(Run({"folder"_q, "remove"_q, "2"_q, "--recursive"_q, "--yes"_q}).status, 3);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 4);
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(), 2);
}
