// Tests which records a scan removes, and when it asks first.

#include "Screen.h"
#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QDir>
#include <QFile>

#include <sys/ioctl.h>
#include <sys/stat.h>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// A root "docs" with the files 1 to 20, all recorded: with 20 records, pruning more than two of them asks.
class ScanPruningTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
        for (int i = 1; i <= 20; ++i)
            WriteFile("docs/%1"_q.arg(i));
        RunSuccessfully({"scan"_q});
    }

    void DeleteFiles(int first, int last) const
    {
        for (int i = first; i <= last; ++i)
            ASSERT_TRUE(QFile::remove(At("docs/%1"_q.arg(i))));
    }

    /// Records a file on disk as generated from the file with this id.
    void AddGenerated(QString const& path, int fileId)
    {
        RawStore(StorePath())
            .Run("INSERT INTO GeneratedFileConfiguration (clientPath, parentFileId, fileType, rootFolderId) "
                 "VALUES ('%1', %2, 1, 1);"_q.arg(path, QString::number(fileId)));
    }

    int IdOf(QString const& name)
    {
        return RawStore(StorePath()).Value("SELECT id FROM FileConfiguration WHERE name = '%1'"_q.arg(name)).toInt();
    }

    int Files() { return Json({"list"_q, "files"_q}).size(); }
};

} // namespace

TEST_F(ScanPruningTest, TenthOfTheRecordsGoesWithoutAQuestion)
{
    DeleteFiles(1, 2);
    EXPECT_TRUE(
        RunSuccessfully({"scan"_q, "--prune"_q}).contains("files: 0 added, 0 changed, 18 unchanged, 2 pruned"_q));
    EXPECT_EQ(Files(), 18);
}

TEST_F(ScanPruningTest, MoreThanATenthIsRefusedWithoutATerminal)
{
    DeleteFiles(1, 3);
    RunResult const ran = Run({"scan"_q, "--prune"_q}, "y\n");
    EXPECT_EQ(ran.status, 2);
    EXPECT_TRUE(ran.err.contains("3 files and 0 folders of root 1 '"_q + At("docs") + "', 3 of its 20 records"_q))
        << ran.err.toStdString();
    EXPECT_TRUE(ran.err.contains("--yes"_q) && ran.err.contains("--max-prune"_q)) << ran.err.toStdString();
    EXPECT_EQ(Files(), 20);
}

TEST_F(ScanPruningTest, MoreThanATenthAsksOnATerminal)
{
    DeleteFiles(1, 3);
    RunResult const denied = RunOnTerminal({"scan"_q, "--prune"_q}, "n\n");
    EXPECT_EQ(denied.status, 1);
    EXPECT_TRUE(denied.out.contains("Prune 3 files"_q)) << denied.out.toStdString();
    EXPECT_TRUE(denied.out.contains("nothing was pruned"_q)) << denied.out.toStdString();
    EXPECT_EQ(Files(), 20);
    EXPECT_EQ(RunOnTerminal({"scan"_q, "--prune"_q}, "y\n").status, 0);
    EXPECT_EQ(Files(), 17);
}

TEST_F(ScanPruningTest, YesConfirms)
{
    DeleteFiles(1, 20);
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q});
    EXPECT_EQ(Run({"list"_q, "files"_q}).status, 1);
}

TEST_F(ScanPruningTest, LimitIsTheUsersChoice)
{
    DeleteFiles(1, 3);
    EXPECT_EQ(Run({"scan"_q, "--prune"_q, "--max-prune"_q, "14"_q}).status, 2);
    EXPECT_EQ(Files(), 20);
    RunSuccessfully({"scan"_q, "--prune"_q, "--max-prune"_q, "15"_q});
    EXPECT_EQ(Files(), 17);
    DeleteFiles(4, 4);
    EXPECT_EQ(Run({"scan"_q, "--prune"_q, "--max-prune"_q, "101"_q}).status, 2);
    EXPECT_EQ(Run({"scan"_q, "--prune"_q, "--max-prune"_q, "-1"_q}).status, 2);
    EXPECT_EQ(Files(), 17);
}

TEST_F(ScanPruningTest, FewRecordsGoWithoutAQuestion)
{
    DeleteFiles(1, 1);
    RunSuccessfully({"scan"_q, "--prune"_q}); // leaves 19
    DeleteFiles(2, 20);
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_EQ(Run({"list"_q, "files"_q}).status, 1);
}

TEST_F(ScanPruningTest, RefusalConcernsItsRootAndNothingElse)
{
    AddRoot("other"_q, "/o"_q);
    WriteFile("other/a"_q);
    WriteFile("other/b"_q);
    RunSuccessfully({"scan"_q});
    DeleteFiles(1, 3);
    WriteFile("docs/new"_q);
    QFile::remove(At("other/a"));
    EXPECT_EQ(Run({"scan"_q, "--prune"_q}).status, 2);
    EXPECT_EQ(Json({"list"_q, "files"_q, "--root"_q, "1"_q}).size(), 21);
    EXPECT_EQ(Json({"list"_q, "files"_q, "--root"_q, "2"_q}).size(), 1);
}

