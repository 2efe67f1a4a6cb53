// Scans of roots and mount points that another folder has taken the place of.

#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QDir>
#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// A root "docs" with the recorded files "1" to "3" and an empty folder "usb".
class ScanOriginsTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
        MakeDirectory("docs/usb"_q);
        for (int i = 1; i <= 3; ++i)
            WriteFile("docs/%1"_q.arg(i));
        RunSuccessfully({"scan"_q});
    }

    void Rename(QString const& from, QString const& to) const { ASSERT_TRUE(QDir().rename(At(from), At(to))); }

    QStringList Files()
    {
        QStringList names;
        for (QVector<QVariant> const& row :
             RawStore(StorePath()).Rows("SELECT clientPath FROM FileConfiguration ORDER BY clientPath"_q))
            names.append(QDir(At("docs")).relativeFilePath(row.first().toString()));
        return names;
    }

    int Origins() { return int(RawStore(StorePath()).Count("FolderFileSystem"_q)); }
    void ForgetOrigins() { RawStore(StorePath()).Run("DELETE FROM FolderFileSystem"_q); }

    /// Scans with --prune, and expects that this is reported and that only these files are on record then.
    void ExpectReport(QString const& report, QStringList const& files)
    {
        RunResult const ran = Run({"scan"_q, "--prune"_q, "--yes"_q});
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(ran.err.contains(report)) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains("--accept-new-folder"_q)) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        EXPECT_EQ(Files(), files);
    }
};

/// Runs a script with mounts, or skips the test.
#define SCAN_WITH_MOUNTS(script)                                                                                       \
    do {                                                                                                               \
        auto const ran = RunWithMounts(script);                                                                        \
        if (!ran)                                                                                                      \
            GTEST_SKIP() << "nothing may be mounted here";                                                             \
        ASSERT_EQ(ran->status, 0) << ran->out.toStdString() << ran->err.toStdString();                                 \
    } while (false)

} // namespace

TEST_F(ScanOriginsTest, AnotherFolderInThePlaceOfARootIsReportedAndNotScanned)
{
    Rename("docs"_q, "away"_q);
    MakeDirectory("docs"_q);
    WriteFile("docs/new"_q);
    ExpectReport("root 1 '"_q + At("docs") + "' is not the folder that was recorded"_q, {"1"_q, "2"_q, "3"_q});
    ExpectReport("its records are unchanged"_q, {"1"_q, "2"_q, "3"_q});

    ASSERT_TRUE(QDir(At("docs")).removeRecursively());
    Rename("away"_q, "docs"_q);
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_EQ(Files().size(), 3);
}

TEST_F(ScanOriginsTest, AcceptedFolderIsScannedAndRememberedFromThenOn)
{
    Rename("docs"_q, "away"_q);
    MakeDirectory("docs"_q);
    WriteFile("docs/new"_q);
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q, "--accept-new-folder"_q});
    EXPECT_EQ(Files(), QStringList{"new"_q});
    RunSuccessfully({"scan"_q, "--prune"_q});

    ASSERT_TRUE(QDir(At("docs")).removeRecursively());
    Rename("away"_q, "docs"_q);
    EXPECT_EQ(Run({"scan"_q}).status, 1);
}

TEST_F(ScanOriginsTest, OtherRootsAreScannedAllTheSame)
{
    AddRoot("other"_q, "/o"_q);
    WriteFile("other/a"_q);
    Rename("docs"_q, "away"_q);
    MakeDirectory("docs"_q);
    ExpectReport("root 1"_q, {"1"_q, "2"_q, "3"_q, "../other/a"_q});
}

TEST_F(ScanOriginsTest, RootWhoseDiskIsNotMountedKeepsItsRecords)
{
    MakeDirectory("disk"_q);
    SCAN_WITH_MOUNTS("mount -t tmpfs stick disk; touch disk/a disk/b; tandryctl root add disk --server-path /d;"
                     "tandryctl scan");
    ExpectReport("root 3 '"_q + At("disk") + "' was recorded on tmpfs "_q,
                 {"../disk/a"_q, "../disk/b"_q, "1"_q, "2"_q, "3"_q});
}

TEST_F(ScanOriginsTest, MountPointWithoutItsDiskKeepsItsRecordsAndTheRestIsPruned)
{
    SCAN_WITH_MOUNTS("mount -t tmpfs stick docs/usb; mkdir docs/usb/deep; touch docs/usb/a docs/usb/deep/b;"
                     "tandryctl scan");
    QFile::remove(At("docs/1"));
    ExpectReport("the folder '"_q + At("docs/usb") + "' was recorded on tmpfs "_q,
                 {"2"_q, "3"_q, "usb/a"_q, "usb/deep/b"_q});
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 3);
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q, "--accept-new-folder"_q});
    EXPECT_EQ(Files(), QStringList({"2"_q, "3"_q}));
    EXPECT_EQ(Origins(), 1) << "the folder is no mount point any more";
}

