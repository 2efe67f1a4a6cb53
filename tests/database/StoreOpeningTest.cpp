#include "database/SqliteDatabaseFactory.h"
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

#include <initializer_list>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

OpenOptions In(OpenMode mode)
{
    OpenOptions options;
    options.mode = mode;
    return options;
}

/// A path in a folder of its own, opened in one of the three modes.
class StoreOpening : public testing::TestWithParam<OpenMode>
{
protected:
    QString Path(char const* name = "store.db") const { return folder.filePath(QString::fromUtf8(name)); }

    std::shared_ptr<SqliteDatabaseFactory> Open()
    {
        return SqliteDatabaseFactory::Open(Path(), &error, In(GetParam()));
    }

    /// Opening must fail with a text that names the file and holds these words, and leave the folder as it is.
    void ExpectRefusal(QString const& path, char const* words)
    {
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        error.clear();
        EXPECT_EQ(SqliteDatabaseFactory::Open(path, &error, In(GetParam())), nullptr);
        EXPECT_TRUE(error.contains(path)) << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(words))) << error.toStdString();
        QMap<QString, QByteArray> const after = FolderContents(folder.path());
        EXPECT_EQ(after.keys(), before.keys());
        EXPECT_TRUE(after == before) << "a file's bytes have changed";
        EXPECT_EQ(SqliteDatabaseFactory::Open(path, nullptr, In(GetParam())), nullptr) << "without asking why";
    }
    void ExpectRefusal(char const* words) { ExpectRefusal(Path(), words); }

    /// A store with some rows, cleanly closed.
    void MakeStore(JournalMode journalMode = JournalMode::WriteAheadLog)
    {
        OpenOptions options;
        options.journalMode = journalMode;
        auto const store = SqliteDatabaseFactory::Open(Path(), &error, options);
        ASSERT_NE(store, nullptr) << error.toStdString();
        ASSERT_TRUE(Execute(*store,
                            QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                                           "i < 100) INSERT INTO ServerConfiguration (alias) SELECT i FROM n")));
    }

    struct Change
    {
        char const* statements;
        char const* named;
    };

    /// Opening a store must fail after each change, with a text that names this.
    void ExpectRefusalAfter(std::initializer_list<Change> changes)
    {
        for (auto const& [statements, named] : changes) {
            SCOPED_TRACE(statements);
            QFile::remove(Path());
            MakeStore();
            RawStore(Path()).Run(QString::fromLatin1(statements));
            ExpectRefusal(named);
        }
    }

    /// A store whose program was killed: its log or journal lies beside it.
    void MakeLeftBehindStore()
    {
        MakeStore();
        ASSERT_EQ(InChildProcess([&] {
                      auto const store = SqliteDatabaseFactory::Open(Path());
                      if (store == nullptr || !AddServer(*store, QStringLiteral("left behind")))
                          return 1;
                      Crash();
                  }),
                  -SIGKILL);
        ASSERT_TRUE(QFileInfo::exists(Path("store.db-wal")));
    }

    /// Opening a store must fail if a killed program has left a log with this change, and leave both files as they are.
    void ExpectRefusalOfALogWith(char const* statement, char const* named)
    {
        MakeStore();
        ASSERT_EQ(InChildProcess([&]() -> int {
                      RawStore raw(Path());
                      raw.Run(QString::fromLatin1(statement));
                      Crash();
                  }),
                  -SIGKILL);
        QByteArray const file = ReadFile(Path());
        QByteArray const log = ReadFile(Path("store.db-wal"));
        ASSERT_FALSE(log.isEmpty());
        EXPECT_EQ(Open(), nullptr);
        EXPECT_TRUE(error.contains(QString::fromLatin1(named))) << error.toStdString();
        EXPECT_TRUE(ReadFile(Path()) == file);
        EXPECT_TRUE(ReadFile(Path("store.db-wal")) == log);
    }

    QTemporaryDir folder;
    QString error;
};

std::string NameOf(testing::TestParamInfo<OpenMode> const& mode)
{
    switch (mode.param) {
    case OpenMode::OpenOrCreate:
        return "OpenOrCreate";
    case OpenMode::OpenExisting:
        return "OpenExisting";
    case OpenMode::ReadOnly:
        return "ReadOnly";
    }
    return {};
}

