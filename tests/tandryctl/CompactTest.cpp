#include "ToolFixture.h"
#include "TracedProgram.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <iostream>

using namespace tandryctl::test;
using sync::database::JournalMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::test::RawStore;
using tandry::test::RowsOf;
using tandry::test::StoreRows;

namespace {

/// A store of which most rows were removed.
class CompactTest : public ToolTest
{
protected:
    void SetUp() override { MakeStore(JournalMode::WriteAheadLog, 3000); }

    void MakeStore(JournalMode mode, int rows)
    {
        OpenOptions options;
        options.journalMode = mode;
        ASSERT_NE(SqliteDatabaseFactory::Open(StorePath(), nullptr, options), nullptr);
        RawStore raw(StorePath());
        raw.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) INSERT INTO "
                "FileConfiguration (clientPath, rootFolderId) SELECT printf('/r/%0200d', i), 1 FROM n;"
                "DELETE FROM FileConfiguration WHERE id % 10 <> 0"_q.arg(rows));
        before = RowsOf(raw);
        bytesBefore = Pages(raw) * PageSize;
    }

    /// Adds rows that take all pages that were free.
    void AddRows() const
    {
        RawStore(StorePath())
            .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) INSERT INTO "
                 "FileConfiguration (clientPath, rootFolderId) SELECT printf('/s/%0200d', i), 1 FROM n"_q);
    }

    qint64 StoreBytes() const { return QFileInfo(StorePath()).size(); }
    static qlonglong Pages(RawStore& raw) { return raw.Value("PRAGMA page_count"_q).toLongLong(); }

    StoreRows Rows() const
    {
        RawStore raw(StorePath());
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        return RowsOf(raw);
    }

    static constexpr qint64 PageSize = 4096;
    StoreRows before;
    qint64 bytesBefore = 0;
};

class CompactionKills : public CompactTest
{
protected:
    void SetUp() override {}

    /// Kills `compact` at each of its changes to the disk, each time on the same files.
    void KillAtEachStep(JournalMode mode)
    {
        MakeStore(mode, 200);
        QByteArray const store = tandry::test::ReadFile(StorePath());
        int step = 1;
        for (bool wasKilled = true; wasKilled; ++step) {
            SCOPED_TRACE(step);
            for (QString const& name : QDir(folder.path()).entryList(QDir::Files))
                QFile::remove(At(name));
            WriteFile("store.db"_q, store);
            auto const ran =
                RunAndKillAt(step, QStringLiteral(TANDRYCTL_PROGRAM), {"--store"_q, StorePath(), "compact"_q});
            if (!ran)
                GTEST_SKIP() << "processes cannot be traced here";
            wasKilled = ran->wasKilled;
            EXPECT_TRUE(wasKilled || ran->status == 0) << ran->status;
            EXPECT_EQ(Run({"init"_q}).status, 0) << "as the next client opens it";
            EXPECT_EQ(Rows(), before);
        }
        EXPECT_LT(StoreBytes(), bytesBefore) << "the last run was not killed";
        EXPECT_GT(step, 20);
        std::cout << step - 2 << " kills\n";
    }
};

} // namespace

TEST_F(CompactTest, GivesUnusedSpaceBackAndKeepsEveryRowAndMark)
{
    QVariant const mark = RawStore(StorePath()).Value("PRAGMA application_id"_q);
    QString const out = RunSuccessfully({"compact"_q});
    EXPECT_LT(StoreBytes(), bytesBefore / 4);
    EXPECT_EQ(
        out,
        "compacted the store '%1': %2 bytes before, %3 after\n"_q.arg(StorePath()).arg(bytesBefore).arg(StoreBytes()));
    EXPECT_EQ(Rows(), before);
    RawStore raw(StorePath());
    EXPECT_EQ(raw.Value("PRAGMA freelist_count"_q), QVariant(0LL));
    EXPECT_EQ(raw.Value("PRAGMA application_id"_q), mark);
    EXPECT_EQ(raw.Value("PRAGMA journal_mode"_q), QVariant("wal"_q));
    raw.Run("INSERT INTO FileConfiguration (clientPath) VALUES ('/r/new')"_q);
    EXPECT_EQ(raw.Value("SELECT max(id) FROM FileConfiguration"_q), QVariant(3001LL)) << "no id is given twice";
}

