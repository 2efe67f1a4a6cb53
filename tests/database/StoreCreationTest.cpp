#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

class StoreCreation : public testing::Test
{
protected:
    QString Path() const { return folder.filePath(QStringLiteral("store.db")); }
    QStringList Files() const { return FolderContents(folder.path()).keys(); }

    static mode_t ModeOf(QString const& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(path.toUtf8().constData(), &status), 0) << path.toStdString();
        return status.st_mode & 07777;
    }

    /// Opening must fail with a text that names this file, and leave the folder as it is.
    void ExpectRefusal(QString const& named)
    {
        QMap<QString, QByteArray> const before = FilesAndLinks();
        EXPECT_EQ(SqliteDatabaseFactory::Open(Path(), &error), nullptr);
        EXPECT_TRUE(error.contains(Path() + ": "_q) && error.contains(named)) << error.toStdString();
        EXPECT_EQ(FilesAndLinks(), before);
    }

    QTemporaryDir folder;
    QString error;

private:
    /// The contents of files, and nothing for links that lead nowhere.
    QMap<QString, QByteArray> FilesAndLinks() const
    {
        QMap<QString, QByteArray> found;
        for (QFileInfo const& file : QDir(folder.path()).entryInfoList(QDir::Files | QDir::Hidden | QDir::System))
            found.insert(file.fileName(), file.exists() ? ReadFile(file.filePath()) : QByteArray());
        return found;
    }
};

TEST_F(StoreCreation, NewStoreIsWholeAndMarked)
{
    ASSERT_NE(SqliteDatabaseFactory::Open(Path(), &error), nullptr) << error.toStdString();
    EXPECT_EQ(Files(), QStringList{QStringLiteral("store.db")});
    RawStore raw(Path());
    EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
    EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA user_version")).toInt(), 2);
    EXPECT_NE(raw.Value(QStringLiteral("PRAGMA application_id")).toInt(), 0);
    EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA encoding")).toString(), QStringLiteral("UTF-8"));
    EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));
}

TEST_F(StoreCreation, ConnectionsAreSetForSafety)
{
    OpenOptions rollback;
    rollback.journalMode = JournalMode::Rollback;
    auto const withLog = SqliteDatabaseFactory::Open(Path());
    auto const withJournal =
        SqliteDatabaseFactory::Open(folder.filePath(QStringLiteral("other.db")), nullptr, rollback);
    for (auto const& store : {withLog, withJournal}) {
        ASSERT_NE(store, nullptr);
        EXPECT_EQ(Single(*store, QStringLiteral("PRAGMA secure_delete")).toInt(), 1);
        EXPECT_GT(Single(*store, QStringLiteral("PRAGMA wal_autocheckpoint")).toInt(), 0);
        EXPECT_GT(Single(*store, QStringLiteral("PRAGMA journal_size_limit")).toInt(), 0);
        EXPECT_EQ(Single(*store, QStringLiteral("PRAGMA trusted_schema")).toInt(), 0);
        EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT load_extension('x')")));
        EXPECT_FALSE(Execute(*store, QStringLiteral("UPDATE sqlite_schema SET sql = ''")));
        store->ClearError();
    }
    EXPECT_EQ(Single(*withLog, QStringLiteral("PRAGMA synchronous")).toInt(), 2) << "FULL";
    EXPECT_EQ(Single(*withJournal, QStringLiteral("PRAGMA synchronous")).toInt(), 3) << "EXTRA: the folder as well";
    EXPECT_EQ(withJournal->journalMode(), JournalMode::Rollback);
}

TEST_F(StoreCreation, FilesBelongToTheirOwnerAloneWhateverTheMask)
{
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        for (mode_t const mask : {mode_t(0), mode_t(0777)}) {
            QTemporaryDir place;
            QString const path = place.filePath(QStringLiteral("store.db"));
            EXPECT_EQ(InChildProcess([&] {
                          ::umask(mask);
                          OpenOptions options;
                          options.journalMode = journalMode;
                          auto const store = SqliteDatabaseFactory::Open(path, &error, options);
                          if (store == nullptr || !store->CreateDatabase()->transaction() ||
                              !AddServer(*store, QStringLiteral("a")))
                              return 1;
                          Crash();
                      }),
                      -SIGKILL);
            QStringList const files = FolderContents(place.path()).keys();
            EXPECT_EQ(files.size(), journalMode == JournalMode::WriteAheadLog ? 3 : 2)
                << files.join(QLatin1Char(' ')).toStdString();
            for (QString const& file : files)
                EXPECT_EQ(ModeOf(place.filePath(file)), 0600u) << file.toStdString() << " with mask " << mask;
        }
    }
}