INSTANTIATE_TEST_SUITE_P(In,
                         StoreOpening,
                         testing::Values(OpenMode::OpenOrCreate, OpenMode::OpenExisting, OpenMode::ReadOnly),
                         NameOf);

TEST_P(StoreOpening, OpensAStoreInEitherJournalMode)
{
    for (JournalMode const journalMode : {JournalMode::WriteAheadLog, JournalMode::Rollback}) {
        QFile::remove(Path());
        MakeStore(journalMode);
        auto const store = Open();
        ASSERT_NE(store, nullptr) << error.toStdString();
        EXPECT_TRUE(error.isNull());
        EXPECT_EQ(store->path(), Path());
        EXPECT_EQ(store->journalMode(), journalMode);
        EXPECT_EQ(CountServers(*store), 100);
        EXPECT_FALSE(store->LastError());
    }
}

TEST_P(StoreOpening, MissingFileIsMadeOnlyWhereThatIsAskedFor)
{
    if (GetParam() != OpenMode::OpenOrCreate) {
        ExpectRefusal("there is no such file");
        EXPECT_TRUE(FolderContents(folder.path()).isEmpty());
        return;
    }
    ASSERT_NE(Open(), nullptr) << error.toStdString();
    EXPECT_EQ(FolderContents(folder.path()).keys(), QStringList{QStringLiteral("store.db")}) << "and closed cleanly";
}

TEST_P(StoreOpening, MissingFolderIsRefused)
{
    ExpectRefusal(Path("missing/store.db"), "");
    EXPECT_FALSE(QDir(Path("missing")).exists());
}

TEST_P(StoreOpening, NamesThatAreNoneAreRefused)
{
    EXPECT_EQ(SqliteDatabaseFactory::Open(QString(), &error, In(GetParam())), nullptr);
    EXPECT_FALSE(error.isEmpty());
    ExpectRefusal(Path("store.db") + QChar(QChar::Null) + QStringLiteral("b"), "name");
    ExpectRefusal(Path("store.db") + QChar(0xd83d), "name");
    EXPECT_TRUE(FolderContents(folder.path()).isEmpty());
}

TEST_P(StoreOpening, FolderIsRefused)
{
    ASSERT_TRUE(QDir().mkdir(Path()));
    ExpectRefusal("folder");
}

TEST_P(StoreOpening, FileThatIsNoOrdinaryOneIsRefused)
{
    ASSERT_EQ(::mkfifo(Path().toUtf8().constData(), 0600), 0);
    EXPECT_EQ(SqliteDatabaseFactory::Open(Path(), &error, In(GetParam())), nullptr);
    EXPECT_TRUE(error.contains(QStringLiteral("no ordinary file"))) << error.toStdString();
}

TEST_P(StoreOpening, LinkToNowhereIsRefused)
{
    ASSERT_EQ(::symlink("nowhere", Path().toUtf8().constData()), 0);
    EXPECT_EQ(SqliteDatabaseFactory::Open(Path(), &error, In(GetParam())), nullptr);
    EXPECT_TRUE(error.contains(Path())) << error.toStdString();
    EXPECT_FALSE(QFileInfo::exists(Path("nowhere")));
}

TEST_P(StoreOpening, EmptyFileIsRefusedAsALoss)
{
    WriteFile(Path(), {});
    ExpectRefusal("got lost");
}

TEST_P(StoreOpening, FileOfZerosIsRefusedAsALoss)
{
    for (int const size : {1, 100, 4096, 100000}) {
        WriteFile(Path(), QByteArray(size, '\0'));
        ExpectRefusal("got lost");
    }
    QFile::remove(Path());
    MakeStore();
    Overwrite(Path(), 0, QByteArray(4096, '\0'));
    ExpectRefusal("got lost");
}

TEST_P(StoreOpening, FileThatIsNoDatabaseIsRefused)
{
    for (QByteArray const& contents : {QByteArray("x"),
                                       QByteArray("SQLite format 3"),
                                       QByteArray("just a text\n").repeated(1000),
                                       QByteArray("\0\0\0\1", 4)}) {
        WriteFile(Path(), contents);
        ExpectRefusal("no SQLite database");
    }
}

