#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntry.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <csignal>
#include <memory>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace store_upgrade_test {
namespace {

using namespace tandry::test;
using namespace sync::config;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

QDateTime Utc(int year, int month, int day, QTime const& time)
{
    return QDateTime(QDate(year, month, day), time, Qt::UTC);
}

/// A released store in a folder of its own.
class StoreUpgrade : public testing::TestWithParam<ReleasedStore>
{
protected:
    void SetUp() override { GetParam().CopyTo(Path()); }

    QString Path(QString const& name = QStringLiteral("store.db")) const { return folder.filePath(name); }
    QString BackupName() const { return "store.db.version-%1"_q.arg(GetParam().version); }
    QString BackupPath() const { return Path(BackupName()); }
    QStringList Files() const { return FolderContents(folder.path()).keys(); }

    std::shared_ptr<SqliteDatabaseFactory> Open(OpenMode mode = OpenMode::OpenExisting, int busyTimeoutMsec = 5000)
    {
        OpenOptions options;
        options.mode = mode;
        options.busyTimeoutMsec = busyTimeoutMsec;
        error.clear();
        return SqliteDatabaseFactory::Open(Path(), &error, options);
    }

    /// Opening must fail with a text that names the file and holds these words, and leave the folder as it is.
    void ExpectRefusal(char const* words, OpenMode mode = OpenMode::OpenExisting)
    {
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        EXPECT_EQ(Open(mode, 0), nullptr);
        EXPECT_TRUE(error.contains(Path())) << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(words))) << error.toStdString();
        QMap<QString, QByteArray> const after = FolderContents(folder.path());
        EXPECT_EQ(after.keys(), before.keys());
        EXPECT_TRUE(after == before) << "a file's bytes have changed";
    }

    StoreRows Rows() const
    {
        RawStore raw(Path());
        return RowsOf(raw);
    }

    QTemporaryDir folder;
    QString error;
};

class OlderStoreUpgrade : public StoreUpgrade
{};

class PreviewStoreUpgrade : public StoreUpgrade
{};

std::string NameOf(testing::TestParamInfo<ReleasedStore> const& store)
{
    return store.param.Name();
}

INSTANTIATE_TEST_SUITE_P(Of, StoreUpgrade, testing::ValuesIn(AllReleasedStores()), NameOf);
INSTANTIATE_TEST_SUITE_P(Of, OlderStoreUpgrade, testing::ValuesIn(OlderStores()), NameOf);
INSTANTIATE_TEST_SUITE_P(Of, PreviewStoreUpgrade, testing::ValuesIn(PreviewStores()), NameOf);

TEST_P(StoreUpgrade, KeepsEveryColumnOfEveryRow)
{
    StoreRows const before = Rows();
    ASSERT_EQ(before.size(), GetParam().version < 2 ? 8 : 9) << "each table has rows";
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    StoreRows const after = Rows();
    for (QString const& table : before.keys())
        EXPECT_EQ(after.value(table), UpToDate(before).value(table)) << table.toStdString();
}

