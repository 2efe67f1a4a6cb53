#include "ToolFixture.h"

#include "support/ChildProcess.h"
#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class StoreCommandsTest : public ToolTest
{
protected:
    QByteArray Content(QString const& path) const
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    /// Returns the only object that a command has printed.
    static QJsonObject JsonOf(RunResult const& ran) { return ran.json().first().toObject(); }
};

} // namespace

TEST_F(StoreCommandsTest, InitCreatesAStoreForItsOwnerOnly)
{
    EXPECT_TRUE(RunSuccessfully({"init"_q}).contains(StorePath()));
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(StorePath()) & others);
}

TEST_F(StoreCommandsTest, InitOfAnExistingStoreReportsThatAndKeepsIt)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    EXPECT_TRUE(RunSuccessfully({"init"_q}).contains("is there already"_q));
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(StoreCommandsTest, InitInJsonShowsWhetherItCreatedTheStore)
{
    EXPECT_EQ(JsonObject({"init"_q}), (QJsonObject{{"store"_q, StorePath()}, {"made"_q, true}}));
    EXPECT_EQ(JsonObject({"init"_q}), (QJsonObject{{"store"_q, StorePath()}, {"made"_q, false}}));
}

TEST_F(StoreCommandsTest, InitCreatesTheUsersOwnStoreWithItsFolder)
{
    RunResult const ran = RunWithoutStore({"init"_q}, {"XDG_DATA_HOME="_q + At("data")});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(At("data/tandry/tandry.db")));
    EXPECT_EQ(RunWithoutStore({"list"_q, "schedules"_q}, {"XDG_DATA_HOME="_q + At("data")}).status, 0);
}

TEST_F(StoreCommandsTest, StoreWithANameOfAnyFormIsAFileInTheWorkingDirectory)
{
    for (char const* name : {":memory:", ":x", "file:x.db?mode=memory"}) {
        QString const store = QString::fromUtf8(name);
        RunResult const missing = RunWithoutStore({"--store"_q, store, "list"_q, "schedules"_q});
        EXPECT_TRUE(missing.err.contains("there is no store"_q)) << missing.err.toStdString();
        RunResult const ran = RunWithoutStore({"--store"_q, store, "init"_q});
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_TRUE(ran.out.contains(store)) << ran.out.toStdString();
        EXPECT_TRUE(QDir(folder.path()).entryList(QDir::Files).contains(store));
        EXPECT_EQ(RunWithoutStore({"--store"_q, store, "list"_q, "schedules"_q}).status, 0);
        EXPECT_EQ(RunWithoutStore({"--store"_q, store, "backup"_q, store + ".copy"_q}).status, 0);
        EXPECT_TRUE(QDir(folder.path()).entryList(QDir::Files).contains(store + ".copy"_q));
    }
}

