#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;

constexpr uid_t Stranger = 12345;

/// A store and the files of several users, which only root can make.
class StoreOwner : public testing::Test
{
protected:
    void SetUp() override
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "only root can give files to other users";
    }

    QString Path(QString const& suffix = {}) const { return folder.filePath("store.db"_q) + suffix; }

    std::shared_ptr<SqliteDatabaseFactory> Open(OpenMode mode = OpenMode::OpenOrCreate,
                                                JournalMode journalMode = JournalMode::WriteAheadLog)
    {
        OpenOptions options;
        options.mode = mode;
        options.journalMode = journalMode;
        return SqliteDatabaseFactory::Open(Path(), &error, options);
    }

    void MakeStore(JournalMode journalMode = JournalMode::WriteAheadLog)
    {
        auto const store = Open(OpenMode::OpenOrCreate, journalMode);
        ASSERT_NE(store, nullptr) << error.toStdString();
        ASSERT_TRUE(AddServer(*store, "first"_q));
    }

    /// Adds a row in a program that is killed and leaves its log.
    void AddAndCrash()
    {
        ASSERT_EQ(InChildProcess([&] {
                      auto const store = Open();
                      if (store == nullptr || !AddServer(*store, "second"_q))
                          return 1;
                      Crash();
                  }),
                  -SIGKILL);
        ASSERT_TRUE(QFile::exists(Path("-wal"_q)));
    }

    static struct stat StatusOf(QString const& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(path.toUtf8().constData(), &status), 0) << path.toStdString();
        return status;
    }

    static void Give(QString const& path, uid_t user)
    {
        ASSERT_EQ(::chown(path.toUtf8().constData(), user, user), 0) << path.toStdString();
    }

    static void SetMode(QString const& path, mode_t mode)
    {
        ASSERT_EQ(::chmod(path.toUtf8().constData(), mode), 0) << path.toStdString();
    }

    /// Gives the folder and all files in it to the user that `DropRights` makes of root.
    void GiveAllToUnprivilegedUser()
    {
        GiveToUnprivilegedUser(folder.path());
        for (QString const& name : FolderContents(folder.path()).keys())
            GiveToUnprivilegedUser(folder.filePath(name));
    }

    QTemporaryDir folder;
    QString error;
};

TEST_F(StoreOwner, LogOrJournalOfAnotherUserIsRefusedAndUnchanged)
{
    MakeStore();
    AddAndCrash();
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        QString const beside = Path(QString::fromUtf8(suffix));
        bool const isPlanted = !QFile::exists(beside);
        if (isPlanted)
            WriteFile(beside, "planted");
        Give(beside, Stranger);
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        for (OpenMode const mode : {OpenMode::OpenOrCreate, OpenMode::OpenExisting, OpenMode::ReadOnly}) {
            EXPECT_EQ(Open(mode), nullptr);
            EXPECT_TRUE(error.contains(beside + " belongs to user 12345"_q)) << error.toStdString();
        }
        EXPECT_EQ(FolderContents(folder.path()), before);
        Give(beside, 0);
        if (isPlanted)
            QFile::remove(beside);
    }
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 2);
}

TEST_F(StoreOwner, LogOfRootIsRead)
{
    MakeStore();
    AddAndCrash();
    GiveToUnprivilegedUser(folder.path());
    GiveToUnprivilegedUser(Path());
    SetMode(Path("-wal"_q), 0666);
    SetMode(Path("-shm"_q), 0666);
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  auto const store = Open();
                  return store != nullptr && CountServers(*store) == 2 ? 0 : 1;
              }),
              0);
}

/// SQLite sees to that; `CheckOwnersBeside` relies on it.
TEST_F(StoreOwner, RootLeavesTheFilesBesideAUsersStoreToTheUser)
{
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        MakeStore(journalMode);
        GiveAllToUnprivilegedUser();
        ASSERT_EQ(InChildProcess([&] {
                      auto const store = Open();
                      if (store == nullptr || !store->CreateDatabase()->transaction() || !AddServer(*store, "second"_q))
                          return 1;
                      Crash();
                  }),
                  -SIGKILL);
        QStringList const files = FolderContents(folder.path()).keys();
        EXPECT_GT(files.size(), 1);
        for (QString const& file : files)
            EXPECT_EQ(StatusOf(folder.filePath(file)).st_uid, StatusOf(Path()).st_uid) << file.toStdString();
        EXPECT_EQ(InChildProcess([&] {
                      DropRights();
                      auto const store = Open();
                      return store != nullptr && CountServers(*store) == 1 ? 0 : 1;
                  }),
                  0);
        QFile::remove(Path());
    }
}