TEST_F(StoreCreation, FilesBelongToTheirOwnerFromTheirFirstByteOn)
{
    mode_t const before = ::umask(0);
    FaultyFiles files;
    std::set<QString> seen;
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        OpenOptions options;
        options.journalMode = journalMode;
        // At each operation on files that it takes to make a store, write to it, take back, close it and do so again;
        // be it that the operation fails.
        for (int const code : {SQLITE_OK, SQLITE_IOERR}) {
            for (int n = 1;; ++n) {
                QTemporaryDir place;
                QString const path = place.filePath(QStringLiteral("store.db"));
                files.Fail(n,
                           code,
                           {FileOperation::Open,
                            FileOperation::Write,
                            FileOperation::Truncate,
                            FileOperation::Sync,
                            FileOperation::Delete,
                            FileOperation::MapMemory});
                files.WatchFailure([&] {
                    for (QString const& file : QDir(place.path()).entryList(QDir::Files | QDir::Hidden)) {
                        EXPECT_EQ(ModeOf(place.filePath(file)), 0600u) << file.toStdString();
                        seen.insert(file.mid(QStringLiteral("store.db").size()).left(4));
                    }
                });
                for (int opening = 0; opening < 2; ++opening) {
                    auto const store = SqliteDatabaseFactory::Open(path, nullptr, options);
                    if (store == nullptr)
                        continue;
                    static_cast<void>(AddServer(*store, QStringLiteral("a")));
                    static_cast<void>(store->CreateDatabase()->transaction());
                    static_cast<void>(AddServer(*store, QStringLiteral("b")));
                    static_cast<void>(store->CreateDatabase()->rollback());
                }
                if (!files.Recover())
                    break;
            }
        }
    }
    ::umask(before);
    for (char const* suffix : {"", ".new", "-wal", "-shm", "-jou"})
        EXPECT_EQ(seen.count(QString::fromUtf8(suffix)), 1u) << suffix << " was never looked at";
}

TEST_F(StoreCreation, FaultWhileAStoreIsMadeLeavesNothing)
{
    FaultyFiles files;
    int faults = 0;
    for (int code : {SQLITE_IOERR_WRITE, SQLITE_FULL, SQLITE_NOMEM, SQLITE_CANTOPEN}) {
        for (int n = 1;; ++n) {
            files.Fail(n,
                       code,
                       {FileOperation::Open,
                        FileOperation::Write,
                        FileOperation::Sync,
                        FileOperation::Truncate,
                        FileOperation::Lock,
                        FileOperation::MapMemory},
                       true);
            auto store = SqliteDatabaseFactory::Open(Path(), &error);
            if (!files.Recover()) {
                ASSERT_NE(store, nullptr) << error.toStdString();
                store.reset();
                ASSERT_TRUE(QFile::remove(Path()));
                break;
            }
            ++faults;
            ASSERT_EQ(store, nullptr) << "fault " << n;
            // Once in place it is a whole store, whatever happened to the connection.
            QStringList const left = Files();
            if (!left.isEmpty()) {
                ASSERT_EQ(left.first(), QStringLiteral("store.db"))
                    << left.join(QLatin1Char(' ')).toStdString() << " after " << n;
                ASSERT_NE(SqliteDatabaseFactory::Open(Path(), &error), nullptr) << error.toStdString();
                ASSERT_TRUE(QFile::remove(Path()));
            }
        }
    }
    EXPECT_GT(faults, 40);
}