TEST_F(CompactTest, InJsonShowsTheSizes)
{
    QJsonObject const shown = JsonObject({"compact"_q});
    EXPECT_EQ(shown,
              (QJsonObject{{"store"_q, StorePath()},
                           {"bytesBefore"_q, bytesBefore},
                           {"bytesAfter"_q, StoreBytes()},
                           {"pending"_q, false}}));
}

TEST_F(CompactTest, ShowsItsProgressOnATerminal)
{
    AddRows();
    RunResult const ran = RunOnTerminal({"compact"_q});
    EXPECT_EQ(ran.status, 0);
    EXPECT_TRUE(ran.out.contains("compacting ["_q)) << ran.out.toStdString();
}

TEST_F(CompactTest, BesideAReaderChangesNothingForItAndSaysWhenTheFileShrinks)
{
    {
        RawStore reader(StorePath());
        reader.Run("BEGIN; SELECT count(*) FROM FileConfiguration"_q);
        RunResult const ran = Run({"compact"_q, "--wait"_q, "0"_q});
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_TRUE(ran.out.contains("another program still reads the store as it was"_q)) << ran.out.toStdString();
        EXPECT_EQ(RowsOf(reader), before);
        EXPECT_GE(StoreBytes(), bytesBefore);
        reader.Run("COMMIT"_q);
    }
    EXPECT_LT(StoreBytes(), bytesBefore / 4);
    EXPECT_EQ(Rows(), before);
}

TEST_F(CompactTest, ClientThatHasTheStoreOpenGoesOnReadingAndWriting)
{
    QString error;
    auto const client = SqliteDatabaseFactory::Open(StorePath(), &error);
    ASSERT_NE(client, nullptr) << error.toStdString();
    RunSuccessfully({"compact"_q});
    EXPECT_TRUE(tandry::test::Execute(*client, "INSERT INTO ServerConfiguration (alias) VALUES ('a')"_q));
    EXPECT_FALSE(client->LastError());
    RunSuccessfully({"server"_q, "show"_q, "1"_q});
}

TEST_F(CompactTest, OfALockedStoreFailsAndNamesTheHolder)
{
    RawStore writer(StorePath());
    writer.Run("BEGIN IMMEDIATE"_q);
    RunResult const ran = Run({"compact"_q, "--wait"_q, "0"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("holds the lock"_q) && ran.err.contains("--wait SECONDS"_q)) << ran.err.toStdString();
    writer.Run("ROLLBACK"_q);
    EXPECT_EQ(Rows(), before);
}

TEST_F(CompactTest, OfAStoreWithAJournalFailsWhileItIsRead)
{
    QFile::remove(StorePath());
    MakeStore(JournalMode::Rollback, 300);
    {
        RawStore reader(StorePath());
        reader.Run("BEGIN; SELECT count(*) FROM FileConfiguration"_q);
        EXPECT_EQ(Run({"compact"_q, "--wait"_q, "0"_q}).status, 3);
    }
    RunSuccessfully({"compact"_q});
    EXPECT_LT(StoreBytes(), bytesBefore);
    EXPECT_EQ(Rows(), before);
}

TEST_F(CompactTest, IsRefusedUnchangedIfItsRoomIsMissing)
{
    AddRows();
    auto const ran = RunWithMounts(R"(
        mkdir small
        mount -t tmpfs -o size=$(($(stat -c %s store.db) + 200000)) tmpfs small
        cp store.db small
        status=0
        "$PROGRAM" --store small/store.db compact || status=$?
        cmp store.db small/store.db
        exit $status
    )");
    if (!ran)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(ran->status, 3);
    EXPECT_TRUE(ran->err.contains("compacting needs"_q) && ran->err.contains("free space there"_q))
        << ran->err.toStdString();
    EXPECT_EQ(ran->out, QString());
}

TEST_F(CompactionKills, OfAStoreWithALogLoseNoRow)
{
    KillAtEachStep(JournalMode::WriteAheadLog);
}

TEST_F(CompactionKills, OfAStoreWithAJournalLoseNoRow)
{
    KillAtEachStep(JournalMode::Rollback);
}
