#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/ReleasedStores.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <iostream>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

class StoreBackup : public EachJournalMode
{
protected:
    QString Target(QString const& name = QStringLiteral("copy.db")) const { return folder.filePath(name); }

    QStringList Files() const { return FolderContents(folder.path()).keys(); }

    /// The file's bytes, which nothing may change from here on.
    QByteArray ReopenForReading()
    {
        store.reset();
        QByteArray const contents = ReadFile(StorePath());
        OpenOptions options;
        options.mode = OpenMode::ReadOnly;
        OpenStore(options);
        return contents;
    }

    /// Servers with a thousand letters each.
    void AddRows(int count)
    {
        ASSERT_TRUE(Execute(*store,
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) INSERT INTO "
                            "ServerConfiguration (alias, davUrl) SELECT i, hex(zeroblob(500)) FROM n"_q.arg(count)));
    }

    /// The backup must fail with a text that names the target and holds these words, and leave the folder's names
    /// alone.
    void ExpectFailure(char const* words, QString const& target)
    {
        QStringList const before = Files();
        QString error;
        EXPECT_FALSE(store->Backup(target, &error));
        EXPECT_TRUE(error.contains(target)) << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(words))) << error.toStdString();
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->text, error);
        store->ClearError();
        EXPECT_EQ(Files(), before);
        EXPECT_FALSE(store->Backup(target)) << "without asking why";
        store->ClearError();
    }
    void ExpectFailure(char const* words) { ExpectFailure(words, Target()); }

    StoreRows RowsAt(QString const& path) const
    {
        RawStore raw(path);
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        return RowsOf(raw);
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreBackup);

TEST_P(StoreBackup, CopyIsAStoreWithAllRows)
{
    AddRows(1000);
    QString error = "as it was"_q;
    ASSERT_TRUE(store->Backup(Target(), &error)) << error.toStdString();
    EXPECT_EQ(error, "as it was"_q);
    EXPECT_FALSE(store->LastError());
    EXPECT_EQ(RowsAt(Target()), RowsAt(StorePath()));

    auto const copy = SqliteDatabaseFactory::Open(Target(), &error);
    ASSERT_NE(copy, nullptr) << error.toStdString();
    EXPECT_EQ(copy->journalMode(), GetParam());
    EXPECT_EQ(CountServers(*copy), 1000);
    EXPECT_TRUE(AddServer(*copy, "of the copy"_q));
    EXPECT_EQ(CountServers(*store), 1000) << "the two have nothing in common";
}

TEST_P(StoreBackup, CopyKeepsRowsAndIdsOfAReleasedStore)
{
    store.reset();
    QFile::remove(StorePath());
    ReleasedStore{2, GetParam()}.CopyTo(StorePath());
    OpenStore();
    ASSERT_TRUE(AddServer(*store, "gone"_q));
    ASSERT_TRUE(Execute(*store, "DELETE FROM ServerConfiguration WHERE alias = 'gone'"_q));
    ASSERT_TRUE(store->Backup(Target()));
    EXPECT_EQ(RowsAt(Target()), RowsAt(StorePath()));
    auto const copy = SqliteDatabaseFactory::Open(Target());
    ASSERT_NE(copy, nullptr);
    ASSERT_TRUE(AddServer(*copy, "next"_q));
    EXPECT_EQ(Single(*copy, "SELECT id FROM ServerConfiguration WHERE alias = 'next'"_q).toInt(), 9);
}

TEST_P(StoreBackup, NothingElseIsLeftInTheFolder)
{
    QStringList expected = Files();
    ASSERT_TRUE(store->Backup(Target()));
    expected.append("copy.db"_q);
    expected.sort();
    EXPECT_EQ(Files(), expected);
}