TEST_F(ScanOriginsTest, MountPointThatIsGoneWithItsFolderKeepsItsRecords)
{
    MakeDirectory("docs/media/usb"_q);
    SCAN_WITH_MOUNTS("mount -t tmpfs stick docs/media/usb; touch docs/media/usb/a; tandryctl scan");
    ASSERT_TRUE(QDir(At("docs/media")).removeRecursively());
    ExpectReport("the mount point '"_q + At("docs/media/usb") + "' is missing"_q,
                 {"1"_q, "2"_q, "3"_q, "media/usb/a"_q});
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 4) << "the folders above it are on record";
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q, "--accept-new-folder"_q});
    EXPECT_EQ(Files().size(), 3);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), 2);
    EXPECT_EQ(Origins(), 1);
}

TEST_F(ScanOriginsTest, MissingMountPointThatIsAcceptedIsForgotten)
{
    SCAN_WITH_MOUNTS("mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan");
    ASSERT_TRUE(QDir(At("docs/usb")).removeRecursively());
    EXPECT_EQ(Run({"scan"_q}).status, 1);
    RunSuccessfully({"scan"_q, "--accept-new-folder"_q});
    EXPECT_EQ(Files().size(), 4);
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_EQ(Files().size(), 3);
}

TEST_F(ScanOriginsTest, DiskThatIsMountedAgainIsKnown)
{
    MakeDirectory("disk"_q);
    WriteFile("disk/a"_q);
    for (char const* unchanged : {"3 unchanged", "4 unchanged"}) {
        auto const ran = RunWithMounts("mount --bind disk docs/usb; tandryctl scan --prune");
        if (!ran)
            GTEST_SKIP() << "nothing may be mounted here";
        EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
        EXPECT_TRUE(ran->out.contains(QString::fromUtf8(unchanged))) << ran->out.toStdString();
    }
    EXPECT_EQ(Files(), QStringList({"1"_q, "2"_q, "3"_q, "usb/a"_q}));
}

TEST_F(ScanOriginsTest, DiskOverARecordedFolderIsReportedAndNotScanned)
{
    WriteFile("docs/usb/below"_q);
    RunSuccessfully({"scan"_q});
    auto const ran = RunWithMounts("mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan --prune --yes");
    if (!ran)
        GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_EQ(ran->status, 1);
    EXPECT_TRUE(ran->err.contains("was recorded without a mount"_q)) << ran->err.toStdString();
    EXPECT_EQ(Files(), QStringList({"1"_q, "2"_q, "3"_q, "usb/below"_q}));
}

TEST_F(ScanOriginsTest, RootFromBeforeIsAdopted)
{
    ForgetOrigins();
    QFile::remove(At("docs/1"));
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_EQ(Files(), QStringList({"2"_q, "3"_q}));
    EXPECT_EQ(Origins(), 1);
    Rename("docs"_q, "away"_q);
    MakeDirectory("docs"_q);
    ExpectReport("root 1"_q, {"2"_q, "3"_q});
}

TEST_F(ScanOriginsTest, EmptyRootFromBeforeIsReportedAndNotAdopted)
{
    ForgetOrigins();
    ASSERT_TRUE(QDir(At("docs")).removeRecursively());
    MakeDirectory("docs"_q);
    ExpectReport("root 1 '"_q + At("docs") + "' is empty, though it has 4 records"_q, {"1"_q, "2"_q, "3"_q});
    EXPECT_EQ(Origins(), 0);
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q, "--accept-new-folder"_q});
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(ScanOriginsTest, FolderOfTheUserThatIsEmptiedIsPruned)
{
    for (int i = 1; i <= 3; ++i)
        QFile::remove(At("docs/%1"_q.arg(i)));
    RunSuccessfully({"scan"_q, "--prune"_q});
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(ScanOriginsTest, RemovedFoldersAreForgotten)
{
    SCAN_WITH_MOUNTS("mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan");
    EXPECT_EQ(Origins(), 2);
    RunSuccessfully({"folder"_q, "remove"_q, "2"_q, "--recursive"_q, "--yes"_q});
    EXPECT_EQ(Origins(), 1);
    RunSuccessfully({"root"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(Origins(), 0);
}

TEST_F(ScanOriginsTest, FileSystemIsNamedByTheUuidOfItsDevice)
{
    ForgetOrigins();
    auto const ran = RunWithMounts("number=$(stat -c %d docs); mount -t tmpfs none /dev; mkdir -p /dev/disk/by-uuid;"
                                   "mknod /dev/some b $((number >> 8)) $((number & 255)) || exit 77;"
                                   "ln -s ../../some /dev/disk/by-uuid/0a1b-2c3d; tandryctl scan");
    if (!ran || ran->status == 77)
        GTEST_SKIP() << "no device can be created here";
    EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
    EXPECT_EQ(RawStore(StorePath()).Value("SELECT fileSystem FROM FolderFileSystem"_q).toString(), "UUID 0a1b-2c3d"_q);
}