/// The log comes at each point at which SQLite opens a file, and fits the store.
TEST_F(StoreOwner, LogOfAnotherUserThatComesDuringTheOpeningIsNotPlayedIn)
{
    MakeStore();
    QByteArray const contents = ReadFile(Path());
    AddAndCrash();
    QString const planted = folder.filePath("planted"_q);
    ASSERT_TRUE(QFile::rename(Path("-wal"_q), planted));
    QFile::remove(Path("-shm"_q));
    WriteFile(Path(), contents);
    GiveAllToUnprivilegedUser();
    Give(planted, Stranger);
    SetMode(planted, 0666);

    enum Result
    {
        Refused,
        Wrong,
        CameTooLate,
        NotReached,
    };
    int refused = 0;
    int result = Refused;
    for (int n = 1; result != NotReached; ++n) {
        SCOPED_TRACE(n);
        result = InChildProcess([&] {
            DropRights();
            FaultyFiles files;
            bool isPlanted = false;
            files.Fail(n, SQLITE_OK, {FileOperation::Open});
            files.WatchFailure(
                [&] { isPlanted = !QFile::exists(Path("-wal"_q)) && QFile::rename(planted, Path("-wal"_q)); });
            bool const opens = Open() != nullptr;
            if (!files.Recover())
                return opens ? NotReached : Wrong;
            if (!isPlanted)
                return opens ? CameTooLate : Wrong;
            return !opens && error.contains("belongs to user 12345"_q) ? Refused : Wrong;
        });
        ASSERT_NE(result, Wrong);
        EXPECT_TRUE(ReadFile(Path()) == contents);
        if (result == Refused) {
            ++refused;
            ASSERT_TRUE(QFile::rename(Path("-wal"_q), planted));
        }
        QFile::remove(Path("-shm"_q));
    }
    EXPECT_GE(refused, 2);
}

TEST_F(StoreOwner, AnotherUserMayReadAStoreWithRightsForAllAndNotWriteToIt)
{
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        MakeStore(journalMode);
        SetMode(folder.path(), 0777);
        SetMode(Path(), 0666);
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        EXPECT_EQ(InChildProcess([&] {
                      DropRights();
                      if (Open() != nullptr || !error.contains("only that user or root"_q))
                          return 1;
                      auto const reader = Open(OpenMode::ReadOnly);
                      return reader != nullptr && CountServers(*reader) == 1 ? 0 : 2;
                  }),
                  0);
        EXPECT_EQ(FolderContents(folder.path()), before);
        QFile::remove(Path());
    }
}

TEST_F(StoreOwner, BackupByRootBelongsToTheOwnerOfTheStore)
{
    MakeStore();
    GiveAllToUnprivilegedUser();
    QTemporaryDir const other;
    QString const target = other.filePath("copy.db"_q);
    ASSERT_TRUE(Open()->Backup(target, &error)) << error.toStdString();
    EXPECT_EQ(StatusOf(target).st_uid, StatusOf(Path()).st_uid);
    EXPECT_EQ(StatusOf(target).st_gid, StatusOf(Path()).st_gid);
    EXPECT_EQ(StatusOf(target).st_mode & 07777, 0600u);
}

TEST_F(StoreOwner, CopyOfAnUpgradeByRootBelongsToTheOwnerOfTheStore)
{
    for (ReleasedStore const& older : OlderStores()) {
        older.CopyTo(Path());
        GiveAllToUnprivilegedUser();
        ASSERT_NE(Open(), nullptr) << error.toStdString();
        QStringList const files = FolderContents(folder.path()).keys();
        EXPECT_EQ(files.size(), 2);
        for (QString const& file : files) {
            EXPECT_EQ(StatusOf(folder.filePath(file)).st_uid, StatusOf(folder.path()).st_uid) << file.toStdString();
            QFile::remove(folder.filePath(file));
        }
    }
}

TEST_F(StoreOwner, StoreThatRootRestoresBelongsToTheOwnerOfTheEarlierOneOrElseOfTheBackup)
{
    MakeStore();
    GiveAllToUnprivilegedUser();
    QString const backup = folder.filePath("backup.db"_q);
    ASSERT_TRUE(Open()->Backup(backup, &error)) << error.toStdString();
    uid_t const user = StatusOf(backup).st_uid;
    StoreError reason;
    ASSERT_TRUE(SqliteDatabaseFactory::Restore(backup, folder.filePath("new.db"_q), reason))
        << reason.text.toStdString();
    EXPECT_EQ(StatusOf(folder.filePath("new.db"_q)).st_uid, user);
    Give(backup, Stranger);
    ASSERT_TRUE(SqliteDatabaseFactory::Restore(backup, Path(), reason)) << reason.text.toStdString();
    EXPECT_EQ(StatusOf(Path()).st_uid, user);
}

TEST_F(StoreOwner, BackupByAnotherUserIsThatUsersOwn)
{
    MakeStore();
    SetMode(folder.path(), 0777);
    SetMode(Path(), 0644);
    QString const target = folder.filePath("copy.db"_q);
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  auto const reader = Open(OpenMode::ReadOnly);
                  return reader != nullptr && reader->Backup(target) ? 0 : 1;
              }),
              0);
    EXPECT_NE(StatusOf(target).st_uid, StatusOf(Path()).st_uid);
}

} // namespace