TEST_P(StoreBackup, CopyIsForItsOwnerAloneWhateverTheUmask)
{
    for (mode_t const mask : {mode_t(0), mode_t(0777)}) {
        QFile::remove(Target());
        mode_t const before = ::umask(mask);
        bool const done = store->Backup(Target());
        ::umask(before);
        ASSERT_TRUE(done);
        struct stat status = {};
        ASSERT_EQ(::stat(Target().toUtf8().constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode_t(0600));
    }
}

TEST_P(StoreBackup, ExistingFileIsLeftAsItIs)
{
    WriteFile(Target(), "the user's");
    ExpectFailure("replaces nothing");
    EXPECT_EQ(ReadFile(Target()), QByteArray("the user's"));
    ExpectFailure("replaces nothing", StorePath());
    ASSERT_TRUE(QDir().mkdir(Target("folder"_q)));
    ExpectFailure("replaces nothing", Target("folder"_q));
    ASSERT_EQ(::symlink("nowhere", Target("link"_q).toUtf8().constData()), 0);
    EXPECT_FALSE(store->Backup(Target("link"_q)));
    EXPECT_FALSE(QFileInfo::exists(Target("nowhere"_q)));
    store->ClearError();
}

TEST_P(StoreBackup, LogOrJournalThatWouldBeTakenForTheCopysIsRefused)
{
    for (char const* suffix : {"-wal", "-journal", "-shm"}) {
        QString const left = Target() + QLatin1String(suffix);
        WriteFile(left, "left behind by a store of this name");
        ExpectFailure(left.toUtf8().constData());
        QFile::remove(left);
    }
}

TEST_P(StoreBackup, LogOrJournalThatComesBeforeTheCopyHasItsNameIsRefused)
{
    AddRows(3);
    store.reset();
    FaultyFiles files;
    QString const planted = Target("copy.db-journal"_q);
    int refused = 0;
    bool isPlanted = true;
    for (int n = 1; isPlanted; ++n) {
        SCOPED_TRACE(n);
        OpenStore();
        isPlanted = false;
        files.Fail(n, SQLITE_OK, {FileOperation::Lock});
        files.WatchFailure([&] {
            isPlanted = true;
            WriteFile(planted, "planted");
        });
        QString error;
        bool const done = store->Backup(Target(), &error);
        files.Recover();
        EXPECT_EQ(done, !isPlanted);
        EXPECT_EQ(error.contains(planted), isPlanted) << error.toStdString();
        EXPECT_EQ(QFile::exists(Target()), done);
        refused += done ? 0 : 1;
        store->ClearError();
        store.reset();
        QFile::remove(planted);
    }
    EXPECT_GT(refused, 3);
}

TEST_P(StoreBackup, NameOfAFileBesideTheStoreIsRefusedHoweverItIsSpelled)
{
    QTemporaryDir const links;
    QString const link = links.filePath("link"_q);
    ASSERT_EQ(::symlink(folder.path().toUtf8().constData(), link.toUtf8().constData()), 0);
    ASSERT_TRUE(QDir().mkdir(Target("sub"_q)));
    AddRows(3);
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        QString const name = "store.db"_q + QLatin1String(suffix);
        ExpectFailure("for its own files beside", Target(name));
        for (QString const& path :
             {link + QLatin1Char('/') + name, Target("sub/../"_q + name), link + "/sub/../"_q + name}) {
            QString error;
            EXPECT_FALSE(store->Backup(path, &error));
            EXPECT_TRUE(error.contains("for its own files beside "_q + StorePath())) << error.toStdString();
            store->ClearError();
        }
    }
    AddRows(3);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 6);
    EXPECT_TRUE(store->Backup(Target("other.db-journal"_q))) << "of a file that does not exist";
}

TEST_P(StoreBackup, PathThatCanBeNoFileIsRefused)
{
    ExpectFailure("No such file", Target("missing/copy.db"_q));
    EXPECT_FALSE(QDir(Target("missing"_q)).exists());
    ExpectFailure("name", Target() + QChar(QChar::Null) + "b"_q);
    ExpectFailure("too long", Target(QString(300, QLatin1Char('x'))));
    ExpectFailure("", StorePath() + "/copy.db"_q);
    EXPECT_FALSE(store->Backup(QString()));
    store->ClearError();
}

TEST_P(StoreBackup, FolderWithoutRightsIsRefused)
{
    QTemporaryDir const other;
    ASSERT_EQ(::chmod(other.path().toUtf8().constData(), 0555), 0);
    QString const target = other.filePath("copy.db"_q);
    store.reset();
    ASSERT_EQ(::chmod(folder.path().toUtf8().constData(), 0777), 0);
    GiveToUnprivilegedUser(StorePath());
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  QString error;
                  auto const opened = SqliteDatabaseFactory::Open(StorePath());
                  if (opened == nullptr || opened->Backup(target, &error))
                      return 1;
                  return error.contains(target) && error.contains("Permission denied"_q) ? 0 : 2;
              }),
              0);
    EXPECT_TRUE(FolderContents(other.path()).isEmpty());
}

