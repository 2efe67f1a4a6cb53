#include "tools/findings/StoreRecovery.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <random>

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::findings::RecoveredTable;
using tandry::findings::RecoverStore;
using tandry::findings::RecoveryMode;
using tandry::findings::RecoveryReport;

namespace {

class StoreRecoveryTest : public testing::Test
{
protected:
    QString DamagedPath() const { return folder.filePath(QStringLiteral("damaged.db")); }
    QString NewPath() const { return folder.filePath(QStringLiteral("new.db")); }

    /// Expects success, and that nothing but the new store has come into being or changed.
    RecoveryReport Recover()
    {
        QMap<QString, QByteArray> before = FolderContents(folder.path());
        QString error;
        auto const report = RecoverStore(DamagedPath(), NewPath(), RecoveryMode::Recover, error);
        EXPECT_TRUE(report) << error.toStdString();
        QMap<QString, QByteArray> after = FolderContents(folder.path());
        after.remove(QStringLiteral("new.db"));
        EXPECT_EQ(after, before);
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
        return report.value_or(RecoveryReport());
    }

    /// Expects failure without a trace; returns the error.
    QString Refuse()
    {
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        QString error;
        EXPECT_FALSE(RecoverStore(DamagedPath(), NewPath(), RecoveryMode::Recover, error));
        EXPECT_EQ(FolderContents(folder.path()), before);
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
        return error;
    }

    StoreRows NewRows() const
    {
        RawStore store(NewPath());
        return RowsOf(store);
    }

    StoreRows DamagedRows(RawStore::Closing closing = RawStore::CheckpointLog) const
    {
        RawStore store(DamagedPath(), closing);
        return RowsOf(store);
    }

    void MakeCurrentStore() const { ReleasedStore{2, JournalMode::Rollback}.CopyTo(DamagedPath()); }

    /// Adds files from id 100 on.
    void AddFiles(int count, QString const& table = QStringLiteral("FileConfiguration")) const
    {
        RawStore(DamagedPath())
            .Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i + 1 FROM n WHERE i < 99 + %2) "
                                "INSERT INTO %1 (id, name, clientPath, folderConfigurationId, fileType) "
                                "SELECT i, 'file ' || i, '/home/ada/Documents/file ' || i, 1, 0 FROM n;")
                     .arg(table)
                     .arg(count));
    }

    /// Adds files, and removes the last of them. SQLite overwrites what it removes if `secureDelete` is ON.
    void MakeStoreWithRemovedFiles(QString const& secureDelete) const
    {
        MakeCurrentStore();
        AddFiles(500);
        RawStore(DamagedPath())
            .Run(QStringLiteral("PRAGMA secure_delete = %1; DELETE FROM FileConfiguration WHERE id > 400;")
                     .arg(secureDelete));
    }

    /// Overwrites the schema, the roots of all tables and indices, and the list of free pages.
    void SpoilWhatLeadsToLeaves() const
    {
        std::vector<QVector<QVariant>> pages =
            RawStore(DamagedPath())
                .Rows(QStringLiteral("SELECT pageno FROM dbstat WHERE name = 'sqlite_schema' UNION "
                                     "SELECT rootpage FROM sqlite_schema WHERE name LIKE 'FileConfiguration%' UNION "
                                     "SELECT rootpage FROM sqlite_schema WHERE name = 'sqlite_sequence'"));
        quint32 const trunk = qFromBigEndian<quint32>(ReadFile(DamagedPath()).constData() + 32);
        EXPECT_NE(trunk, 0u);
        pages.push_back({trunk});
        for (QVector<QVariant> const& page : pages)
            SpoilPage(page.first().toInt());
    }

    /// Overwrites a page with bytes that are none.
    void SpoilPage(int number, int pageSize = 1024) const
    {
        Overwrite(DamagedPath(), qint64(number - 1) * pageSize, QByteArray(pageSize, '\xaa'));
    }

    int RootOf(QString const& table) const
    {
        return RawStore(DamagedPath())
            .Value(QStringLiteral("SELECT rootpage FROM sqlite_schema WHERE name = '%1'").arg(table))
            .toInt();
    }

    QTemporaryDir folder;
};

RecoveredTable TableOf(RecoveryReport const& report, char const* name)
{
    auto const found = std::find_if(report.tables.begin(), report.tables.end(), [&](RecoveredTable const& table) {
        return table.name == QLatin1String(name);
    });
    EXPECT_NE(found, report.tables.end()) << name;
    return found == report.tables.end() ? RecoveredTable() : *found;
}

} // namespace