TEST_P(StoreOpening, DatabaseOfAnotherApplicationIsRefused)
{
    for (char const* setup : {"PRAGMA application_id = 0", "PRAGMA application_id = 252006674"}) {
        QFile::remove(Path());
        MakeStore();
        RawStore(Path()).Run(QString::fromLatin1(setup));
        ExpectRefusal("another application");
    }
    QFile::remove(Path());
    sqlite3* handle = nullptr;
    sqlite3_open(Path().toUtf8().constData(), &handle);
    sqlite3_exec(handle, "CREATE TABLE ServerConfiguration (id)", nullptr, nullptr, nullptr);
    sqlite3_close(handle);
    ExpectRefusal("another application");
}

TEST_P(StoreOpening, StoreOfANewerVersionIsRefused)
{
    MakeStore();
    RawStore(Path()).Run(QStringLiteral("PRAGMA user_version = 999"));
    ExpectRefusal("version 999");
}

TEST_P(StoreOpening, StoreOfAVersionThatNeverWasIsRefused)
{
    MakeStore();
    RawStore(Path()).Run(QStringLiteral("PRAGMA user_version = -1"));
    ExpectRefusal("version -1");
}

TEST_P(StoreOpening, NewerVersionThatStandsInALogIsRefused)
{
    MakeStore();
    RawStore raw(Path());
    raw.Run(QStringLiteral("PRAGMA user_version = 999"));
    QByteArray const file = ReadFile(Path());
    QByteArray const log = ReadFile(Path("store.db-wal"));
    EXPECT_EQ(SqliteDatabaseFactory::Open(Path(), &error, In(GetParam())), nullptr);
    EXPECT_TRUE(error.contains(QStringLiteral("version 999"))) << error.toStdString();
    EXPECT_TRUE(ReadFile(Path()) == file);
    EXPECT_TRUE(ReadFile(Path("store.db-wal")) == log);
}

TEST_P(StoreOpening, NewerVersionThatStandsInALogLeftBehindIsRefused)
{
    ExpectRefusalOfALogWith("PRAGMA user_version = 999", "version 999");
}

TEST_P(StoreOpening, StoreWithoutATableOrAColumnIsRefusedAsDamaged)
{
    ExpectRefusalAfter({
        {"DROP TABLE BaseFileConfiguration", "damaged"},
        {"ALTER TABLE FileConfiguration DROP COLUMN fileLinks", "damaged"},
        {"ALTER TABLE Schedules RENAME COLUMN startTime TO beginTime", "damaged"},
    });
}

TEST_P(StoreOpening, StoreThatHoldsAnythingOfOthersIsRefusedAndItIsNamed)
{
    ExpectRefusalAfter({
        {"CREATE VIEW guest AS SELECT 1", "view guest"},
        {"CREATE TRIGGER guest AFTER INSERT ON ServerConfiguration BEGIN DELETE FROM ServerConfiguration; END",
         "trigger guest of the table ServerConfiguration"},
        {"CREATE TABLE guest (a)", "table guest"},
        {"CREATE INDEX guest ON Schedules (startTime)", "index guest of the table Schedules"},
        {"CREATE VIRTUAL TABLE guest USING fts5(a)", "table guest"},
        // The next two never end when they are read.
        {"DROP TABLE Schedules;"
         "CREATE VIEW Schedules AS WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n) "
         "SELECT id, id AS folderConfigurationId, id AS startTime, id AS expireTime, id AS syncScheduleType, "
         "id AS syncInterval FROM n WHERE id < 0",
         "view Schedules"},
        {"CREATE VIEW pragma_page_count AS WITH RECURSIVE n(page_count) AS (SELECT 1 UNION ALL SELECT page_count + 1 "
         "FROM n) SELECT page_count FROM n WHERE page_count < 0",
         "view pragma_page_count"},
        {"ANALYZE; PRAGMA writable_schema = ON;"
         "UPDATE sqlite_schema SET sql = 'CREATE TABLE sqlite_stat1(tbl,idx,stat CHECK (stat))' "
         "WHERE name = 'sqlite_stat1'",
         "table sqlite_stat1"},
    });
}