TEST_P(StoreBackup, FolderThatCannotBeFlushedFailsAndKeepsTheWholeCopy)
{
    AddRows(3);
    store.reset();
    ASSERT_EQ(::chmod(StorePath().toUtf8().constData(), 0644), 0);
    QTemporaryDir other;
    QString const target = other.filePath("copy.db"_q);
    ASSERT_EQ(::chmod(folder.path().toUtf8().constData(), 0755), 0);
    ASSERT_EQ(::chmod(other.path().toUtf8().constData(), 0333), 0); // files can be created, but it cannot be opened
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  OpenOptions options;
                  options.mode = OpenMode::ReadOnly;
                  auto const reader = SqliteDatabaseFactory::Open(StorePath(), nullptr, options);
                  QString error;
                  if (reader == nullptr || reader->Backup(target, &error) || !error.contains("can't be flushed"_q))
                      return 1;
                  auto const copy = SqliteDatabaseFactory::Open(target);
                  return copy != nullptr && CountServers(*copy) == 3 ? 0 : 2;
              }),
              0);
    ASSERT_EQ(::chmod(other.path().toUtf8().constData(), 0700), 0);
    EXPECT_EQ(FolderContents(other.path()).keys(), QStringList{"copy.db"_q});
}

TEST_P(StoreBackup, WorksOnAStoreThatIsOpenForReadingOnly)
{
    AddRows(10);
    QByteArray const before = ReopenForReading();
    ASSERT_TRUE(store->Backup(Target()));
    EXPECT_EQ(Files(), (QStringList{"copy.db"_q, "store.db"_q}));
    EXPECT_EQ(ReadFile(StorePath()), before);
    EXPECT_EQ(RowsAt(Target()), RowsAt(StorePath()));
}

TEST_P(StoreBackup, ReaderCopiesWhatAnotherProgramHasCommittedUpToNow)
{
    OpenOptions options;
    options.mode = OpenMode::ReadOnly;
    auto const reader = SqliteDatabaseFactory::Open(StorePath(), nullptr, options);
    ASSERT_NE(reader, nullptr);
    AddRows(10); // in the log, where there is one
    ASSERT_TRUE(reader->Backup(Target()));
    EXPECT_EQ(RawStore(Target()).Count("ServerConfiguration"_q), 10);
}

TEST_P(StoreBackup, OpenTransactionOrWrittenScopeOfTheThreadIsRefused)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ExpectFailure("transaction");
    AddRows(3);
    ExpectFailure("transaction");
    ASSERT_TRUE(database->commit());
    {
        TransactionalScope const scope;
        EXPECT_TRUE(store->Backup(Target("in-scope.db"_q))) << "one that has not written";
        AddRows(1);
        ExpectFailure("scope");
    }
    ASSERT_TRUE(store->Backup(Target()));
    EXPECT_EQ(RawStore(Target()).Count("ServerConfiguration"_q), 4);
}

TEST_P(StoreBackup, TransactionOfAnotherThreadIsNotInTheCopy)
{
    AddRows(2);
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE; INSERT INTO ServerConfiguration (alias) VALUES ('not committed')"_q);
    ASSERT_TRUE(store->Backup(Target()));
    EXPECT_EQ(RawStore(Target()).Count("ServerConfiguration"_q), 2);
    other.Run("COMMIT"_q);
}

TEST_P(StoreBackup, ListingThatIsBeingReadGoesOn)
{
    AddRows(100);
    auto const listing = Prepared(*store, "SELECT id FROM ServerConfiguration"_q);
    ASSERT_TRUE(listing->exec());
    ASSERT_TRUE(listing->next());
    ASSERT_TRUE(store->Backup(Target()));
    int rows = 1;
    while (listing->next())
        ++rows;
    EXPECT_EQ(rows, 100);
}