TEST_F(StoreCommandsTest, StoreComesFromTheEnvironment)
{
    EXPECT_EQ(RunWithoutStore({"init"_q}, {"TANDRY_STORE="_q + StorePath()}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, StoreOptionOverridesTheEnvironment)
{
    RunResult const ran = RunWithoutStore({"init"_q, "--store"_q, StorePath()}, {"TANDRY_STORE="_q + At("other.db")});
    EXPECT_EQ(ran.status, 0);
    EXPECT_TRUE(QFileInfo::exists(StorePath()));
    EXPECT_FALSE(QFileInfo::exists(At("other.db")));
}

TEST_F(StoreCommandsTest, EmptyStoreNameIsWrongUsageAndNeverTheUsersOwnStore)
{
    ASSERT_EQ(RunWithoutStore({"init"_q}).status, 0);
    QString const own = At(".local/share/tandry/tandry.db");
    QByteArray const before = tandry::test::ReadFile(own);
    MakeDirectory("docs"_q);
    QStringList const addRoot{"root"_q, "add"_q, At("docs"), "--server-path"_q, "/d"_q};
    for (QStringList const& arguments : {QStringList{"init"_q}, QStringList{"list"_q, "schedules"_q}, addRoot}) {
        for (RunResult const& ran :
             {RunWithoutStore(QStringList{"--store"_q, ""_q} + arguments),
              RunWithoutStore(QStringList{"--store"_q, ""_q} + arguments, {"TANDRY_STORE="_q + own}),
              RunWithoutStore(arguments, {"TANDRY_STORE="_q})}) {
            EXPECT_EQ(ran.status, 2) << ran.out.toStdString();
            EXPECT_TRUE(ran.err.contains("the store's name is empty"_q)) << ran.err.toStdString();
            EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
        }
    }
    EXPECT_EQ(tandry::test::ReadFile(own), before);
    EXPECT_EQ(RunWithoutStore({"--store"_q, own, "list"_q, "schedules"_q}, {"TANDRY_STORE="_q}).status, 0);
}

TEST_F(StoreCommandsTest, MissingStoreFailsAndIsNotCreated)
{
    RunResult const ran = Run({"list"_q, "roots"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains(StorePath()));
    EXPECT_TRUE(ran.err.contains("init"_q)); // the command that helps
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_FALSE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, WritingCommandCreatesNoStore)
{
    MakeDirectory("docs"_q);
    EXPECT_EQ(Run({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/d"_q}).status, 3);
    EXPECT_FALSE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, FileThatIsNoStoreFailsAndIsUnchanged)
{
    WriteFile("store.db"_q, "not a database, but long enough to look at, as a letter would be");
    for (QStringList const& command : {QStringList{"init"_q}, QStringList{"list"_q, "roots"_q}}) {
        RunResult const ran = Run(command);
        EXPECT_EQ(ran.status, 3);
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
    }
    EXPECT_EQ(Content(StorePath()), "not a database, but long enough to look at, as a letter would be");
}

TEST_F(StoreCommandsTest, FolderInsteadOfAStoreFails)
{
    MakeDirectory("store.db"_q);
    EXPECT_EQ(Run({"init"_q}).status, 3);
}

TEST_F(StoreCommandsTest, StoreInAMissingFolderFails)
{
    EXPECT_EQ(RunWithoutStore({"--store"_q, At("missing/store.db"), "init"_q}).status, 3);
    EXPECT_FALSE(QFileInfo::exists(At("missing")));
}

TEST_F(StoreCommandsTest, ReadingCommandChangesNoByteAndLeavesNoFile)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    QByteArray const before = Content(StorePath());
    QStringList const files = QDir(folder.path()).entryList(QDir::Files);
    RunSuccessfully({"list"_q, "folders"_q});
    RunSuccessfully({"tree"_q});
    EXPECT_EQ(Content(StorePath()), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), files);
}

TEST_F(StoreCommandsTest, ReadingCommandSeesTheLastCommitOfAnotherProgram)
{
    Init();
    RawStore other(StorePath()); // stays open, so that the row is only in the log
    other.Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0);"_q);
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(StoreCommandsTest, ReadingCommandWorksWhileAnotherProgramWrites)
{
    Init();
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE; INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0);"_q);
    EXPECT_EQ(Run({"list"_q, "roots"_q}).status, 1); // not committed
    other.Run("COMMIT;"_q);
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(StoreCommandsTest, BackupIsAStoreWithTheSameRecords)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    QString const out = RunSuccessfully({"backup"_q, At("copy.db")});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains(At("copy.db"))) << out.toStdString();
    RunResult const ran = RunWithoutStore({"--store"_q, At("copy.db"), "list"_q, "roots"_q, "--json"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(ran.json(), Json({"list"_q, "roots"_q}));
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(At("copy.db")) & others);
}

TEST_F(StoreCommandsTest, BackupInJsonShowsBothFiles)
{
    Init();
    EXPECT_EQ(JsonObject({"backup"_q, At("copy.db")}),
              (QJsonObject{{"store"_q, StorePath()}, {"backup"_q, At("copy.db")}}));
}

TEST_F(StoreCommandsTest, BackupHoldsWhatAnotherProgramHasCommitted)
{
    Init();
    RawStore other(StorePath());
    other.Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0);"
              "BEGIN IMMEDIATE; INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/s', 0);"_q);
    RunSuccessfully({"backup"_q, At("copy.db")});
    other.Run("COMMIT"_q);
    EXPECT_EQ(RawStore(At("copy.db")).Count("FolderConfiguration"_q), 1);
}

TEST_F(StoreCommandsTest, BackupReplacesNoFile)
{
    Init();
    WriteFile("copy.db"_q, "mine");
    RunResult const ran = Run({"backup"_q, At("copy.db")});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains(At("copy.db"))) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(Content(At("copy.db")), "mine");
}

