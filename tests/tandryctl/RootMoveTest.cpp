// Recording that a root's folder was moved on disk.

#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class RootMoveTest : public ToolTest
{
protected:
    /// Records the root "r" with the folder "f" and the files "a" and "f/b", and a root "q" with the file "c".
    void SetUp() override
    {
        Init();
        MakeDirectory("r/f"_q);
        WriteFile("r/a"_q, "1");
        WriteFile("r/f/b"_q, "22");
        AddRoot("r"_q, "/s"_q);
        WriteRoot("q"_q);
        RunSuccessfully({"scan"_q});
        MakeDirectory("disk"_q);
    }

    void WriteRoot(QString const& name)
    {
        AddRoot(name, "/"_q + name);
        WriteFile(name + "/c"_q, "333");
    }

    void MoveFolder() const { ASSERT_TRUE(QFile::rename(At("r"), At("disk/r"))); }

    RunResult Move(QStringList const& more = {"--yes"_q})
    {
        return Run(QStringList{"root"_q, "move"_q, "1"_q, At("disk/r")} + more);
    }

    /// Returns all paths of a table below the test's folder, in the order of their ids.
    QStringList Paths(char const* table)
    {
        QStringList paths;
        for (QVector<QVariant> const& row :
             RawStore(StorePath()).Rows("SELECT clientPath FROM %1 ORDER BY id"_q.arg(QLatin1String(table))))
            paths.append(row.first().toString().remove(folder.path() + QLatin1Char('/')));
        return paths;
    }

    QStringList const unmovedFolders{"r"_q, "q"_q, "r/f"_q};
};

} // namespace

TEST_F(RootMoveTest, EveryPathOfTheRootIsChangedAndNoOther)
{
    RawStore(StorePath())
        .Run(
            "INSERT INTO GeneratedFileConfiguration (rootFolderId, clientPath) VALUES (1, '%1/r/gen'), (2, '%1/q/gen');"
            "INSERT INTO BaseFileConfiguration (rootFolderId, clientPath) VALUES (1, '%1/r/base');"
            "INSERT INTO FileConfiguration (rootFolderId, clientPath) VALUES (1, '/elsewhere'), (1, '%1/rest'), (1, NULL)"_q
                .arg(folder.path()));
    QStringList const readServerPaths{"sql"_q, "SELECT id, serverPath FROM FolderConfiguration ORDER BY id"_q};
    QString const serverPaths = RunSuccessfully(readServerPaths);
    MoveFolder();
    RunResult const ran = Move();
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.contains("2 folders, 2 files, 1 generated file and 1 base file have new paths"_q))
        << ran.out.toStdString();
    EXPECT_EQ(Paths("FolderConfiguration"), QStringList({"disk/r"_q, "q"_q, "disk/r/f"_q}));
    QStringList files = Paths("FileConfiguration");
    files.sort();
    EXPECT_EQ(files, QStringList({QString(), "/elsewhere"_q, "disk/r/a"_q, "disk/r/f/b"_q, "q/c"_q, "rest"_q}));
    EXPECT_EQ(Paths("GeneratedFileConfiguration"), QStringList({"disk/r/gen"_q, "q/gen"_q}));
    EXPECT_EQ(Paths("BaseFileConfiguration"), QStringList{"disk/r/base"_q});
    EXPECT_EQ(RunSuccessfully(readServerPaths), serverPaths);
}

TEST_F(RootMoveTest, ScanAfterwardsFindsEverythingInPlace)
{
    MoveFolder();
    ASSERT_EQ(Move().status, 0);
    EXPECT_EQ(RunSuccessfully({"diff"_q}), "the disk is as recorded\n"_q);
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_EQ(Paths("FolderConfiguration"), QStringList({"disk/r"_q, "q"_q, "disk/r/f"_q}));
}

TEST_F(RootMoveTest, LinksIntoTheRootFollowFromEveryRoot)
{
    Link("../r/a", "q/link"_q);
    RunSuccessfully({"scan"_q});
    RawStore(StorePath())
        .Run("UPDATE FileConfiguration SET fileLinks = '<FileLinks><FileLink FileId=\"1\" Path=\"%1/r/a\" RefId=\"x\"/>"
             "<FileLink FileId=\"2\" Path=\"../r/f/b\"/></FileLinks>' WHERE name = 'link'"_q.arg(folder.path()));
    MoveFolder();
    RunResult const ran = Move();
    EXPECT_TRUE(ran.out.contains("the links of 1 file"_q)) << ran.out.toStdString();
    QString const links =
        RawStore(StorePath()).Value("SELECT fileLinks FROM FileConfiguration WHERE name = 'link'"_q).toString();
    EXPECT_TRUE(links.contains("Path=\"%1/disk/r/a\""_q.arg(folder.path()))) << links.toStdString();
    EXPECT_TRUE(links.contains("RefId=\"x\""_q)) << links.toStdString();
    EXPECT_TRUE(links.contains("Path=\"../r/f/b\""_q)) << links.toStdString();
}