TEST_P(StoreBackup, CopiesMadeWhileThreadsWriteHoldWholeTransactionsAndEnd)
{
    constexpr int RowsOfATransaction = 7;
    std::atomic<bool> done{false};
    std::atomic<int> transactions{0};
    std::thread writer([&] {
        auto const database = store->CreateDatabase();
        while (!done) {
            if (!database->transaction())
                continue;
            for (int row = 0; row < RowsOfATransaction; ++row)
                EXPECT_TRUE(AddServer(*store, QString(3000, QLatin1Char('x'))));
            EXPECT_TRUE(database->commit());
            ++transactions;
        }
        store->ClearError();
    });
    int highest = 0;
    for (int copy = 0; copy < 10; ++copy) {
        for (int const seen = transactions; transactions == seen;)
            std::this_thread::yield();
        QString const target = Target("copy-%1.db"_q.arg(copy));
        QString error;
        int const committed = transactions;
        EXPECT_TRUE(store->Backup(target, &error)) << error.toStdString();
        RawStore raw(target);
        int const rows = int(raw.Count("ServerConfiguration"_q));
        EXPECT_EQ(rows % RowsOfATransaction, 0);
        EXPECT_GE(rows, committed * RowsOfATransaction);
        EXPECT_GE(rows, highest);
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        highest = rows;
    }
    done = true;
    writer.join();
    EXPECT_GT(highest, 0);
}

TEST_P(StoreBackup, ThreadsThatCopyToOneNameGetOneCopy)
{
    AddRows(10);
    std::atomic<int> copies{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] { copies += store->Backup(Target()) ? 1 : 0; });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(copies, 1);
    EXPECT_EQ(RawStore(Target()).Count("ServerConfiguration"_q), 10);
    EXPECT_EQ(QDir(folder.path()).entryList({"copy*"_q}), QStringList{"copy.db"_q});
}

TEST_P(StoreBackup, StoreThatWasMovedAwayIsRefused)
{
    ASSERT_TRUE(QFile::rename(StorePath(), Target("moved.db"_q)));
    ASSERT_TRUE(QFile::copy(Target("moved.db"_q), StorePath()));
    ExpectFailure("removed or replaced");
}

/// A damage that opening does not see: in the middle of a table.
TEST_P(StoreBackup, DamagedStoreGivesNoCopy)
{
    AddRows(1000);
    int const root =
        Single(*store, "SELECT rootpage FROM sqlite_schema WHERE name = 'FolderConfiguration_root'"_q).toInt();
    store.reset();
    Overwrite(StorePath(), (root - 1) * 4096 + 3, QByteArray("\x00\x01", 2)); // an entry that is not there
    OpenStore();
    ExpectFailure("damaged");
}

TEST_P(StoreBackup, FullDiskLeavesNothing)
{
    AddRows(100);
    store.reset();
    int refused = 0;
    for (qint64 room = 0;; room += 20'000) {
        SCOPED_TRACE(room);
        FaultyFiles files;
        OpenStore();
        QString error;
        files.SetRoom(room);
        bool const done = store->Backup(Target(), &error);
        EXPECT_EQ(files.Recover(), !done);
        store->ClearError();
        store.reset();
        EXPECT_EQ(QFileInfo::exists(Target()), done);
        EXPECT_EQ(Files(), done ? (QStringList{"copy.db"_q, "store.db"_q}) : QStringList{"store.db"_q});
        if (done)
            break;
        EXPECT_TRUE(error.contains("no space"_q) && error.contains(Target())) << error.toStdString();
        ++refused;
    }
    EXPECT_GT(refused, 5);
    EXPECT_EQ(RowsAt(Target()), RowsAt(StorePath()));
}

TEST_P(StoreBackup, OperationThatFailsAnywhereLeavesNothingOrTheWholeCopy)
{
    AddRows(20);
    store.reset();
    StoreRows const rows = RowsAt(StorePath());
    int refused = 0;
    bool hit = true;
    for (int step = 1; hit; ++step) {
        SCOPED_TRACE(step);
        FaultyFiles files;
        OpenStore();
        files.Fail(step, SQLITE_IOERR, AllOperations);
        QString error;
        bool const done = store->Backup(Target(), &error);
        hit = files.Recover();
        store->ClearError();
        EXPECT_EQ(CountServers(*store), 20) << "the store itself goes on";
        store.reset();
        EXPECT_EQ(Files(), done ? (QStringList{"copy.db"_q, "store.db"_q}) : QStringList{"store.db"_q});
        if (done)
            EXPECT_EQ(RowsAt(Target()), rows);
        else
            EXPECT_TRUE(hit && error.contains(Target())) << error.toStdString();
        refused += done ? 0 : 1;
        QFile::remove(Target());
    }
    EXPECT_GT(refused, 20);
    std::cout << refused << " failing operations each left no copy" << std::endl;
}