TEST_P(StoreUpgrade, GivesTheSchemaOfANewStore)
{
    ASSERT_NE(SqliteDatabaseFactory::Open(Path("new.db"_q)), nullptr);
    ASSERT_NE(Open(OpenMode::OpenOrCreate), nullptr) << error.toStdString();
    RawStore upgraded(Path());
    RawStore made(Path("new.db"_q));
    QString const schema = "SELECT type, name, tbl_name, sql FROM sqlite_schema ORDER BY type, name"_q;
    EXPECT_EQ(upgraded.Rows(schema), made.Rows(schema))
        << "a schema that changes needs a version and a step of its own";
    EXPECT_EQ(VersionOf(upgraded), VersionOf(made));
    EXPECT_EQ(upgraded.Value("PRAGMA application_id"_q), made.Value("PRAGMA application_id"_q));
    EXPECT_EQ(upgraded.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
}

TEST_P(StoreUpgrade, KeepsTheJournalMode)
{
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(store->journalMode(), GetParam().journalMode);
    EXPECT_FALSE(store->LastError());
}

TEST_P(StoreUpgrade, HappensOnce)
{
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    QMap<QString, QByteArray> const first = FolderContents(folder.path());
    EXPECT_EQ(first.size(), GetParam().version == CurrentVersion ? 1 : 2);
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    EXPECT_TRUE(FolderContents(folder.path()) == first);
}

TEST_P(StoreUpgrade, LetsManagersReadServersAccountsAndProducts)
{
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();

    std::vector<ServerConfiguration> const servers = ServerConfigManager(store).GetAll();
    ASSERT_EQ(servers.size(), 2U);
    EXPECT_EQ(servers[0].getId(), 1);
    EXPECT_EQ(servers[0].getAlias(), "Häuser & \"Gärten\" 'mit' 日本語 😀"_q);
    EXPECT_EQ(servers[0].getDavUrl(), "https://dav.example.org/a%20b"_q);
    EXPECT_EQ(servers[0].getWebServiceUrl(), "https://ws.example.org"_q);
    EXPECT_EQ(servers[0].getBinaryDiffEncoder(), "xdelta"_q);
    EXPECT_EQ(servers[1].getId(), 7);
    EXPECT_EQ(servers[1].getDavUrl(), QString());
    EXPECT_EQ(servers[1].getWebServiceUrl(), "https://[::1]:8443"_q);

    QVector<AuthenticationConfiguration> const accounts = AuthenticationConfigManager(store).GetAll();
    ASSERT_EQ(accounts.size(), 2);
    EXPECT_EQ(accounts[0].getId(), 2);
    EXPECT_EQ(accounts[0].getDomain(), "domain"_q);
    EXPECT_EQ(accounts[0].getDomainId(), "{0A1B}"_q);
    EXPECT_EQ(accounts[0].getUserName(), "ada"_q);
    EXPECT_EQ(accounts[0].getServerId(), 1);
    EXPECT_EQ(accounts[1].getId(), 3);
    EXPECT_EQ(accounts[1].getUserName(), "name\twith\ncontrols"_q);
    EXPECT_EQ(accounts[1].getServerId(), 12);

    QVector<ProductConfiguration> const products = ProductConfigManager(store).GetAll();
    ASSERT_EQ(products.size(), 1);
    EXPECT_EQ(products[0].getId(), 5);
    EXPECT_EQ(products[0].getName(), "Büro"_q);
    EXPECT_EQ(products[0].getConsumerKey(), "key%_"_q);
    EXPECT_EQ(products[0].getConsumerSecret(), "sécret"_q);
    EXPECT_FALSE(store->LastError());
}

TEST_P(StoreUpgrade, LetsManagersReadFolders)
{
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    FolderConfigManager folders(store, nullptr);

    EXPECT_EQ(folders.GetAll().size(), 3);
    FolderConfiguration const root = folders.GetFolderConfigurationById(1);
    EXPECT_EQ(root.getId(), 1);
    EXPECT_EQ(root.getAuthenticationId(), 2);
    EXPECT_EQ(root.getName(), "Documents"_q);
    EXPECT_EQ(root.getRemoteShortKey(), "short"_q);
    EXPECT_EQ(root.getRemoteLongKey(), "long"_q);
    EXPECT_EQ(root.getClientPath(), "/home/ada/Documents"_q);
    EXPECT_EQ(root.getServerPath(), "/documents"_q);
    EXPECT_EQ(root.getSyncStatus(), FolderStatusOutOfSync);
    EXPECT_EQ(root.getParentId(), 0);
    EXPECT_EQ(root.getLastOperationTime(), Utc(2024, 1, 1, {10, 20, 30, 111}));
    EXPECT_EQ(root.getLastSyncTime(), Utc(1969, 12, 30, {23, 59, 59, 999}));
    EXPECT_EQ(root.getServerFolderId(), "server-folder-1"_q);
    FolderConfiguration const decomposed = folders.GetFolderConfigurationByClientPath("/home/ada/Documents/e\u0301"_q);
    EXPECT_EQ(decomposed.getId(), 4);
    EXPECT_EQ(decomposed.getLastSyncTime(), Utc(9999, 12, 31, {23, 59, 59, 999}));
    EXPECT_FALSE(decomposed.getLastOperationTime().isValid());
    FolderConfiguration const hebrew = folders.GetFolderConfigurationById(6);
    EXPECT_EQ(hebrew.getName(), "עברית"_q);
    EXPECT_EQ(hebrew.getLastOperationTime(), Utc(1970, 1, 1, {0, 0}));
    EXPECT_EQ(int(hebrew.getSyncStatus()), 77);
    EXPECT_EQ(hebrew.getParentId(), 5);
    EXPECT_FALSE(store->LastError());
}

TEST_P(StoreUpgrade, LetsManagersReadFilesAndSchedules)
{
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    FileConfigManager files(store, nullptr, std::make_shared<FolderConfigManager>(store, nullptr));

    FileConfiguration const file = files.GetFileConfigurationById(10);
    EXPECT_EQ(file.name, "a'b\"c;--.txt"_q);
    EXPECT_EQ(file.createdDateTime, Utc(2024, 1, 1, {10, 20, 30, 222}));
    EXPECT_EQ(file.lastModifiedDateTime, Utc(2024, 1, 2, {10, 20, 30, 333}));
    EXPECT_EQ(file.lastOperationTime, Utc(2024, 1, 3, {10, 20, 30, 444}));
    EXPECT_EQ(file.size, 5'000'000'104);
    EXPECT_EQ(file.serverFileId, "server-file-10"_q);
    EXPECT_EQ(file.fileDate, Utc(2024, 5, 6, {7, 8, 9}));
    ASSERT_EQ(file.fileLinks.size(), 1);
    EXPECT_EQ(file.fileLinks.first().fileId, 17);
    EXPECT_EQ(file.fileLinks.first().path, "../x y"_q);
    FileConfiguration const highest = files.GetFileConfigurationById(2147483000);
    EXPECT_EQ(highest.name, "😀"_q);
    EXPECT_EQ(highest.folderConfigurationId, 40);
    EXPECT_EQ(highest.lastModifiedDateTime, Utc(1, 1, 1, {0, 0}));
    FileConfiguration const generated = files.GetGeneratedFileConfigurationById(1);
    EXPECT_EQ(generated.parentFileId, 10);
    EXPECT_EQ(generated.size, 9'223'372'036'854'775'807);
    QVector<FileConfiguration> const bases = files.GetAll(FileConfigurationTypeBase);
    ASSERT_EQ(bases.size(), 1);
    EXPECT_EQ(bases[0].id, 3);
    EXPECT_EQ(bases[0].checkSum, "sum of the base"_q);

    ScheduleEntryManager schedules(store);
    ScheduleEntry const schedule = schedules.GetScheduleEntryById(2);
    EXPECT_EQ(schedule.getFolderConfigId(), 1);
    EXPECT_EQ(schedule.getStartTime().time(), QTime(10, 20, 30, 111));
    EXPECT_EQ(schedule.getExpireTime().date(), QDate(2025, 1, 1));
    EXPECT_EQ(schedule.getSyncInterval(), 15);
    EXPECT_EQ(schedules.GetScheduleEntryById(8).getFolderConfigId(), 45);
    EXPECT_EQ(schedules.GetDefaultScheduleEntry().getSyncInterval(), 30);
    EXPECT_NE(schedules.GetDefaultScheduleEntry().getId(), -1);
    EXPECT_FALSE(store->LastError());
}

TEST_P(StoreUpgrade, NewerVersionIsRefusedUnchanged)
{
    std::string const newer = std::to_string(CurrentVersion + 1);
    RawStore(Path()).Run(QString::fromStdString("PRAGMA user_version = " + newer));
    for (OpenMode const mode : {OpenMode::OpenOrCreate, OpenMode::OpenExisting, OpenMode::ReadOnly})
        ExpectRefusal(("version " + newer).c_str(), mode);
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
}

TEST_P(PreviewStoreUpgrade, IdsOfRowsThatAreGoneAreNotGivenAgain)
{
    struct
    {
        char const* table;
        int highest; // of a row, or of one that another row names
    } const tables[] = {
        {"ServerConfiguration", 12},
        {"AuthenticationConfiguration", 9},
        {"ProductConfiguration", 30},
        {"FolderConfiguration", 45},
        {"FileConfiguration", 2147483000},
        {"GeneratedFileConfiguration", 1},
        {"BaseFileConfiguration", 3},
        {"Schedules", 9},
    };
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    for (auto const& table : tables) {
        for (int round = 1; round <= 2; ++round) {
            auto const insert = Prepared(*store, "INSERT INTO %1 DEFAULT VALUES"_q.arg(QLatin1String(table.table)));
            ASSERT_TRUE(insert->exec());
            EXPECT_EQ(insert->lastInsertId().toInt(), table.highest + round) << table.table;
            ASSERT_TRUE(Execute(*store,
                                "DELETE FROM %1 WHERE id = :id"_q.arg(QLatin1String(table.table)),
                                {{":id", table.highest + round}}));
        }
    }
}

TEST_P(PreviewStoreUpgrade, DefaultScheduleThatIsThereIsKept)
{
    RawStore(Path()).Run("INSERT INTO Schedules (folderConfigurationId, syncInterval) VALUES (0, 77)"_q);
    StoreRows const before = Rows();
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    EXPECT_EQ(Rows(), UpToDate(before));
}

TEST_P(PreviewStoreUpgrade, StoreWithoutRowsGetsTheDefaultScheduleAlone)
{
    for (QString const& table : Rows().keys())
        RawStore(Path()).Run("DELETE FROM "_q + table);
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 0);
    EXPECT_EQ(Single(*store, "SELECT count(*) FROM Schedules"_q).toInt(), 1);
    EXPECT_TRUE(AddServer(*store, "first"_q));
}

TEST_P(OlderStoreUpgrade, FileWithTwoNamesIsRefusedUnchanged)
{
    ASSERT_EQ(::link(QFile::encodeName(Path()).constData(), QFile::encodeName(Path("away.db"_q)).constData()), 0);
    ExpectRefusal("remove the other names");
}

TEST_P(OlderStoreUpgrade, LeavesABackupOfWhatTheStoreWas)
{
    StoreRows const before = Rows();
    mode_t const mask = ::umask(0);
    auto const store = Open();
    ::umask(mask);
    ASSERT_NE(store, nullptr) << error.toStdString();
    struct stat status = {};
    ASSERT_EQ(::stat(BackupPath().toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t(0600));

    RawStore backup(BackupPath());
    EXPECT_EQ(VersionOf(backup), GetParam().version);
    EXPECT_EQ(RowsOf(backup), before);
    EXPECT_EQ(backup.Value("PRAGMA journal_mode"_q).toString(),
              GetParam().journalMode == JournalMode::WriteAheadLog ? "wal"_q : "delete"_q);
}

TEST_P(OlderStoreUpgrade, BackupCanBeBroughtUpToDateItself)
{
    StoreRows const before = Rows();
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    ASSERT_NE(SqliteDatabaseFactory::Open(BackupPath(), &error), nullptr) << error.toStdString();
    RawStore backup(BackupPath());
    EXPECT_EQ(RowsOf(backup), UpToDate(before));
}

TEST_P(OlderStoreUpgrade, BackupReplacesNoFile)
{
    WriteFile(BackupPath(), "the user's");
    WriteFile(Path(BackupName() + "-2-wal"_q), "a log that would be taken for the backup's");
    ASSERT_EQ(::symlink("nowhere", Path(BackupName() + "-3"_q).toUtf8().constData()), 0);
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    EXPECT_EQ(ReadFile(BackupPath()), QByteArray("the user's"));
    EXPECT_FALSE(QFileInfo::exists(Path(BackupName() + "-2"_q)));
    RawStore backup(Path(BackupName() + "-4"_q));
    EXPECT_EQ(VersionOf(backup), GetParam().version);
}

TEST_P(OlderStoreUpgrade, ReadingAloneIsRefusedAndSaysWhatToDo)
{
    ExpectRefusal("opened for writing once", OpenMode::ReadOnly);
}

TEST_P(PreviewStoreUpgrade, DamagedStoreIsRefusedUnchangedAndLeavesNoBackup)
{
    struct
    {
        char const* name;
        char const* change;
        char const* words;
    } const changes[] = {
        {"a table is missing", "DROP TABLE BaseFileConfiguration", "no such table: BaseFileConfiguration"},
        {"a column is missing", "ALTER TABLE FileConfiguration DROP COLUMN fileLinks", "no such column: fileLinks"},
        {"an id is too high", "UPDATE ServerConfiguration SET id = 2147483648 WHERE id = 7", "CHECK constraint failed"},
    };
    for (auto const& change : changes) {
        SCOPED_TRACE(change.name);
        QFile::remove(Path());
        GetParam().CopyTo(Path());
        RawStore(Path()).Run(QString::fromLatin1(change.change));
        ExpectRefusal(change.words);
    }
}

TEST_P(OlderStoreUpgrade, StoreThatHoldsAnythingOfOthersIsRefusedUnchangedAndLeavesNoBackup)
{
    struct
    {
        char const* change;
        char const* name;
    } const changes[] = {
        {"CREATE TABLE guest (a)", "table guest"},
        {"CREATE INDEX guest ON Schedules (startTime)", "index guest of the table Schedules"},
        {"CREATE TRIGGER guest AFTER DELETE ON Schedules BEGIN DELETE FROM ServerConfiguration; END",
         "trigger guest of the table Schedules"},
        {"DROP TABLE Schedules;" // the view never ends
         "CREATE VIEW Schedules AS WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n) SELECT id FROM n",
         "view Schedules"},
    };
    for (auto const& [change, name] : changes) {
        SCOPED_TRACE(change);
        QFile::remove(Path());
        GetParam().CopyTo(Path());
        RawStore(Path()).Run(QString::fromLatin1(change));
        ExpectRefusal(name);
    }
}

TEST_P(OlderStoreUpgrade, StoreThatHoldsATableOfALaterVersionIsRefusedUnchangedAndLeavesNoBackup)
{
    RawStore(Path()).Run(QStringLiteral("CREATE TABLE FolderFileSystem (id INTEGER)"));
    ExpectRefusal("the table FolderFileSystem of version 2");
}

TEST_P(PreviewStoreUpgrade, SpoiltPageIsRefusedUnchangedAndLeavesNoBackup)
{
    int const root = RawStore(Path())
                         .Value("SELECT rootpage FROM sqlite_schema WHERE name = 'GeneratedFileConfiguration'"_q)
                         .toInt();
    Overwrite(Path(), (root - 1) * 1024 + 1000, QByteArray(24, '\xff')); // the end of a row
    Overwrite(Path(), (root - 1) * 1024 + 3, QByteArray("\x00\x02", 2)); // one row more than there is
    ExpectRefusal("damaged");
}

TEST_P(OlderStoreUpgrade, StoreThatWasCutShortIsRefusedUnchanged)
{
    qint64 const size = QFileInfo(Path()).size();
    for (qint64 const left : {size - 1, size - 1024, size / 2}) {
        ASSERT_EQ(::truncate(Path().toUtf8().constData(), left), 0);
        ExpectRefusal("damaged");
    }
}

TEST_P(OlderStoreUpgrade, FolderWithoutRightsIsRefused)
{
    QByteArray const place = folder.path().toUtf8();
    ASSERT_EQ(::chmod(Path().toUtf8().constData(), 0666), 0);
    GiveToUnprivilegedUser(Path());
    ASSERT_EQ(::chmod(place.constData(), 0555), 0);
    QByteArray const before = ReadFile(Path());
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  return Open() == nullptr && error.contains(Path()) ? 0 : 1;
              }),
              0);
    ASSERT_EQ(::chmod(place.constData(), 0755), 0);
    EXPECT_EQ(ReadFile(Path()), before);
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
}