TEST_F(StoreRecoveryTest, UndamagedStoresOfAllVersionsComeBackWithEveryRow)
{
    for (ReleasedStore const& store : AllReleasedStores()) {
        SCOPED_TRACE(store.Name());
        store.CopyTo(DamagedPath());
        StoreRows const rows = DamagedRows();
        RecoveryReport const report = Recover();
        EXPECT_EQ(NewRows(), rows);
        for (RecoveredTable const& table : report.tables) {
            EXPECT_EQ(table.recovered, qint64(rows.value(table.name).size())) << table.name.toStdString();
            EXPECT_EQ(table.lost, 0);
            EXPECT_EQ(table.ambiguous, 0);
        }
        for (QString const& file : QDir(folder.path()).entryList(QDir::Files))
            QFile::remove(folder.filePath(file));
    }
}

TEST_F(StoreRecoveryTest, NewStoreIsWholeAndOfTheCurrentVersion)
{
    ReleasedStore{0, JournalMode::WriteAheadLog}.CopyTo(DamagedPath());
    Recover();
    OpenOptions options;
    options.mode = OpenMode::OpenExisting;
    auto const factory = SqliteDatabaseFactory::Open(NewPath(), nullptr, options);
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory->FindDamage(), QStringList());
    EXPECT_FALSE(QFile::permissions(NewPath()) & (QFile::ReadGroup | QFile::ReadOther));
}

TEST_F(StoreRecoveryTest, IdsThatRemovedRowsHadAreNotGivenAgain)
{
    MakeCurrentStore();
    RawStore(DamagedPath())
        .Run(QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (500); DELETE FROM ServerConfiguration WHERE "
                            "id = 500;"));
    Recover();
    RawStore store(NewPath());
    store.Run(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('next');"));
    EXPECT_EQ(store.Value(QStringLiteral("SELECT max(id) FROM ServerConfiguration")), QVariant(501LL));
}