TEST_F(RootMoveTest, DryRunComparesAndChangesNothing)
{
    MoveFolder();
    QMap<QString, QByteArray> const before = tandry::test::FolderContents(folder.path());
    RunResult const ran = Move({"--dry-run"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.contains("2 folders and 2 files have new paths"_q)) << ran.out.toStdString();
    EXPECT_EQ(tandry::test::FolderContents(folder.path()), before);
}

TEST_F(RootMoveTest, AsksAndChangesNothingUnlessConfirmed)
{
    MoveFolder();
    RunResult const unasked = Move({});
    EXPECT_EQ(unasked.status, 2);
    EXPECT_EQ(Paths("FolderConfiguration"), unmovedFolders);
    QStringList const command{"root"_q, "move"_q, "1"_q, At("disk/r")};
    EXPECT_EQ(RunOnTerminal(command, "n\n").status, 1);
    EXPECT_EQ(Paths("FolderConfiguration"), unmovedFolders);
    EXPECT_EQ(RunOnTerminal(command, "y\n").status, 0);
    EXPECT_EQ(Paths("FolderConfiguration").first(), "disk/r"_q);
}

TEST_F(RootMoveTest, OtherTreeIsRefusedAndNamed)
{
    MoveFolder();
    ASSERT_TRUE(QFile::remove(At("disk/r/a")));
    RunResult const missing = Move();
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("disk/r/a is not there"_q)) << missing.err.toStdString();
    WriteFile("disk/r/a"_q, "longer");
    EXPECT_TRUE(Move().err.contains("disk/r/a has 6 bytes instead of 1"_q));
    ASSERT_TRUE(QFile::remove(At("disk/r/a")));
    MakeDirectory("disk/r/a"_q);
    EXPECT_TRUE(Move().err.contains("disk/r/a is not a file"_q));
    EXPECT_EQ(Paths("FolderConfiguration"), unmovedFolders);
}

TEST_F(RootMoveTest, FewChangesSinceTheLastScanAreAcceptedAndCounted)
{
    for (int i = 0; i < 30; ++i)
        WriteFile("r/f/more%1"_q.arg(i));
    RunSuccessfully({"scan"_q});
    MoveFolder();
    WriteFile("disk/r/a"_q, "longer");
    RunResult const ran = Move({"--check"_q, "full"_q, "--yes"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.contains("compared 33 records with"_q)) << ran.out.toStdString();
    EXPECT_TRUE(ran.out.contains("1 differs"_q)) << ran.out.toStdString();
}

TEST_F(RootMoveTest, SampleIsSpreadOverARootWithManyRecords)
{
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000)"
             " INSERT INTO FileConfiguration (rootFolderId, clientPath, size) SELECT 1, '%1/r/none' || i, 1 FROM n"_q
                 .arg(folder.path()));
    MoveFolder();
    QString const sampled = Move({"--dry-run"_q}).err;
    EXPECT_TRUE(sampled.contains(" of 501 records differ"_q)) << sampled.toStdString();
    QString const all = Move({"--check"_q, "full"_q, "--dry-run"_q}).err;
    EXPECT_TRUE(all.contains("3000 of 3003 records differ"_q)) << all.toStdString();
}

TEST_F(RootMoveTest, EmptyMissingOverlappingAndUnchangedPlacesAreRefused)
{
    MakeDirectory("empty"_q);
    MakeDirectory("q/inside"_q);
    WriteFile("q/inside/x"_q);
    for (auto const& [place, words] : {std::pair("empty", "is empty"),
                                       std::pair("missing", "is not an existing directory"),
                                       std::pair("r/a", "is not an existing directory"),
                                       std::pair("q/inside", "lies inside root 2"),
                                       std::pair("q", "is root 2"),
                                       std::pair("", "encloses root 2"),
                                       std::pair("r", "is where root 1 is on record")}) {
        RunResult const ran = Run({"root"_q, "move"_q, "1"_q, At(place), "--yes"_q});
        EXPECT_EQ(ran.status, 1) << place;
        EXPECT_TRUE(ran.err.contains(QLatin1String(words))) << place << ": " << ran.err.toStdString();
    }
    EXPECT_EQ(Paths("FolderConfiguration"), unmovedFolders);
    EXPECT_EQ(Run({"root"_q, "move"_q, "9"_q, At("disk"), "--yes"_q}).status, 1);
}

TEST_F(RootMoveTest, RootOfATrailingSlashMovesWithItsRecords)
{
    RawStore(StorePath()).Run("UPDATE FolderConfiguration SET clientPath = clientPath || '/' WHERE id = 1"_q);
    MoveFolder();
    ASSERT_EQ(Move().status, 0);
    EXPECT_EQ(Paths("FolderConfiguration"), QStringList({"disk/r"_q, "q"_q, "disk/r/f"_q}));
}

TEST_F(RootMoveTest, FailureInTheMiddleChangesNothing)
{
    MoveFolder();
    SpoilIndex("BaseFileConfiguration_root");
    EXPECT_EQ(Move().status, 3);
    EXPECT_EQ(Paths("FolderConfiguration"), unmovedFolders);
}

TEST_F(RootMoveTest, MountsBelowTheRootFollow)
{
    auto const ran = RunWithMounts("mkdir r/usb; mount -t tmpfs stick r/usb; touch r/usb/s; tandryctl scan > /dev/null;"
                                   "umount r/usb; mv r disk/r; mount -t tmpfs other disk/r/usb; touch disk/r/usb/s;"
                                   "tandryctl root move 1 \"$PWD/disk/r\" --yes; tandryctl scan 1");
    if (!ran)
        GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
    EXPECT_EQ(ran->err, QString());
}

TEST_F(RootMoveTest, MountThatIsMissingAtTheNewPlaceIsStillReportedByAScan)
{
    auto const ran = RunWithMounts("for i in $(seq 40); do touch r/f/$i; done; mkdir r/usb; mount -t tmpfs stick r/usb;"
                                   "touch r/usb/s; tandryctl scan > /dev/null; umount r/usb; mv r disk/r;"
                                   "tandryctl root move 1 \"$PWD/disk/r\" --yes > /dev/null; tandryctl scan 1 --prune");
    if (!ran)
        GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_EQ(ran->status, 1) << ran->out.toStdString();
    EXPECT_TRUE(ran->err.contains("disk/r/usb"_q)) << ran->err.toStdString();
    EXPECT_TRUE(Paths("FileConfiguration").contains("disk/r/usb/s"_q));
}
