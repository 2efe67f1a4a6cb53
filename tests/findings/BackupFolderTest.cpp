#include "tools/findings/BackupFolder.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using tandry::findings::BackupFolder;

namespace {

/// A folder with backups of `/somewhere/my.store.db`.
class BackupFolderTest : public testing::Test
{
protected:
    QString At(QString const& name) const { return folder.filePath(name); }

    QString MakeStore(QString const& name) const
    {
        EXPECT_NE(SqliteDatabaseFactory::Open(At(name)), nullptr);
        return At(name);
    }

    QTemporaryDir folder;
    BackupFolder backups{folder.path(), "/somewhere/my.store.db"_q};
    QDateTime const now{QDate(2026, 11, 22), QTime(1, 2, 3), Qt::UTC};
};

} // namespace

TEST_F(BackupFolderTest, NamesABackupAfterTheStoreAndTheTimeInUtc)
{
    QString const path = backups.NewPath(now.toOffsetFromUtc(7200));
    EXPECT_EQ(path, At("my.store-2026-11-22T01-02-03Z.db"_q));
    WriteFile(path, "taken");
    EXPECT_EQ(backups.NewPath(now), At("my.store-2026-11-22T01-02-03Z-2.db"_q));
}

TEST_F(BackupFolderTest, ListsTheOldestFirstAndNeverTheNewOne)
{
    QString const second = MakeStore("my.store-2026-11-21T00-00-00Z-2.db"_q);
    QString const tenth = MakeStore("my.store-2026-11-21T00-00-00Z-10.db"_q);
    QString const first = MakeStore("my.store-2026-11-21T00-00-00Z.db"_q);
    QString const later = MakeStore("my.store-2099-01-01T00-00-00Z.db"_q);
    QString const newest = MakeStore("my.store-2026-11-22T01-02-03Z.db"_q);
    EXPECT_EQ(backups.OlderThanKept(newest, 1), (QStringList{first, second, tenth, later}));
    EXPECT_EQ(backups.OlderThanKept(newest, 3), (QStringList{first, second}));
    EXPECT_EQ(backups.OlderThanKept(newest, 5), QStringList());
    EXPECT_EQ(backups.OlderThanKept(newest, 50), QStringList());
}

TEST_F(BackupFolderTest, CountsOnlyClosedStoresOfItsNames)
{
    QString const newest = MakeStore("my.store-2026-11-22T01-02-03Z.db"_q);
    MakeStore("my.store.db"_q);
    MakeStore("my.store-2026-11-21.db"_q);
    MakeStore("store-2026-11-21T00-00-00Z.db"_q);
    MakeStore("my.store-2026-11-21T00-00-00Z.db.version-0"_q);
    WriteFile(At("my.store-2020-01-01T00-00-00Z.db"_q), QByteArray(4096, 'x'));
    WriteFile(MakeStore("my.store-2020-01-02T00-00-00Z.db"_q) + "-wal"_q, "a log");
    ASSERT_TRUE(QFile::link(At("my.store.db"_q), At("my.store-2020-01-03T00-00-00Z.db"_q)));
    EXPECT_EQ(backups.OlderThanKept(newest, 1), QStringList());
}