TEST_F(StoreCommandsTest, BackupThatKeepsSomeDeletesTheOldestBackups)
{
    Init();
    MakeDirectory("backups"_q);
    QDir const backups(At("backups"));
    WriteFile("backups/store-2001-01-01T00-00-00Z.db"_q, "no store, but named like a backup of one");
    WriteFile("backups/notes.txt"_q, "mine");
    RunSuccessfully({"backup"_q, At("backups/store-2002-02-02T00-00-00Z.db")});
    RunSuccessfully({"backup"_q, At("backups/store-2003-03-03T00-00-00Z.db")});
    RunSuccessfully({"backup"_q, At("backups/other-2002-02-02T00-00-00Z.db")});

    QString const out = RunSuccessfully({"backup"_q, "--keep"_q, "2"_q, "--yes"_q, At("backups")});
    EXPECT_EQ(out.section(QLatin1Char('\n'), 1),
              "to be deleted from the disk: '%1'\ndeleted from the disk: 1 older backup\n"_q.arg(
                  At("backups/store-2002-02-02T00-00-00Z.db")));
    QStringList names = backups.entryList(QDir::Files);
    EXPECT_EQ(names.mid(0, 4),
              (QStringList{"notes.txt"_q,
                           "other-2002-02-02T00-00-00Z.db"_q,
                           "store-2001-01-01T00-00-00Z.db"_q,
                           "store-2003-03-03T00-00-00Z.db"_q}));
    ASSERT_EQ(names.size(), 5);
    EXPECT_EQ(RunWithoutStore({"--store"_q, backups.filePath(names.last()), "check"_q}).status, 0);

    QJsonObject const next = JsonOf(Run({"backup"_q, "--keep"_q, "1"_q, "--yes"_q, "--json"_q, At("backups")}));
    EXPECT_EQ(next.value("removed"_q),
              (QJsonArray{backups.filePath("store-2003-03-03T00-00-00Z.db"_q), backups.filePath(names.last())}));
    EXPECT_TRUE(QFileInfo::exists(next.value("backup"_q).toString()));
}

TEST_F(StoreCommandsTest, BackupThatKeepsSomeAsksBeforeItDeletes)
{
    Init();
    MakeDirectory("backups"_q);
    QString const older = At("backups/store-2002-02-02T00-00-00Z.db");
    QStringList const command{"backup"_q, "--keep"_q, "1"_q, At("backups")};
    EXPECT_EQ(RunOnTerminal(command).status, 0) << "there is nothing to ask";
    for (QString const& name : QDir(At("backups")).entryList(QDir::Files))
        QFile::remove(At("backups/"_q + name));
    RunSuccessfully({"backup"_q, older});

    RunResult const denied = RunOnTerminal(command, "n\n");
    EXPECT_EQ(denied.status, 1);
    EXPECT_TRUE(denied.out.contains("to be deleted from the disk: '%1'"_q.arg(older))) << denied.out.toStdString();
    EXPECT_TRUE(denied.out.contains("Delete 1 older backup? [y/N]"_q)) << denied.out.toStdString();
    EXPECT_TRUE(QFileInfo::exists(older));
    EXPECT_EQ(QDir(At("backups")).entryList(QDir::Files).size(), 2) << "the new one is made whatever the answer is";

    RunResult const agreed = RunOnTerminal(command, "y\n");
    EXPECT_EQ(agreed.status, 0) << agreed.out.toStdString();
    EXPECT_TRUE(agreed.out.contains("deleted from the disk: 2 older backups"_q)) << agreed.out.toStdString();
    EXPECT_EQ(QDir(At("backups")).entryList(QDir::Files).size(), 1);
    EXPECT_FALSE(QFileInfo::exists(older));
}

TEST_F(StoreCommandsTest, BackupThatKeepsSomeDeletesNothingUnaskedWithoutATerminal)
{
    Init();
    MakeDirectory("backups"_q);
    QString const older = At("backups/store-2002-02-02T00-00-00Z.db");
    RunSuccessfully({"backup"_q, older});
    RunResult const refused = Run({"backup"_q, "--keep"_q, "1"_q, At("backups")});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.out.startsWith("copied the store"_q)) << refused.out.toStdString();
    EXPECT_TRUE(refused.err.contains("to be deleted from the disk: '%1'"_q.arg(older))) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains("this would delete 1 older backup; "_q)) << refused.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(older));

    RunResult const json = Run({"backup"_q, "--keep"_q, "1"_q, "--json"_q, At("backups")});
    EXPECT_EQ(json.status, 2);
    EXPECT_TRUE(QFileInfo::exists(JsonOf(json).value("backup"_q).toString()));
    EXPECT_EQ(JsonOf(json).value("removed"_q), QJsonArray());
}