TEST_P(StoreOpening, TriggerInALogLeftBehindIsRefusedUnchanged)
{
    ExpectRefusalOfALogWith(
        "CREATE TRIGGER guest AFTER INSERT ON ServerConfiguration BEGIN DELETE FROM ServerConfiguration; END",
        "trigger guest");
}

TEST_P(StoreOpening, StoreWhoseTablesOrIndicesWereAlteredIsRefusedAndTheyAreNamed)
{
    ExpectRefusalAfter({
        {"ALTER TABLE FileConfiguration ADD COLUMN guest", "table FileConfiguration"},
        {"ALTER TABLE FileConfiguration ADD COLUMN guest AS (size * 2)", "table FileConfiguration"},
        {"PRAGMA writable_schema = ON;"
         "UPDATE sqlite_schema SET sql = replace(sql, 'alias TEXT', 'alias TEXT CHECK (alias IS NULL)')",
         "table ServerConfiguration"},
        {"PRAGMA writable_schema = ON;"
         "UPDATE sqlite_schema SET sql = replace(sql, 'userName TEXT', 'userName TEXT COLLATE NOCASE')",
         "table AuthenticationConfiguration"},
        {"DROP INDEX Schedules_folder; CREATE UNIQUE INDEX Schedules_folder ON Schedules (folderConfigurationId)",
         "index Schedules_folder"},
    });
}

TEST_P(StoreOpening, StatisticsAndAMissingIndexAreNoReasonToRefuse)
{
    MakeStore();
    RawStore(Path()).Run(QStringLiteral("ANALYZE; DROP INDEX Schedules_folder"));
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 100);
}

TEST_P(StoreOpening, StoreThatWasCutShortIsRefusedAsDamaged)
{
    MakeStore();
    qint64 const size = QFileInfo(Path()).size();
    for (qint64 const left : {size - 1, size - 4096, size / 2, qint64(4096), qint64(100)}) {
        ASSERT_EQ(::truncate(Path().toUtf8().constData(), left), 0);
        ExpectRefusal("damaged");
    }
}

TEST_P(StoreOpening, StoreWithASpoiltHeaderOrTableIsRefusedAsDamaged)
{
    MakeStore();
    QByteArray const good = ReadFile(Path());
    int const root = RawStore(Path())
                         .Value(QStringLiteral("SELECT rootpage FROM sqlite_schema WHERE name = 'FolderConfiguration'"))
                         .toInt();
    struct
    {
        qint64 offset;
        QByteArray bytes;
    } const spoilt[] = {
        {16, QByteArray("\x03\x33", 2)},             // the size of a page is no power of two
        {100, QByteArray(1, '\xff')},                // the kind of the first page
        {(root - 1) * 4096, QByteArray(64, '\x5a')}, // a table's root
    };
    for (auto const& [offset, bytes] : spoilt) {
        WriteFile(Path(), good);
        Overwrite(Path(), offset, bytes);
        ExpectRefusal("damaged");
    }
}

TEST_P(StoreOpening, RefusalLeavesWhatAnotherProgramLeftBehind)
{
    MakeLeftBehindStore();
    int const root = InChildProcess([&] {
        return RawStore(Path(), RawStore::KeepLog)
            .Value(QStringLiteral("SELECT rootpage FROM sqlite_schema WHERE name = 'FolderConfiguration'"))
            .toInt();
    });
    ASSERT_GT(root, 1);
    Overwrite(Path(), (root - 1) * 4096, QByteArray(64, '\x5a'));

    QByteArray const file = ReadFile(Path());
    QByteArray const log = ReadFile(Path("store.db-wal"));
    EXPECT_EQ(SqliteDatabaseFactory::Open(Path(), &error, In(GetParam())), nullptr);
    EXPECT_TRUE(error.contains(QStringLiteral("damaged"))) << error.toStdString();
    EXPECT_TRUE(ReadFile(Path()) == file);
    EXPECT_TRUE(ReadFile(Path("store.db-wal")) == log);
}