TEST_P(OlderStoreUpgrade, LockedStoreIsRefusedAsLockedAndOpensLater)
{
    RawStore raw(Path());
    raw.Run("BEGIN IMMEDIATE"_q);
    EXPECT_EQ(Open(OpenMode::OpenExisting, 0), nullptr);
    EXPECT_TRUE(error.contains("locked"_q)) << error.toStdString();
    EXPECT_FALSE(QFileInfo::exists(BackupPath()));
    raw.Run("COMMIT"_q);
    EXPECT_EQ(VersionOf(raw), GetParam().version);
    EXPECT_NE(Open(OpenMode::OpenExisting, 0), nullptr) << error.toStdString();
    EXPECT_EQ(VersionOf(raw), CurrentVersion);
}

TEST_P(OlderStoreUpgrade, WhatAKilledProcessCommittedIsKeptAndWhatItDidNotIsGone)
{
    StoreRows const before = Rows();
    ASSERT_EQ(InChildProcess([&]() -> int {
                  RawStore raw(Path());
                  raw.Run("INSERT INTO ServerConfiguration (id, alias) VALUES (90, 'committed')"_q);
                  raw.Run("PRAGMA cache_size = 1; BEGIN; UPDATE FolderConfiguration SET name = 'spoilt';"
                          "WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i + 1 FROM n WHERE i < 400)"
                          "INSERT INTO ServerConfiguration (id, alias) SELECT i, 'not committed' FROM n"_q);
                  Crash();
              }),
              -SIGKILL);
    QString const left = GetParam().journalMode == JournalMode::WriteAheadLog ? "store.db-wal"_q : "store.db-journal"_q;
    ASSERT_GT(QFileInfo(Path(left)).size(), 0);
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    StoreRows expected = UpToDate(before);
    expected["ServerConfiguration"_q].push_back({90LL, "committed"_q, QVariant(), QVariant(), QVariant(), QVariant()});
    EXPECT_EQ(Rows(), expected);
    RawStore backup(BackupPath());
    EXPECT_EQ(backup.Count("ServerConfiguration"_q), 3);
}