TEST_F(ScanPruningTest, GeneratedFilesAreNamedBeforeTheQuestionAndCountedAfterIt)
{
    WriteFile("made one"_q);
    WriteFile("made two"_q);
    AddGenerated(At("made one"), IdOf("1"_q));
    AddGenerated(At("made two"), IdOf("1"_q));
    AddGenerated(At("missing"), IdOf("1"_q));
    AddGenerated(At("kept"), IdOf("2"_q));
    WriteFile("kept"_q);
    DeleteFiles(1, 1);

    RunResult const refused = Run({"scan"_q, "--prune"_q});
    EXPECT_EQ(refused.status, 2);
    for (char const* name : {"made one", "made two"}) {
        EXPECT_TRUE(refused.err.contains("to be deleted from the disk: '"_q + At(name) + "'\n"_q))
            << refused.err.toStdString();
        EXPECT_TRUE(QFile::exists(At(name)));
    }
    EXPECT_FALSE(refused.err.contains(At("missing"))) << refused.err.toStdString();
    EXPECT_FALSE(refused.err.contains("max-prune"_q)) << refused.err.toStdString();
    EXPECT_EQ(Files(), 20);

    RunResult const asked =
        RunOnTerminal({"scan"_q, "--prune"_q}, {}, {{"disk? [y/N]", [] { return QByteArray("y\n"); }}});
    EXPECT_EQ(asked.status, 0) << asked.out.toStdString();
    EXPECT_LT(asked.out.indexOf(At("made two")), asked.out.indexOf("delete 2 generated files from the disk?"_q));
    EXPECT_TRUE(asked.out.contains("deleted from the disk: 2 generated files"_q)) << asked.out.toStdString();
    EXPECT_FALSE(QFile::exists(At("made one")));
    EXPECT_FALSE(QFile::exists(At("made two")));
    EXPECT_TRUE(QFile::exists(At("kept")));
    EXPECT_EQ(Files(), 19);
    EXPECT_EQ(Json({"list"_q, "files"_q, "--type"_q, "generated"_q}).size(), 1);
}

TEST_F(ScanPruningTest, GeneratedFileThatCannotBeDeletedIsReported)
{
    MakeDirectory("closed"_q);
    WriteFile("closed/made"_q);
    AddGenerated(At("closed/made"), IdOf("1"_q));
    DeleteFiles(1, 1);
    ASSERT_EQ(::chmod(At("closed").toUtf8().constData(), 0500), 0);
    auto const ran = RunWithoutPrivileges({"scan"_q, "--prune"_q, "--yes"_q});
    ::chmod(At("closed").toUtf8().constData(), 0700);
    if (!ran)
        GTEST_SKIP() << "the superuser here can't give up privileges";
    EXPECT_EQ(ran->status, 1);
    EXPECT_TRUE(ran->err.contains("'"_q + At("closed/made") + "' cannot be deleted"_q)) << ran->err.toStdString();
    EXPECT_FALSE(ran->out.contains("\ndeleted from the disk:"_q)) << ran->out.toStdString();
    EXPECT_TRUE(QFile::exists(At("closed/made")));
    EXPECT_EQ(Files(), 19);
}

TEST_F(ScanPruningTest, ProgressStaysOnOneLineAndFollowsTheTerminalsWidth)
{
    DeleteFiles(1, 20);
    // The question keeps the program waiting while the terminal becomes narrow.
    bool isNarrow = false;
    RunResult const ran = RunOnScreen(
        {"--store"_q, StorePath(), "scan"_q, "--prune"_q}, {80, {}}, [&](QByteArray const& shown, int terminal) {
            if (isNarrow || !shown.contains("[y/N]"))
                return QByteArray();
            winsize size{};
            size.ws_col = 40;
            EXPECT_EQ(::ioctl(terminal, TIOCSWINSZ, &size), 0);
            isNarrow = true;
            return QByteArray("y\n");
        });
    EXPECT_EQ(ran.status, 0) << ran.out.toStdString();
    QString const narrow = ran.out.section("[y/N]"_q, 1);
    EXPECT_TRUE(narrow.contains("\rpruning 0% of 20 records, 0/s\x1b[K"_q)) << narrow.toStdString();
    EXPECT_FALSE(narrow.contains("pruning ["_q)) << narrow.toStdString();
}

TEST_F(ScanPruningTest, RelativePathOfAGeneratedFileIsNotDeleted)
{
    WriteFile("made"_q); // in the working directory of the program
    AddGenerated("made"_q, IdOf("1"_q));
    DeleteFiles(1, 1);
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_TRUE(QFile::exists(At("made")));
    EXPECT_EQ(Files(), 19);
}