TEST_P(StoreOpening, WhatAnotherProgramLeftBehindIsThere)
{
    MakeLeftBehindStore();
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 101);
}

TEST_P(StoreOpening, LogWithoutItsIndexIsReadWhereFilesMayBeMade)
{
    MakeLeftBehindStore();
    ASSERT_TRUE(QFile::remove(Path("store.db-shm")));
    if (GetParam() == OpenMode::ReadOnly) {
        ExpectRefusal("opened for writing once");
        return;
    }
    auto const store = Open();
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*store), 101);
}

TEST_P(StoreOpening, PlaceWithoutRightsIsRefused)
{
    MakeStore();
    QByteArray const name = Path().toUtf8();
    QByteArray const place = folder.path().toUtf8();
    ASSERT_EQ(::chmod(place.constData(), 0755), 0);
    auto const opens = [&] {
        DropRights();
        return SqliteDatabaseFactory::Open(Path(), &error, In(GetParam())) != nullptr ? 1
               : error.contains(Path())                                               ? 0
                                                                                      : 2;
    };
    ASSERT_EQ(::chmod(name.constData(), 0), 0);
    EXPECT_EQ(InChildProcess(opens), 0) << "of a file that may not be read";

    if (GetParam() != OpenMode::ReadOnly) {
        ASSERT_EQ(::chmod(name.constData(), 0444), 0);
        EXPECT_EQ(InChildProcess(opens), 0) << "of a file that may not be written";
        GiveToUnprivilegedUser(Path());
        ASSERT_EQ(::chmod(name.constData(), 0600), 0);
        EXPECT_EQ(InChildProcess(opens), 0) << "of a folder that takes no log";
        ASSERT_EQ(::unlink(name.constData()), 0);
        EXPECT_EQ(InChildProcess(opens), 0) << "of a folder that takes no store";
    }
    ASSERT_EQ(::chmod(place.constData(), 0), 0);
    EXPECT_EQ(InChildProcess(opens), 0) << "of a folder that may not be entered";
    ASSERT_EQ(::chmod(place.constData(), 0700), 0);
}

TEST_P(StoreOpening, PathThroughALinkAndARelativePathOpenTheStore)
{
    MakeStore();
    ASSERT_EQ(::symlink("store.db", Path("link.db").toUtf8().constData()), 0);
    auto const linked = SqliteDatabaseFactory::Open(Path("link.db"), &error, In(GetParam()));
    ASSERT_NE(linked, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*linked), 100);

    QString const relative = QDir::current().relativeFilePath(Path());
    auto const store = SqliteDatabaseFactory::Open(relative, &error, In(GetParam()));
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_EQ(store->path(), Path());
}

TEST_P(StoreOpening, OddNamesAreOpenedAsTheyStand)
{
    for (char const* name :
         {"a b?immutable=1#c.db", "100%25.db", "\xc3\xbc\xe2\x82\xac.db", "it's \"one\".db", "file:x"}) {
        ASSERT_NE(SqliteDatabaseFactory::Open(Path(name), &error), nullptr) << error.toStdString();
        ASSERT_TRUE(QFileInfo::exists(Path(name)));
        auto const store = SqliteDatabaseFactory::Open(Path(name), &error, In(GetParam()));
        ASSERT_NE(store, nullptr) << error.toStdString();
        EXPECT_EQ(Single(*store, QStringLiteral("SELECT count(*) FROM Schedules")).toInt(), 1);
    }
}

TEST_P(StoreOpening, OpeningReadsTheSameFromASmallAndALargeStore)
{
    // Reads are counted, not the time.
    auto const reads = [&] {
        FaultyFiles files;
        files.Fail(0, SQLITE_OK, {FileOperation::Read});
        EXPECT_NE(Open(), nullptr) << error.toStdString();
        return files.Count();
    };
    MakeStore();
    int const small = reads();
    {
        RawStore raw(Path());
        raw.Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 50000) "
                               "INSERT INTO FolderConfiguration (name, clientPath) SELECT i, '/home/' || i FROM n"));
    }
    EXPECT_LE(reads(), small + 8) << "a table's tree has a few levels more";
}

} // namespace
