#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>
#include <QJsonArray>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class DiffCommandTest : public ToolTest
{
protected:
    /// Records the root "r" with the folder "f" and the files "a" and "f/b".
    void SetUp() override
    {
        Init();
        MakeDirectory("r/f"_q);
        WriteFile("r/a"_q, "1");
        WriteFile("r/f/b"_q, "2");
        RunSuccessfully({"root"_q, "add"_q, At("r"), "--server-path"_q, "/s"_q});
        RunSuccessfully({"scan"_q});
    }

    /// Returns the changes as texts such as "added file r/a".
    QStringList Changes(QStringList const& arguments = {})
    {
        QStringList changes;
        for (QJsonValue const value : Run(QStringList{"diff"_q, "--json"_q} + arguments).json()) {
            QJsonObject const change = value.toObject();
            changes.append("%1 %2 %3"_q.arg(change.value("change"_q).toString(),
                                            change.value("kind"_q).toString(),
                                            change.value("clientPath"_q).toString().mid(folder.path().size() + 1)));
        }
        return changes;
    }
};

} // namespace

TEST_F(DiffCommandTest, UnchangedDiskHasNoDifference)
{
    EXPECT_EQ(RunSuccessfully({"diff"_q}), "the disk is as recorded\n"_q);
    EXPECT_EQ(Json({"diff"_q}), QJsonArray());
}

TEST_F(DiffCommandTest, AddedRemovedAndChangedPathsAreListed)
{
    MakeDirectory("r/new"_q);
    WriteFile("r/new/c"_q, "3");
    WriteFile("r/a"_q, "longer");
    ASSERT_TRUE(QFile::remove(At("r/f/b")));
    ASSERT_EQ(Run({"diff"_q}).status, 1);
    EXPECT_EQ(
        Changes(),
        QStringList({"changed file r/a"_q, "removed file r/f/b"_q, "added folder r/new"_q, "added file r/new/c"_q}));
    QJsonObject const changed = Run({"diff"_q, "--json"_q}).json().first().toObject();
    EXPECT_EQ(changed.value("columns"_q).toArray().first(), "size"_q);
    EXPECT_EQ(changed.value("rootId"_q), 1);
}

TEST_F(DiffCommandTest, NothingIsLeftAfterAScanThatPrunes)
{
    MakeDirectory("r/new"_q);
    WriteFile("r/a"_q, "longer");
    Link("a", "r/link"_q);
    ASSERT_TRUE(QFile::remove(At("r/f/b")));
    EXPECT_EQ(Changes().size(), 4);
    RunSuccessfully({"scan"_q, "--prune"_q, "--yes"_q});
    EXPECT_EQ(Changes(), QStringList());
}

TEST_F(DiffCommandTest, StoreIsNotWritten)
{
    WriteFile("r/c"_q);
    QFile store(StorePath());
    ASSERT_TRUE(store.open(QIODevice::ReadOnly));
    QByteArray const before = store.readAll();
    EXPECT_EQ(Changes(), QStringList{"added file r/c"_q});
    ASSERT_TRUE(store.seek(0));
    EXPECT_EQ(store.readAll(), before);
}

TEST_F(DiffCommandTest, RootsAreComparedOneByOneOrTogether)
{
    AddRoot("q"_q, "/q"_q);
    WriteFile("q/x"_q);
    WriteFile("r/y"_q);
    EXPECT_EQ(Changes({"3"_q}), QStringList{"added file q/x"_q});
    EXPECT_EQ(Changes(), QStringList({"added file r/y"_q, "added file q/x"_q}));
    EXPECT_EQ(Run({"diff"_q, "7"_q}).status, 1);
}

TEST_F(DiffCommandTest, MissingRootIsAProblemAndItsRecordsAreNotRemoved)
{
    ASSERT_TRUE(QFile::rename(At("r"), At("elsewhere")));
    RunResult const ran = Run({"diff"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, QString());
    EXPECT_TRUE(ran.err.contains("cannot be read"_q)) << ran.err.toStdString();
    RunResult const json = Run({"diff"_q, "--json"_q});
    EXPECT_EQ(json.json(), QJsonArray());
    EXPECT_EQ(json.err.count(QLatin1Char('\n')), 1);
}

TEST_F(DiffCommandTest, OtherFolderInThePlaceOfARootIsAProblem)
{
    RawStore(StorePath()).Run("UPDATE FolderFileSystem SET fileSystem = 'another disk';"_q);
    RunResult const ran = Run({"diff"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, QString());
    EXPECT_TRUE(ran.err.contains("another disk"_q)) << ran.err.toStdString();
}

namespace {

/// Mounts a disk below the root, and records it with the file "s".
constexpr char const* RecordMount =
    "mkdir r/usb; mount -t tmpfs stick r/usb; touch r/usb/s; tandryctl scan > /dev/null;";

} // namespace

/// Runs a script with mounts, or skips the test.
#define DIFF_WITH_MOUNTS(ran, script)                                                                                  \
    auto const ran = RunWithMounts(script);                                                                            \
    if (!ran)                                                                                                          \
        GTEST_SKIP() << "nothing may be mounted here";                                                                 \
    static_assert(true, "takes the semicolon")

TEST_F(DiffCommandTest, MountBelowARootIsCompared)
{
    DIFF_WITH_MOUNTS(ran,
                     (QByteArray(RecordMount) + "tandryctl diff; touch r/usb/t; tandryctl diff || true").constData());
    EXPECT_EQ(ran->err, QString());
    EXPECT_TRUE(ran->out.startsWith("the disk is as recorded\n"_q)) << ran->out.toStdString();
    EXPECT_TRUE(ran->out.contains("r/usb/t"_q)) << ran->out.toStdString();
}

TEST_F(DiffCommandTest, DiskThatIsNotMountedBelowARootIsAProblemAndItsFilesAreNotRemoved)
{
    DIFF_WITH_MOUNTS(ran, (QByteArray(RecordMount) + "umount r/usb; touch r/new; tandryctl diff").constData());
    EXPECT_EQ(ran->status, 1);
    EXPECT_TRUE(ran->out.contains("r/new"_q)) << ran->out.toStdString();
    EXPECT_FALSE(ran->out.contains("usb"_q)) << ran->out.toStdString();
    EXPECT_TRUE(ran->err.contains("r/usb' was recorded on"_q)) << ran->err.toStdString();
}

TEST_F(DiffCommandTest, MountPointThatIsGoneIsAProblemAndItsFilesAreNotRemoved)
{
    DIFF_WITH_MOUNTS(ran, (QByteArray(RecordMount) + "umount r/usb; rmdir r/usb; tandryctl diff").constData());
    EXPECT_EQ(ran->status, 1);
    EXPECT_EQ(ran->out, QString());
    EXPECT_TRUE(ran->err.contains("the mount point '"_q + At("r/usb") + "' is missing"_q)) << ran->err.toStdString();
}

TEST_F(DiffCommandTest, DiskThatIsMountedOverRecordsIsAProblem)
{
    DIFF_WITH_MOUNTS(ran, "mount -t tmpfs stick r/f; touch r/f/other; tandryctl diff");
    EXPECT_EQ(ran->status, 1);
    EXPECT_EQ(ran->out, QString());
    EXPECT_TRUE(ran->err.contains("r/f' was recorded without a mount"_q)) << ran->err.toStdString();
}