TEST_F(StoreCreation, FolderThatCannotBeFlushedFailsTheOpeningAndKeepsTheWholeStore)
{
    QByteArray const place = folder.path().toUtf8();
    ASSERT_EQ(::chmod(place.constData(), 0333), 0); // files can be created, but the folder cannot be opened
    EXPECT_EQ(InChildProcess([&] {
                  DropRights();
                  if (SqliteDatabaseFactory::Open(Path(), &error) != nullptr || !error.contains("can't be flushed"_q))
                      return 1;
                  auto const store = SqliteDatabaseFactory::Open(Path());
                  return store != nullptr && AddServer(*store, "a"_q) ? 0 : 2;
              }),
              0);
    ASSERT_EQ(::chmod(place.constData(), 0700), 0);
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
    EXPECT_EQ(RawStore(Path()).Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
}

TEST_F(StoreCreation, PlaceThatRefusesALogGetsAJournal)
{
    FaultyFiles files;
    files.RefuseSharedMemory();
    auto const store = SqliteDatabaseFactory::Open(Path(), &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(store->journalMode(), JournalMode::Rollback);
    EXPECT_TRUE(AddServer(*store, QStringLiteral("a")));
    EXPECT_EQ(Files(), QStringList{QStringLiteral("store.db")});
}

TEST_F(StoreCreation, StoreWithALogThatComesToAPlaceWithoutGoesOverToAJournal)
{
    ASSERT_TRUE(AddServer(*SqliteDatabaseFactory::Open(Path(), &error), QStringLiteral("a")));
    FaultyFiles files;
    files.RefuseSharedMemory();
    auto const store = SqliteDatabaseFactory::Open(Path(), &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(store->journalMode(), JournalMode::Rollback);
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_TRUE(AddServer(*store, QStringLiteral("b")));
}

TEST_F(StoreCreation, StoreWithALogKeepsItWhenAFaultPasses)
{
    ASSERT_TRUE(AddServer(*SqliteDatabaseFactory::Open(Path(), &error), QStringLiteral("a")));
    FaultyFiles files;
    for (int const code : {SQLITE_CANTOPEN, SQLITE_IOERR_SHMMAP}) {
        for (int n = 1;; ++n) {
            files.Fail(n, code, {FileOperation::Open, FileOperation::MapMemory});
            static_cast<void>(SqliteDatabaseFactory::Open(Path(), &error));
            if (!files.Recover())
                break;
            auto const store = SqliteDatabaseFactory::Open(Path(), &error);
            ASSERT_NE(store, nullptr) << error.toStdString();
            EXPECT_EQ(store->journalMode(), JournalMode::WriteAheadLog) << "after fault " << n;
            EXPECT_EQ(CountServers(*store), 1);
        }
    }
}

TEST_F(StoreCreation, StoreThatAppearsMeanwhileIsNotReplaced)
{
    // The other store comes when this one is about to be flushed for the last time, under its temporary name.
    FaultyFiles files;
    files.Fail(1, SQLITE_OK, {FileOperation::Sync});
    files.WatchFailure([&] {
        files.Fail(0, SQLITE_OK, {});
        EXPECT_TRUE(AddServer(*SqliteDatabaseFactory::Open(Path()), QStringLiteral("the other's")));
    });
    auto const store = SqliteDatabaseFactory::Open(Path(), &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")),
              std::vector<QVariant>{QStringLiteral("the other's")});
}

TEST_F(StoreCreation, StoreThatAppearsMeanwhileIsOpenedBesideItsLog)
{
    FaultyFiles files;
    files.Fail(1, SQLITE_OK, {FileOperation::Sync});
    std::shared_ptr<SqliteDatabaseFactory> other;
    files.WatchFailure([&] {
        files.Fail(0, SQLITE_OK, {});
        other = SqliteDatabaseFactory::Open(Path());
        ASSERT_NE(other, nullptr);
        EXPECT_TRUE(AddServer(*other, "the other's"_q));
        EXPECT_TRUE(QFile::exists(Path() + "-wal"_q));
    });
    auto store = SqliteDatabaseFactory::Open(Path(), &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 1);
    store.reset();
    other.reset();
}

TEST_F(StoreCreation, WhatAnEarlierStoreHasLeftIsRefusedAndUnchanged)
{
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        QString const left = Path() + QLatin1String(suffix);
        for (QByteArray const& contents : {QByteArray(), QByteArray("left behind")}) {
            WriteFile(left, contents);
            ExpectRefusal(left);
            QFile::remove(left);
        }
        ASSERT_EQ(::symlink("nowhere", left.toUtf8().constData()), 0);
        ExpectRefusal(left);
        QFile::remove(left);
    }
    EXPECT_NE(SqliteDatabaseFactory::Open(Path(), &error), nullptr) << error.toStdString();
}

TEST_F(StoreCreation, NameOfAFileBesideAnotherStoreIsRefused)
{
    ASSERT_TRUE(AddServer(*SqliteDatabaseFactory::Open(Path()), "a"_q));
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        EXPECT_EQ(SqliteDatabaseFactory::Open(Path() + QLatin1String(suffix), &error), nullptr);
        EXPECT_TRUE(error.contains("for its own files beside "_q + Path())) << error.toStdString();
    }
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
    EXPECT_EQ(CountServers(*SqliteDatabaseFactory::Open(Path())), 1);
}

TEST_F(StoreCreation, RowsThatAKilledProgramHasLeftComeBackWithTheirStoreAndGoIntoNoOther)
{
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        bool const usesLog = journalMode == JournalMode::WriteAheadLog;
        OpenOptions options;
        options.journalMode = journalMode;
        ASSERT_EQ(InChildProcess([&] {
                      auto const store = SqliteDatabaseFactory::Open(Path(), nullptr, options);
                      if (store == nullptr || !AddServer(*store, "acknowledged"_q))
                          return 1;
                      RawStore raw(Path());
                      if (!usesLog)
                          raw.Run("PRAGMA cache_size = 1; BEGIN; "
                                  "INSERT INTO ServerConfiguration (alias) VALUES (zeroblob(100000))"_q);
                      Crash();
                  }),
                  -SIGKILL);
        QString const away = folder.filePath("away.db"_q);
        ASSERT_TRUE(QFile::rename(Path(), away));
        ExpectRefusal(Path() + (usesLog ? "-wal"_q : "-journal"_q));
        ASSERT_TRUE(QFile::rename(away, Path()));
        auto store = SqliteDatabaseFactory::Open(Path(), &error);
        ASSERT_NE(store, nullptr) << error.toStdString();
        EXPECT_EQ(CountServers(*store), 1);
        store.reset();
        ASSERT_TRUE(QFile::remove(Path()));
    }
}