TEST_P(OlderStoreUpgrade, SeveralProcessesAtOnceAllGetTheStore)
{
    {
        std::array<OtherProgram, 4> programs{OtherProgram(Path(), {"add"_q, "1"_q}),
                                             OtherProgram(Path(), {"add"_q, "1"_q}),
                                             OtherProgram(Path(), {"add"_q, "1"_q}),
                                             OtherProgram(Path(), {"add"_q, "1"_q})};
        for (OtherProgram& program : programs)
            EXPECT_EQ(program.Wait(), 0);
    }
    RawStore raw(Path());
    EXPECT_EQ(VersionOf(raw), CurrentVersion);
    EXPECT_EQ(raw.Count("ServerConfiguration"_q), 6);
    EXPECT_EQ(raw.Value("SELECT count(DISTINCT name) FROM sqlite_schema"_q),
              raw.Value("SELECT count(*) FROM sqlite_schema"_q));
    EXPECT_TRUE(QFileInfo::exists(BackupPath()));
    EXPECT_FALSE(QFileInfo::exists(Path(BackupName() + "-2"_q))) << "only one process took the steps";
}

TEST_P(OlderStoreUpgrade, SeveralThreadsAtOnceAllGetTheStore)
{
    std::atomic<int> opened{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            auto const store = SqliteDatabaseFactory::Open(Path());
            if (store != nullptr && AddServer(*store, "a thread's"_q))
                ++opened;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(opened, 4);
    EXPECT_EQ(RawStore(Path()).Count("ServerConfiguration"_q), 6);
    EXPECT_FALSE(QFileInfo::exists(Path(BackupName() + "-2"_q)));
}

/// The header of the file, which is looked at first, still has the old version then.
TEST(StoreUpgradeInALog, VersionThatStandsInALogLeftBehindCounts)
{
    QTemporaryDir const folder;
    QString const path = folder.filePath("store.db"_q);
    ReleasedStore{0, JournalMode::WriteAheadLog}.CopyTo(path);
    ASSERT_EQ(InChildProcess([&] {
                  RawStore other(path); // keeps the log from being worked off
                  other.Value("SELECT count(*) FROM Schedules"_q);
                  auto const store = SqliteDatabaseFactory::Open(path);
                  if (store == nullptr || !AddServer(*store, "in the log"_q))
                      return 1;
                  Crash();
              }),
              -SIGKILL);
    ASSERT_EQ(ReadFile(path).mid(60, 4), QByteArray(4, '\0'));

    OpenOptions reading;
    reading.mode = OpenMode::ReadOnly;
    QString error;
    for (OpenOptions const& options : {reading, OpenOptions()}) {
        auto const store = SqliteDatabaseFactory::Open(path, &error, options);
        ASSERT_NE(store, nullptr) << error.toStdString();
        EXPECT_EQ(CountServers(*store), 3);
    }
    EXPECT_TRUE(QFileInfo::exists(folder.filePath("store.db.version-0"_q)));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath("store.db.version-0-2"_q)));
}

TEST(StoreUpgradeInALog, PlaceThatAllowsForNoLogGetsAJournal)
{
    QTemporaryDir const folder;
    QString const path = folder.filePath("store.db"_q);
    ReleasedStore{0, JournalMode::WriteAheadLog}.CopyTo(path);
    FaultyFiles files;
    files.RefuseSharedMemory();
    QString error;
    auto store = SqliteDatabaseFactory::Open(path, &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(store->journalMode(), JournalMode::Rollback);
    EXPECT_EQ(CountServers(*store), 2);
    store.reset();
}

} // namespace
} // namespace store_upgrade_test
