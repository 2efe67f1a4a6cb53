#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QDir>
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

TEST_F(DiffCommandTest, RecordsOfARemovedTreeAreListedOneByOneInTheOrderOfTheirPaths)
{
    for (char const* name : {"r/f/g/h", "r/f/g-h", "r/f-g"})
        MakeDirectory(QString::fromUtf8(name));
    for (char const* name : {"r/f/g/h/x", "r/f/g.txt", "r/f-g/y"})
        WriteFile(QString::fromUtf8(name));
    RunSuccessfully({"scan"_q});
    ASSERT_TRUE(QDir(At("r/f")).removeRecursively());
    EXPECT_EQ(Changes(),
              QStringList({"removed folder r/f"_q,
                           "removed file r/f/b"_q,
                           "removed folder r/f/g"_q,
                           "removed folder r/f/g-h"_q,
                           "removed file r/f/g.txt"_q,
                           "removed folder r/f/g/h"_q,
                           "removed file r/f/g/h/x"_q}));
}

TEST_F(DiffCommandTest, EntryOfAnotherKindIsAddedAndRemoved)
{
    ASSERT_TRUE(QFile::remove(At("r/a")));
    MakeDirectory("r/a"_q);
    WriteFile("r/a/c"_q);
    ASSERT_TRUE(QDir(At("r/f")).removeRecursively());
    WriteFile("r/f"_q);
    EXPECT_EQ(Changes(),
              QStringList({"added folder r/a"_q,
                           "removed file r/a"_q,
                           "added file r/a/c"_q,
                           "added file r/f"_q,
                           "removed folder r/f"_q,
                           "removed file r/f/b"_q}));
}

TEST_F(DiffCommandTest, OnlyTheFirstOfRecordsWithTheSamePathCounts)
{
    RawStore(StorePath())
        .Run("INSERT INTO FileConfiguration (clientPath, rootFolderId, size) SELECT clientPath, 1, size + 1"
             " FROM FileConfiguration ORDER BY id DESC;"
             "INSERT INTO FolderConfiguration (clientPath, rootId) SELECT clientPath, 1 FROM FolderConfiguration"
             " WHERE id = 2"_q);
    EXPECT_EQ(Changes(), QStringList());
    ASSERT_TRUE(QDir(At("r/f")).removeRecursively());
    EXPECT_EQ(Changes(), QStringList({"removed folder r/f"_q, "removed file r/f/b"_q}));
}

TEST_F(DiffCommandTest, RecordsAreComparedByTheirPathsWhateverTheirFolders)
{
    RawStore(StorePath())
        .Run("DELETE FROM FolderConfiguration WHERE id = 2; UPDATE FileConfiguration SET folderConfigurationId = 77;"
             "INSERT INTO FileConfiguration (clientPath, rootFolderId) VALUES ('%1/r/none/x', 1), ('%1/x', 1);"
             "INSERT INTO FolderConfiguration (clientPath, rootId) VALUES ('%1/r/F', 1), ('%1/r/f/', 1)"_q.arg(
                 folder.path()));
    EXPECT_EQ(Changes(),
              QStringList({"removed folder r/F"_q,
                           "added folder r/f"_q,
                           "removed folder r/f/"_q,
                           "removed file r/none/x"_q,
                           "removed file x"_q}));
}

TEST_F(DiffCommandTest, OddNamesAreComparedAsTheyAreRead)
{
    // The last two differ in UTF-16 in the other order than in UTF-8.
    QStringList const names{"A"_q,
                            "a\nb"_q,
                            "a b"_q,
                            QString::fromUtf8("cafe\u0301"),
                            QString::fromUtf8("caf\u00e9"),
                            QString::fromUtf8("\U0001F600"),
                            QString::fromUtf8("\uffff")};
    for (QString const& name : names) {
        MakeDirectory("r/n/"_q + name);
        WriteFile("r/n/"_q + name + "/x"_q);
        WriteFile("r/m"_q + name);
    }
    QStringList added;
    for (QString const& name : names)
        added << "added file r/m"_q + name;
    added << "added folder r/n"_q;
    for (QString const& name : names)
        added << "added folder r/n/"_q + name << "added file r/n/%1/x"_q.arg(name);
    EXPECT_EQ(Changes(), added);
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(Changes(), QStringList());

    RawStore(StorePath())
        .Run("INSERT INTO FileConfiguration (clientPath, rootFolderId)"
             " VALUES (CAST(x'%1ff' AS TEXT), 1), (CAST(x'%1eda080' AS TEXT), 1)"_q.arg(
                 QString::fromLatin1((folder.path() + "/r/"_q).toUtf8().toHex())));
    WriteFile(QString::fromUtf8("r/\ufffd"));
    EXPECT_EQ(Changes().size(), 2) << "a name with U+FFFD is that of the record whose last byte is no UTF-8";
}

TEST_F(DiffCommandTest, MemoryDoesNotGrowWithTheRecordsOrTheDifferences)
{
    RawStore(StorePath())
        .Run(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60000) INSERT INTO"
            " FileConfiguration (clientPath, rootFolderId) SELECT printf('%1/r/%0250d/%d', i % 600, i), 1 FROM n;"
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) INSERT INTO"
            " FolderConfiguration (clientPath, rootId) SELECT printf('%1/r/%0250d', i), 1 FROM n"_q.arg(folder.path()));
    // The paths alone have 40 MiB as texts of two bytes a character.
    for (QStringList const& format : {QStringList{"--json"_q}, QStringList{}}) {
        RunResult const ran =
            RunInShell("> '%1'"_q.arg(At("out")), QStringList{"diff"_q} + format, "ulimit -d 40000; "_q);
        EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
        QByteArray const out = tandry::test::ReadFile(At("out"));
        EXPECT_EQ(out.count("removed"), 80000);
        EXPECT_EQ(out.count('\n'), format.isEmpty() ? 80001 : 80002) << "with the heading or the brackets";
    }
}

TEST_F(DiffCommandTest, RecordsForWhichTheTemporaryFolderHasNoRoomEndIt)
{
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) INSERT INTO"
             " FileConfiguration (clientPath, rootFolderId) SELECT printf('/%0300d', i), 1 FROM n"_q);
    for (QString const& noFolder : {StorePath(), At("missing")}) {
        RunResult const ran = RunWithoutStore({"--store"_q, StorePath(), "diff"_q}, {"TMPDIR="_q + noFolder});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.out.isEmpty());
        EXPECT_TRUE(ran.err.contains(noFolder + "' cannot hold"_q)) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains("TMPDIR"_q)) << ran.err.toStdString();
    }

    MakeDirectory("tmp"_q);
    EXPECT_EQ(RunWithoutStore({"--store"_q, StorePath(), "diff"_q}, {"TMPDIR="_q + At("tmp")}).status, 1);
    EXPECT_TRUE(QDir(At("tmp")).isEmpty());
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
