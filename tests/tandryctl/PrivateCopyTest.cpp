#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace tandryctl::test;
using tandry::test::FolderContents;
using tandry::test::RawStore;
using tandry::test::ReleasedStore;

namespace {

/// Stores that nothing can read without changing them.
class PrivateCopyTest : public ToolTest
{
protected:
    /// A store whose one root stands in the log alone, without the index of the log.
    void MakeUnclosedStore()
    {
        Init();
        RawStore(StorePath(), RawStore::KeepLog)
            .Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0)"_q);
        QFile::remove(StorePath() + "-shm"_q);
        ASSERT_TRUE(QFileInfo::exists(StorePath() + "-wal"_q));
    }

    /// Runs a reading command that must succeed, say in one line what it reads, and leave no trace.
    RunResult Read(QStringList const& command, QString const& reason)
    {
        MakeDirectory("tmp"_q);
        auto const before = FolderContents(folder.path());
        RunResult const ran =
            RunWithoutStore(QStringList{"--store"_q, StorePath()} + command, {"TMPDIR="_q + At("tmp")});
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains(StorePath()) && ran.err.contains(reason)) << ran.err.toStdString();
        EXPECT_EQ(FolderContents(folder.path()), before);
        EXPECT_TRUE(QDir(At("tmp")).isEmpty());
        return ran;
    }
};

} // namespace

TEST_F(PrivateCopyTest, OfAStoreThatWasNotClosedIsReadByEveryReadingCommand)
{
    MakeUnclosedStore();
    EXPECT_EQ(Read({"list"_q, "roots"_q, "--json"_q}, "was not closed"_q).json().size(), 1);
    EXPECT_TRUE(Read({"tree"_q}, "was not closed"_q).out.contains("/r"_q));
    Read({"check"_q}, "was not closed"_q);
}

TEST_F(PrivateCopyTest, OfAStoreThatWasNotClosedHasARightToBeWritten)
{
    MakeUnclosedStore();
    QFile::setPermissions(StorePath(), QFile::ReadOwner);
    QFile::setPermissions(StorePath() + "-wal"_q, QFile::ReadOwner);
    EXPECT_EQ(Read({"list"_q, "roots"_q, "--json"_q}, "was not closed"_q).json().size(), 1);
}

TEST_F(PrivateCopyTest, OfAnOlderStoreIsReadInItsPlace)
{
    for (ReleasedStore const& store : tandry::test::OlderStores()) {
        QFile::remove(StorePath());
        store.CopyTo(StorePath());
        EXPECT_EQ(Read({"list"_q, "roots"_q, "--json"_q}, "older version"_q).json().size(), 1) << store.Name();
        Read({"check"_q}, "older version"_q);
    }
}

TEST_F(PrivateCopyTest, IsNotMadeForACommandThatWrites)
{
    MakeUnclosedStore();
    EXPECT_EQ(Run({"init"_q}).err, QString());
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));
    EXPECT_EQ(Run({"list"_q, "roots"_q}).err, QString());
}

TEST_F(PrivateCopyTest, OfABackupThatWasNotClosedIsRestored)
{
    MakeUnclosedStore();
    RunResult const ran = RunWithoutStore({"--store"_q, At("new.db"), "restore"_q, StorePath()});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(StorePath() + "-wal"_q));
    EXPECT_EQ(RawStore(At("new.db")).Count("FolderConfiguration"_q), 1);
}