/// The file comes at each point at which SQLite locks a file, up to the last one before the store gets its name.
TEST_F(StoreCreation, LogOrJournalThatComesBeforeTheStoreHasItsNameIsRefused)
{
    FaultyFiles files;
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        QString const planted = Path() + QLatin1String(suffix);
        int refused = 0;
        for (int n = 1;; ++n) {
            SCOPED_TRACE(n);
            bool isPlanted = false;
            files.Fail(n, SQLITE_OK, {FileOperation::Lock});
            files.WatchFailure([&] {
                isPlanted = !QFile::exists(Path());
                if (isPlanted)
                    WriteFile(planted, "planted");
            });
            auto store = SqliteDatabaseFactory::Open(Path(), &error);
            files.Recover();
            if (!isPlanted) {
                EXPECT_NE(store, nullptr) << error.toStdString();
                store.reset();
                QFile::remove(Path());
                break;
            }
            ASSERT_EQ(store, nullptr);
            EXPECT_TRUE(error.contains(planted)) << error.toStdString();
            EXPECT_EQ(Files(), QStringList{QFileInfo(planted).fileName()});
            QFile::remove(planted);
            ++refused;
        }
        EXPECT_GT(refused, 3);
    }
}

TEST_F(StoreCreation, ProcessesThatMakeTheSameStoreAtOnceAllGetIt)
{
    constexpr int Processes = 8;
    for (int round = 0; round < 5; ++round) {
        QTemporaryDir place;
        QString const path = place.filePath(QStringLiteral("store.db"));
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (int child = 0; child < Processes; ++child) {
            children.push_back(std::make_unique<ChildProcess>([&] {
                auto store = SqliteDatabaseFactory::Open(path);
                bool const added = store != nullptr && AddServer(*store, QStringLiteral("a"));
                store.reset();
                return added ? 0 : 1;
            }));
        }
        for (auto const& child : children)
            EXPECT_EQ(child->Wait(), 0);
        {
            RawStore raw(path);
            EXPECT_EQ(raw.Count(QStringLiteral("ServerConfiguration")), Processes);
            EXPECT_EQ(raw.Count(QStringLiteral("Schedules")), 1);
            EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
        }
        // Two processes that close at the same moment each leave SQLite's log to the other one, so it may be there
        // until the next one closes. No unfinished copy of the store is.
        EXPECT_EQ(FolderContents(place.path()).keys(), QStringList{QStringLiteral("store.db")});
    }
}

TEST_F(StoreCreation, ThreadsThatMakeTheSameStoreAtOnceAllGetIt)
{
    constexpr int Threads = 8;
    std::atomic<int> added{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&] {
            auto const store = SqliteDatabaseFactory::Open(Path());
            if (store != nullptr && AddServer(*store, QStringLiteral("a")))
                ++added;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(added, Threads);
    EXPECT_EQ(RawStore(Path()).Count(QStringLiteral("ServerConfiguration")), Threads);
}

} // namespace