TEST_F(StoreCommandsTest, BackupThatFailsRemovesNoOlderOne)
{
    Init();
    MakeDirectory("backups"_q);
    RunSuccessfully({"backup"_q, At("backups/store-2002-02-02T00-00-00Z.db")});
    RawStore(StorePath()).Run("DROP INDEX FileConfiguration_root"_q);
    EXPECT_EQ(Run({"backup"_q, "--keep"_q, "1"_q, At("backups")}).status, 3);
    EXPECT_TRUE(QFileInfo::exists(At("backups/store-2002-02-02T00-00-00Z.db")));
}

TEST_F(StoreCommandsTest, BackupThatKeepsSomeNeedsAFolderAndACount)
{
    Init();
    RunResult const ran = Run({"backup"_q, "--keep"_q, "2"_q, At("missing")});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains(At("missing"))) << ran.err.toStdString();
    EXPECT_EQ(Run({"backup"_q, "--keep"_q, "0"_q, folder.path()}).status, 2);
}

TEST_F(StoreCommandsTest, InitAndBackupNameWhatAnEarlierStoreHasLeft)
{
    WriteFile("store.db-wal"_q, "left");
    EXPECT_EQ(Run({"init"_q}).status, 3);
    EXPECT_TRUE(Run({"init"_q}).err.contains(StorePath() + "-wal"_q));
    EXPECT_FALSE(QFileInfo::exists(StorePath()));
    QFile::remove(At("store.db-wal"));

    Init();
    WriteFile("copy.db-journal"_q, "left");
    for (QStringList const& command :
         {QStringList{"backup"_q, At("copy.db")}, QStringList{"recover"_q, StorePath(), "--to"_q, At("copy.db")}}) {
        RunResult const ran = Run(command);
        EXPECT_EQ(ran.status, 3) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains(At("copy.db-journal"))) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        EXPECT_FALSE(QFileInfo::exists(At("copy.db")));
    }
}

TEST_F(StoreCommandsTest, RecoveryIntoALogOfTheDamagedStoreIsRefused)
{
    Init();
    QStringList const files = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden);
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        RunResult const ran = Run({"recover"_q, StorePath(), "--to"_q, StorePath() + QLatin1String(suffix)});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains("for its own files beside"_q)) << ran.err.toStdString();
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden), files);
}

TEST_F(StoreCommandsTest, BackupNeedsAPath)
{
    Init();
    EXPECT_EQ(Run({"backup"_q}).status, 2);
}

TEST_F(StoreCommandsTest, CheckOfAnUndamagedStoreReportsThatAndChangesNothing)
{
    Init();
    QByteArray const before = Content(StorePath());
    QString const out = RunSuccessfully({"check"_q});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains("whole"_q)) << out.toStdString();
    EXPECT_EQ(Json({"check"_q}), QJsonArray());
    EXPECT_EQ(Content(StorePath()), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"store.db"_q});
}

TEST_F(StoreCommandsTest, CheckListsDamageAndFails)
{
    Init();
    RawStore(StorePath()).Run("DROP INDEX FileConfiguration_root; DROP INDEX Schedules_folder"_q);
    RunResult const plain = Run({"check"_q});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.err, QString());
    EXPECT_EQ(plain.out, "damage\nindex FileConfiguration_root is missing\nindex Schedules_folder is missing\n"_q);
    RunResult const json = Run({"check"_q, "--json"_q});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.json(),
              (QJsonArray{QJsonObject{{"damage"_q, "index FileConfiguration_root is missing"_q}},
                          QJsonObject{{"damage"_q, "index Schedules_folder is missing"_q}}}));
}

TEST_F(StoreCommandsTest, StoreWithATriggerOfOthersIsRefusedAndItsRowsCanBeRecovered)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    RawStore(StorePath())
        .Run("CREATE TRIGGER guest AFTER INSERT ON FileConfiguration BEGIN DELETE FROM FileConfiguration; END;"
             "CREATE VIEW seen AS SELECT * FROM FolderConfiguration"_q);
    RunResult const refused = Run({"list"_q, "roots"_q});
    EXPECT_EQ(refused.status, 3);
    EXPECT_TRUE(refused.err.contains("trigger guest of the table FileConfiguration"_q)) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains("tandryctl recover"_q)) << refused.err.toStdString();

    RunSuccessfully({"recover"_q, StorePath(), "--to"_q, At("new.db")});
    RunResult const recovered = RunWithoutStore({"--store"_q, At("new.db"), "list"_q, "roots"_q, "--json"_q});
    EXPECT_EQ(recovered.json().size(), 1);
}