TEST_F(StoreRecoveryTest, IdsThatRowsNameAreNotGivenAgainWithoutASequence)
{
    ReleasedStore{0, JournalMode::Rollback}.CopyTo(DamagedPath()); // with an account of the server 12, which is gone
    Recover();
    RawStore store(NewPath());
    store.Run(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('next');"));
    EXPECT_EQ(store.Value(QStringLiteral("SELECT max(id) FROM ServerConfiguration")), QVariant(13LL));
}

TEST_F(StoreRecoveryTest, RowsOfALostLeafAreCountedByTheIndex)
{
    MakeCurrentStore();
    AddFiles(200);
    StoreRows const rows = DamagedRows();
    QVector<QVariant> const leaf = RawStore(DamagedPath())
                                       .Rows(QStringLiteral("SELECT pageno, ncell FROM dbstat WHERE name = "
                                                            "'FileConfiguration' AND path = '/003/'"))
                                       .at(0);
    SpoilPage(leaf.at(0).toInt());
    RecoveredTable const files = TableOf(Recover(), "FileConfiguration");
    EXPECT_EQ(files.lost, leaf.at(1).toInt());
    EXPECT_EQ(files.recovered, qint64(rows.value(QStringLiteral("FileConfiguration")).size()) - files.lost);
}

TEST_F(StoreRecoveryTest, LeavesBelowALostRootComeBack)
{
    MakeCurrentStore();
    AddFiles(500);
    StoreRows const rows = DamagedRows();
    SpoilPage(RootOf(QStringLiteral("FileConfiguration")));
    RecoveryReport const report = Recover();
    EXPECT_EQ(NewRows(), rows);
    EXPECT_EQ(TableOf(report, "FileConfiguration").lost, 0);
}

TEST_F(StoreRecoveryTest, StoreWithoutItsFirstPageComesBack)
{
    MakeCurrentStore();
    AddFiles(500);
    StoreRows const rows = DamagedRows();
    SpoilPage(1);
    RecoveryReport const report = Recover();
    EXPECT_EQ(NewRows(), rows);
    EXPECT_TRUE(report.remarks.join(QLatin1Char(' ')).contains(QStringLiteral("1024"))); // the guessed size
}

TEST_F(StoreRecoveryTest, StoreWithoutMarksComesBack)
{
    MakeCurrentStore();
    StoreRows const rows = DamagedRows();
    RawStore(DamagedPath()).Run(QStringLiteral("PRAGMA application_id = 0; PRAGMA user_version = 0;"));
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, SpoiltHeaderWithGoodPagesLosesNothing)
{
    MakeCurrentStore();
    AddFiles(100);
    StoreRows const rows = DamagedRows();
    Overwrite(DamagedPath(), 0, QByteArray(100, '\x5a'));
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, RowsInALogWithoutItsIndexCount)
{
    ReleasedStore{2, JournalMode::WriteAheadLog}.CopyTo(DamagedPath());
    RawStore(DamagedPath(), RawStore::KeepLog)
        .Run(QStringLiteral("PRAGMA wal_autocheckpoint = 0; INSERT INTO ServerConfiguration (alias) VALUES ('logged');"
                            "DELETE FROM ServerConfiguration WHERE id = 1;"));
    StoreRows const rows = DamagedRows(RawStore::KeepLog);
    QFile::remove(DamagedPath() + QStringLiteral("-shm"));
    ASSERT_GT(QFileInfo(DamagedPath() + QStringLiteral("-wal")).size(), 0);
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, FramesBehindADamagedOneDoNotCount)
{
    ReleasedStore{2, JournalMode::WriteAheadLog}.CopyTo(DamagedPath());
    StoreRows rows;
    qint64 end = 0;
    {
        RawStore store(DamagedPath(), RawStore::KeepLog);
        store.Run(QStringLiteral("PRAGMA wal_autocheckpoint = 0;"
                                 "INSERT INTO ServerConfiguration (alias) VALUES ('first');"));
        rows = RowsOf(store);
        end = QFileInfo(DamagedPath() + QStringLiteral("-wal")).size();
        store.Run(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('second');"
                                 "INSERT INTO ServerConfiguration (alias) VALUES ('third');"));
    }
    Overwrite(DamagedPath() + QStringLiteral("-wal"), end + 100, QByteArray("x"));
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, HotJournalIsRolledBack)
{
    MakeCurrentStore();
    StoreRows const rows = DamagedRows();
    QString const other = folder.filePath(QStringLiteral("other.db"));
    {
        RawStore store(DamagedPath());
        store.Run(QStringLiteral("PRAGMA cache_size = 1; BEGIN; UPDATE FolderConfiguration SET name = 'changed';"
                                 "DELETE FROM ServerConfiguration;"
                                 "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                                 "INSERT INTO Schedules (syncInterval) SELECT i FROM n;"));
        QFile::copy(DamagedPath(), other); // with pages of the open transaction
        QFile::copy(DamagedPath() + QStringLiteral("-journal"), other + QStringLiteral("-journal"));
        store.Run(QStringLiteral("ROLLBACK;"));
    }
    QFile::remove(DamagedPath());
    ASSERT_TRUE(QFile::rename(other, DamagedPath()));
    ASSERT_TRUE(QFile::rename(other + QStringLiteral("-journal"), DamagedPath() + QStringLiteral("-journal")));
    ASSERT_NE(QFileInfo(DamagedPath()).size(), 0);
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, RemovedRowsOnFreePagesDoNotComeBack)
{
    MakeCurrentStore();
    AddFiles(500);
    RawStore(DamagedPath())
        .Run(QStringLiteral("PRAGMA secure_delete = OFF; DELETE FROM FileConfiguration WHERE id BETWEEN 150 AND 400;"));
    StoreRows const rows = DamagedRows();
    ASSERT_GT(RawStore(DamagedPath()).Value(QStringLiteral("PRAGMA freelist_count")).toInt(), 5);
    SpoilPage(RootOf(QStringLiteral("FileConfiguration")));
    Recover();
    EXPECT_EQ(NewRows(), rows);
}

TEST_F(StoreRecoveryTest, RemovedRowsThatNothingTellsApartAreCountedAsDoubtful)
{
    MakeStoreWithRemovedFiles(QStringLiteral("OFF"));
    StoreRows const rows = DamagedRows();
    SpoilWhatLeadsToLeaves();
    RecoveryReport const report = Recover();
    RecoveredTable const files = TableOf(report, "FileConfiguration");
    auto const there = qint64(rows.value(QStringLiteral("FileConfiguration")).size());
    EXPECT_GT(files.recovered, there) << "otherwise this shows nothing";
    EXPECT_GE(files.doubtful, files.recovered - there);
    EXPECT_TRUE(
        report.remarks.join(QLatin1Char(' ')).contains(QStringLiteral("rows in FileConfiguration may have been")));
}

TEST_F(StoreRecoveryTest, NothingIsDoubtfulWhereRemovedRowsWereOverwritten)
{
    MakeStoreWithRemovedFiles(QStringLiteral("ON"));
    StoreRows const rows = DamagedRows();
    SpoilWhatLeadsToLeaves();
    RecoveryReport const report = Recover();
    EXPECT_EQ(NewRows().value(QStringLiteral("FileConfiguration")), rows.value(QStringLiteral("FileConfiguration")));
    EXPECT_EQ(TableOf(report, "FileConfiguration").doubtful, 0);
}

TEST_F(StoreRecoveryTest, LongTextsComeBackAndBrokenOnesAreLost)
{
    MakeCurrentStore();
    RawStore(DamagedPath())
        .Run(QStringLiteral("INSERT INTO ServerConfiguration (id, alias) VALUES (20, printf('%05000d', 1)), "
                            "(21, printf('%05000d', 2));"));
    StoreRows rows = DamagedRows();
    int const page = RawStore(DamagedPath())
                         .Value(QStringLiteral("SELECT pageno FROM dbstat WHERE name = 'ServerConfiguration' AND "
                                               "pagetype = 'overflow' AND path LIKE '%+000002' ORDER BY path LIMIT 1"))
                         .toInt();
    SpoilPage(page);
    RecoveryReport const report = Recover();
    std::vector<QVector<QVariant>>& servers = rows[QStringLiteral("ServerConfiguration")];
    servers.erase(
        std::remove_if(servers.begin(), servers.end(), [](QVector<QVariant> const& row) { return row.first() == 20; }),
        servers.end());
    EXPECT_EQ(NewRows(), rows);
    EXPECT_EQ(TableOf(report, "ServerConfiguration").lost, 1);
}

TEST_F(StoreRecoveryTest, FilesOfUnknownKindWithoutAParentBecomeTheClientsOwnAndAreReported)
{
    MakeCurrentStore();
    RawStore(DamagedPath())
        .Run(QStringLiteral("DELETE FROM FileConfiguration; DELETE FROM GeneratedFileConfiguration;"
                            "DELETE FROM BaseFileConfiguration; DELETE FROM sqlite_sequence;"));
    AddFiles(3, QStringLiteral("GeneratedFileConfiguration"));
    RawStore(DamagedPath()).Run(QStringLiteral("UPDATE GeneratedFileConfiguration SET fileType = 9;"));
    // Nothing is left of the schema.
    std::vector<QVector<QVariant>> const pages =
        RawStore(DamagedPath()).Rows(QStringLiteral("SELECT pageno FROM dbstat WHERE name = 'sqlite_schema'"));
    for (QVector<QVariant> const& page : pages)
        SpoilPage(page.first().toInt());
    RecoveryReport const report = Recover();
    EXPECT_EQ(TableOf(report, "FileConfiguration").ambiguous, 3);
    EXPECT_EQ(NewRows().value(QStringLiteral("FileConfiguration")).size(), 3u);
    EXPECT_TRUE(report.remarks.join(QLatin1Char(' ')).contains(QStringLiteral("FileConfiguration")));
}

TEST_F(StoreRecoveryTest, ExistingTargetIsRefused)
{
    MakeCurrentStore();
    WriteFile(NewPath(), "mine");
    EXPECT_TRUE(Refuse().contains(NewPath()));
}

TEST_F(StoreRecoveryTest, FileWithoutAnyTableIsRefused)
{
    WriteFile(DamagedPath(), "a letter");
    EXPECT_TRUE(Refuse().contains(DamagedPath()));
    WriteFile(DamagedPath(), QByteArray());
    EXPECT_TRUE(Refuse().contains(DamagedPath()));
    WriteFile(DamagedPath(), QByteArray(100'000, '\0'));
    EXPECT_TRUE(Refuse().contains(DamagedPath()));
}

TEST_F(StoreRecoveryTest, MissingStoreAndFolderAreRefused)
{
    EXPECT_TRUE(Refuse().contains(DamagedPath()));
    QString error;
    EXPECT_FALSE(RecoverStore(folder.path(), NewPath(), RecoveryMode::Recover, error));
    EXPECT_TRUE(error.contains(folder.path()));
}

TEST_F(StoreRecoveryTest, DatabaseOfAnotherProgramIsRefused)
{
    ASSERT_TRUE(QFile(DamagedPath()).open(QIODevice::WriteOnly));
    RawStore(DamagedPath())
        .Run(QStringLiteral("CREATE TABLE songs (id INTEGER PRIMARY KEY, title TEXT);"
                            "INSERT INTO songs (title) VALUES ('one');"));
    Refuse();
}

TEST_F(StoreRecoveryTest, RandomBytesInAStoreNeverBreakTheReader)
{
    MakeCurrentStore();
    AddFiles(60);
    QByteArray const good = ReadFile(DamagedPath());
    std::mt19937 random(3);
    for (int run = 0; run < 60; ++run) {
        QByteArray bytes = good;
        for (int count = 1 << (random() % 12); count > 0; --count)
            bytes[int(random() % unsigned(bytes.size()))] = static_cast<char>(random() % (run % 2 == 0 ? 256 : 20));
        if (run % 5 == 0)
            bytes.truncate(int(random() % unsigned(bytes.size())));
        WriteFile(DamagedPath(), bytes);
        QString error;
        bool const made = RecoverStore(DamagedPath(), NewPath(), RecoveryMode::Recover, error).has_value();
        EXPECT_EQ(made, QFile::exists(NewPath()));
        EXPECT_EQ(made, error.isEmpty());
        QFile::remove(NewPath());
        EXPECT_EQ(ReadFile(DamagedPath()), bytes);
    }
}
