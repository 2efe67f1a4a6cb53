#include "ToolFixture.h"
#include "TracedProgram.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iostream>

#include <sys/stat.h>

using namespace tandryctl::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::test::RawStore;
using tandry::test::RowsOf;
using tandry::test::StoreRows;

namespace {

/// Kills `restore` at each of its changes to the disk.
class RestoreKills : public ToolTest
{
protected:
    static constexpr char const* Parts[] = {"", "-wal", "-journal"};

    void SetUp() override
    {
        Init();
        RunSuccessfully({"backup"_q, At("backup.db")});
        RawStore(StorePath()).Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0)"_q);
        RawStore backup(At("backup.db"));
        restored = RowsOf(backup);
    }

    /// Reads a copy, so that the next step finds the files as they were left.
    StoreRows Rows(QString const& path) const
    {
        QTemporaryDir const look;
        for (char const* part : Parts)
            QFile::copy(path + QLatin1String(part), look.filePath("store.db"_q + QLatin1String(part)));
        RawStore raw(look.filePath("store.db"_q));
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        return RowsOf(raw);
    }

    /// Returns whether a store beside the place holds the earlier rows.
    bool IsKept() const
    {
        for (QString const& name : QDir(folder.path()).entryList({"store.db.replaced*"_q}, QDir::Files)) {
            bool const isStore = !name.endsWith("-wal"_q) && !name.endsWith("-journal"_q) && !name.endsWith("-shm"_q);
            if (isStore && Rows(At(name)) == earlier)
                return true;
        }
        return false;
    }

    /// Expects the earlier store, the new one or the notice, and the earlier store somewhere. Returns whether it is the
    /// notice.
    bool ExpectKnownState() const
    {
        QTemporaryDir const look;
        QString const path = look.filePath("store.db"_q);
        for (char const* part : Parts)
            QFile::copy(StorePath() + QLatin1String(part), path + QLatin1String(part));
        OpenOptions options;
        options.mode = OpenMode::OpenExisting;
        QString error;
        if (SqliteDatabaseFactory::Open(path, &error, options) == nullptr) {
            EXPECT_TRUE(error.contains("a backup was being restored here"_q)) << error.toStdString();
            EXPECT_TRUE(IsKept());
            return true;
        }
        StoreRows const rows = Rows(StorePath());
        EXPECT_TRUE(rows == earlier || (rows == restored && IsKept()));
        return false;
    }

    /// Returns how many names the file has that has most.
    nlink_t MostNames() const
    {
        nlink_t most = 0;
        for (QString const& name : QDir(folder.path()).entryList(QDir::Files)) {
            struct stat status = {};
            EXPECT_EQ(::stat(At(name).toUtf8().constData(), &status), 0);
            most = std::max(most, status.st_nlink);
        }
        return most;
    }

    /// A write to a store that has a second name fails; its error must say what to do.
    void ExpectTheSecondNameToBeTold()
    {
        RunResult const ran = Run({"server"_q, "add"_q, "--dav-url"_q, "https://a.example"_q});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains(
            "a restore that was interrupted has left %1. Restore the backup again"_q.arg(At("store.db.replaced"))))
            << ran.err.toStdString();
    }

    /// Puts back the files of the earlier store before each step.
    void KillAtEachStep(bool expectNotice)
    {
        auto const before = tandry::test::FolderContents(folder.path());
        earlier = Rows(StorePath());
        ASSERT_NE(earlier, restored);
        int notices = 0;
        int secondNames = 0;
        int step = 1;
        for (bool wasKilled = true; wasKilled; ++step) {
            SCOPED_TRACE(step);
            ResetFolder(before);
            auto const ran = RunAndKillAt(
                step, QStringLiteral(TANDRYCTL_PROGRAM), {"--store"_q, StorePath(), "restore"_q, At("backup.db")});
            if (!ran)
                GTEST_SKIP() << "processes cannot be traced here";
            wasKilled = ran->wasKilled;
            EXPECT_TRUE(wasKilled || ran->status == 0) << ran->status;
            notices += ExpectKnownState() ? 1 : 0;
            if (!expectNotice && MostNames() > 1) {
                ++secondNames;
                ExpectTheSecondNameToBeTold();
            }

            RunSuccessfully({"restore"_q, At("backup.db")});
            EXPECT_EQ(Rows(StorePath()), restored);
            EXPECT_TRUE(IsKept());
            EXPECT_EQ(MostNames(), 1U) << "a file with several names can only be read";
        }
        EXPECT_GT(step, 20);
        EXPECT_EQ(secondNames > 0, !expectNotice);
        EXPECT_EQ(notices > 0, expectNotice);
        std::cout << step - 2 << " kills, " << notices << " of them left the notice\n";
    }

private:
    void ResetFolder(QMap<QString, QByteArray> const& contents) const
    {
        for (QString const& name : QDir(folder.path()).entryList(QDir::Files))
            QFile::remove(At(name));
        for (auto file = contents.begin(); file != contents.end(); ++file)
            WriteFile(file.key(), file.value());
    }

    StoreRows earlier;
    StoreRows restored;
};

} // namespace

TEST_F(RestoreKills, OfAClosedStoreLeaveTheEarlierStoreOrTheNewOne)
{
    KillAtEachStep(false);
}

TEST_F(RestoreKills, OfAStoreWithALogLeaveTheEarlierStoreTheNewOneOrTheNotice)
{
    RawStore(StorePath(), RawStore::KeepLog)
        .Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/s', 0)"_q);
    ASSERT_TRUE(QFileInfo::exists(StorePath() + "-wal"_q));
    KillAtEachStep(true);
}

TEST_F(RestoreKills, OfAStoreWithAJournalLeaveTheEarlierStoreTheNewOneOrTheNotice)
{
    QTemporaryDir const copy;
    {
        RawStore raw(StorePath());
        raw.Run("PRAGMA journal_mode = DELETE; PRAGMA cache_size = 1; BEGIN;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                "INSERT INTO FileConfiguration (clientPath) SELECT printf('%0100d', i) FROM n;"_q);
        for (char const* part : Parts)
            QFile::copy(StorePath() + QLatin1String(part), copy.filePath("store.db"_q + QLatin1String(part)));
        raw.Run("ROLLBACK"_q);
    }
    QFile::remove(StorePath());
    for (char const* part : Parts)
        QFile::copy(copy.filePath("store.db"_q + QLatin1String(part)), StorePath() + QLatin1String(part));
    ASSERT_TRUE(QFileInfo::exists(StorePath() + "-journal"_q));
    KillAtEachStep(true);
}