TEST_F(StoreCommandsTest, WarningOfTheOpeningIsPrintedToStandardError)
{
    Init();
    ASSERT_EQ(tandry::test::InChildProcess([&]() -> int {
                  RawStore raw(StorePath());
                  for (int row = 0; row < 3; ++row)
                      raw.Run("INSERT INTO ServerConfiguration (alias) VALUES ('lost')"_q);
                  tandry::test::Crash();
              }),
              -SIGKILL);
    QString const log = StorePath() + "-wal"_q;
    constexpr int inTheFirstPage = 1000;
    tandry::test::Overwrite(log, inTheFirstPage, QByteArray(8, '\x5a'));

    RunResult const warned = Run({"server"_q, "add"_q, "--dav-url"_q, "https://a.example"_q, "--json"_q});
    EXPECT_EQ(warned.status, 0);
    EXPECT_EQ(warned.json().size(), 1);
    EXPECT_TRUE(warned.err.startsWith("tandryctl: warning: "_q + log)) << warned.err.toStdString();
    EXPECT_TRUE(warned.err.contains("3 commits"_q)) << warned.err.toStdString();
    EXPECT_EQ(warned.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(Run({"server"_q, "add"_q, "--dav-url"_q, "https://b.example"_q}).err, QString()) << "told once";
}

TEST_F(StoreCommandsTest, OlderStoreIsUpgradedByTheFirstWritingCommand)
{
    using tandry::test::ReleasedStore;
    ReleasedStore{0, sync::database::JournalMode::WriteAheadLog}.CopyTo(StorePath());
    RunSuccessfully({"init"_q});
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
    EXPECT_TRUE(QFileInfo::exists(At("store.db.version-0")));
}

TEST_F(StoreCommandsTest, StoreFileNameMayContainOddCharacters)
{
    QString const path = At("a 'b'\n日本?.db");
    EXPECT_EQ(RunWithoutStore({"--store"_q, path, "init"_q}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(path));
    RunResult const ran = RunWithoutStore({"--store"_q, path, "list"_q, "schedules"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
}

TEST_F(StoreCommandsTest, RecoverCopiesADamagedStoreAndCountsItsRows)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    QByteArray const before = Content(StorePath());
    RunResult const ran = RunWithoutStore({"recover"_q, StorePath(), "--to"_q, At("new.db"), "--json"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    bool found = false;
    for (QJsonValue const& table : ran.json()) {
        if (table.toObject().value("table"_q) != QJsonValue("FolderConfiguration"_q))
            continue;
        found = true;
        EXPECT_EQ(table.toObject(),
                  (QJsonObject{{"table"_q, "FolderConfiguration"_q},
                               {"recovered"_q, 1},
                               {"lost"_q, 0},
                               {"ambiguous"_q, 0},
                               {"doubtful"_q, 0}}));
    }
    EXPECT_TRUE(found);
    EXPECT_EQ(Content(StorePath()), before);
    EXPECT_EQ(RawStore(At("new.db")).Count("FolderConfiguration"_q), 1);
}

TEST_F(StoreCommandsTest, RecoverReportsLostRowsByItsExitStatus)
{
    Init();
    {
        RawStore raw(StorePath());
        raw.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                "INSERT INTO FileConfiguration (clientPath) SELECT printf('%0100d', i) FROM n;"_q);
    }
    int const page = RawStore(StorePath())
                         .Value("SELECT max(pageno) FROM dbstat WHERE name = 'FileConfiguration' AND "
                                "pagetype = 'leaf'"_q)
                         .toInt();
    QFile file(StorePath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(qint64(page - 1) * 4096));
    ASSERT_EQ(file.write(QByteArray(4096, '\xaa')), 4096);
    file.close();
    RunResult const ran = RunWithoutStore({"recover"_q, StorePath(), "--to"_q, At("new.db")});
    EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.contains(At("new.db"))) << ran.out.toStdString();
    EXPECT_EQ(RunWithoutStore({"--store"_q, At("new.db"), "check"_q}).status, 0);
}

TEST_F(StoreCommandsTest, RecoverReplacesNoFileAndNeedsATarget)
{
    Init();
    WriteFile("new.db"_q, "mine");
    RunResult const ran = RunWithoutStore({"recover"_q, StorePath(), "--to"_q, At("new.db")});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains(At("new.db"))) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(Content(At("new.db")), "mine");
    EXPECT_EQ(RunWithoutStore({"recover"_q, StorePath()}).status, 2);
}