using StoreDamage = StoreBackup;
TANDRY_IN_EACH_JOURNAL_MODE(StoreDamage);

TEST_P(StoreDamage, NoneIsFoundInAGoodStore)
{
    AddRows(100);
    QString error;
    std::optional<QStringList> const damage = store->FindDamage(&error);
    ASSERT_TRUE(damage) << error.toStdString();
    EXPECT_EQ(*damage, QStringList());
}

TEST_P(StoreDamage, MissingIndexIsNamed)
{
    RawStore(StorePath()).Run("DROP INDEX FileConfiguration_root; DROP INDEX Schedules_folder"_q);
    std::optional<QStringList> const damage = store->FindDamage();
    ASSERT_TRUE(damage);
    EXPECT_EQ(*damage,
              (QStringList{"index FileConfiguration_root is missing"_q, "index Schedules_folder is missing"_q}));
}

TEST_P(StoreDamage, WhatOthersAddedWhileTheStoreWasOpenIsNamedAndNotCopied)
{
    RawStore(StorePath()).Run("CREATE TRIGGER guest AFTER INSERT ON Schedules BEGIN SELECT 1; END"_q);
    std::optional<QStringList> const damage = store->FindDamage();
    ASSERT_TRUE(damage);
    ASSERT_EQ(damage->size(), 1);
    EXPECT_TRUE(damage->first().contains("trigger guest of the table Schedules"_q)) << damage->first().toStdString();

    QString error;
    EXPECT_FALSE(store->Backup(Target(), &error));
    EXPECT_TRUE(error.contains("trigger guest"_q)) << error.toStdString();
    EXPECT_FALSE(QFile::exists(Target()));
    store->ClearError();
}

TEST_P(StoreDamage, IndexThatDisagreesWithItsTableIsNamed)
{
    AddRows(3);
    int const root =
        Single(*store, "SELECT rootpage FROM sqlite_schema WHERE name = 'ServerConfiguration_urls'"_q).toInt();
    store.reset();
    Overwrite(StorePath(), (root - 1) * 4096 + 3, QByteArray("\x00\x02", 2)); // three entries are there
    OpenStore();
    std::optional<QStringList> const damage = store->FindDamage();
    ASSERT_TRUE(damage);
    EXPECT_TRUE(damage->join(QLatin1Char('|')).contains("ServerConfiguration_urls"_q))
        << damage->join(QLatin1Char('|')).toStdString();
    for (QString const& fault : *damage)
        EXPECT_FALSE(fault.contains(QLatin1Char('\n'))) << fault.toStdString();
    EXPECT_FALSE(store->LastError()) << "what was found is no failure";
}

TEST_P(StoreDamage, StoreThatIsOpenForReadingIsLookedThroughUnchanged)
{
    AddRows(10);
    QByteArray const before = ReopenForReading();
    EXPECT_EQ(store->FindDamage(), QStringList());
    EXPECT_EQ(ReadFile(StorePath()), before);
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
}

TEST_P(StoreDamage, OpenTransactionOfTheThreadIsRefused)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    QString error;
    EXPECT_FALSE(store->FindDamage(&error));
    EXPECT_TRUE(error.contains(StorePath()) && error.contains("transaction"_q)) << error.toStdString();
    store->ClearError();
    ASSERT_TRUE(database->rollback());
}

TEST_P(StoreDamage, FaultOfTheDiskThatPassesIsNoFinding)
{
    AddRows(20);
    store.reset();
    int failed = 0;
    bool hit = true;
    for (int step = 1; hit; ++step) {
        SCOPED_TRACE(step);
        FaultyFiles files;
        OpenStore();
        files.Fail(step, SQLITE_IOERR_READ, {FileOperation::Read});
        QString error;
        std::optional<QStringList> const damage = store->FindDamage(&error);
        hit = files.Recover();
        if (damage)
            EXPECT_EQ(*damage, QStringList());
        else
            EXPECT_TRUE(error.contains(StorePath())) << error.toStdString();
        failed += damage ? 0 : 1;
        store->ClearError();
        EXPECT_EQ(store->FindDamage(), QStringList());
        store.reset();
    }
    EXPECT_GT(failed, 3);
}

} // namespace
