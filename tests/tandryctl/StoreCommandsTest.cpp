#include "ToolFixture.h"

#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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
};

} // namespace

TEST_F(StoreCommandsTest, InitMakesAStoreForItsOwnerAlone)
{
    EXPECT_TRUE(Done({"init"_q}).contains(StorePath()));
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(StorePath()) & others);
}

TEST_F(StoreCommandsTest, InitOfAStoreThatIsThereSaysSoAndLeavesIt)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    EXPECT_TRUE(Done({"init"_q}).contains("is there already"_q));
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
}

TEST_F(StoreCommandsTest, InitInJsonTellsWhetherItMadeTheStore)
{
    EXPECT_EQ(JsonObject({"init"_q}), (QJsonObject{{"store"_q, StorePath()}, {"made"_q, true}}));
    EXPECT_EQ(JsonObject({"init"_q}), (QJsonObject{{"store"_q, StorePath()}, {"made"_q, false}}));
}

TEST_F(StoreCommandsTest, InitMakesTheUsersOwnStoreWithItsFolder)
{
    Ran const ran = RunBare({"init"_q}, {"XDG_DATA_HOME="_q + At("data")});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(At("data/tandry/tandry.db")));
    EXPECT_EQ(RunBare({"list"_q, "schedules"_q}, {"XDG_DATA_HOME="_q + At("data")}).status, 0);
}

TEST_F(StoreCommandsTest, StoreComesFromTheEnvironment)
{
    EXPECT_EQ(RunBare({"init"_q}, {"TANDRY_STORE="_q + StorePath()}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, StoreOptionGoesBeforeTheEnvironment)
{
    Ran const ran = RunBare({"init"_q, "--store"_q, StorePath()}, {"TANDRY_STORE="_q + At("other.db")});
    EXPECT_EQ(ran.status, 0);
    EXPECT_TRUE(QFileInfo::exists(StorePath()));
    EXPECT_FALSE(QFileInfo::exists(At("other.db")));
}

TEST_F(StoreCommandsTest, EmptyEnvironmentVariableCountsAsNone)
{
    EXPECT_EQ(RunBare({"init"_q}, {"TANDRY_STORE="_q}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(At(".local/share/tandry/tandry.db")));
}

TEST_F(StoreCommandsTest, MissingStoreFailsAndNoneIsMade)
{
    Ran const ran = Run({"list"_q, "roots"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains(StorePath()));
    EXPECT_TRUE(ran.err.contains("init"_q)); // what to do
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_FALSE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, WritingCommandMakesNoStoreEither)
{
    MakeDirectory("docs"_q);
    EXPECT_EQ(Run({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/d"_q}).status, 3);
    EXPECT_FALSE(QFileInfo::exists(StorePath()));
}

TEST_F(StoreCommandsTest, FileThatIsNoStoreFailsAndStaysAsItIs)
{
    WriteFile("store.db"_q, "not a database, but long enough to look at, as a letter would be");
    for (QStringList const& command : {QStringList{"init"_q}, QStringList{"list"_q, "roots"_q}}) {
        Ran const ran = Run(command);
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

TEST_F(StoreCommandsTest, StoreInAFolderThatIsMissingFails)
{
    EXPECT_EQ(RunBare({"--store"_q, At("missing/store.db"), "init"_q}).status, 3);
    EXPECT_FALSE(QFileInfo::exists(At("missing")));
}

TEST_F(StoreCommandsTest, ReadingCommandChangesNoByteAndLeavesNoFile)
{
    Init();
    AddRoot("docs"_q, "/docs"_q);
    QByteArray const before = Content(StorePath());
    QStringList const files = QDir(folder.path()).entryList(QDir::Files);
    Done({"list"_q, "folders"_q});
    Done({"tree"_q});
    EXPECT_EQ(Content(StorePath()), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), files);
}

TEST_F(StoreCommandsTest, ReadingCommandSeesWhatAnotherProgramHasJustWritten)
{
    Init();
    RawStore other(StorePath()); // still open, so that the row stands in the log alone
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
    QString const out = Done({"backup"_q, At("copy.db")});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains(At("copy.db"))) << out.toStdString();
    Ran const ran = RunBare({"--store"_q, At("copy.db"), "list"_q, "roots"_q, "--json"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(ran.json(), Json({"list"_q, "roots"_q}));
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(At("copy.db")) & others);
}

TEST_F(StoreCommandsTest, BackupInJsonTellsBothFiles)
{
    Init();
    EXPECT_EQ(JsonObject({"backup"_q, At("copy.db")}),
              (QJsonObject{{"store"_q, StorePath()}, {"backup"_q, At("copy.db")}}));
}

TEST_F(StoreCommandsTest, BackupHoldsWhatAProgramThatStillWritesHasCommitted)
{
    Init();
    RawStore other(StorePath());
    other.Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0);"
              "BEGIN IMMEDIATE; INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/s', 0);"_q);
    Done({"backup"_q, At("copy.db")});
    other.Run("COMMIT"_q);
    EXPECT_EQ(RawStore(At("copy.db")).Count("FolderConfiguration"_q), 1);
}

TEST_F(StoreCommandsTest, BackupReplacesNoFileAndSaysSo)
{
    Init();
    WriteFile("copy.db"_q, "mine");
    Ran const ran = Run({"backup"_q, At("copy.db")});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains(At("copy.db"))) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(Content(At("copy.db")), "mine");
}

TEST_F(StoreCommandsTest, BackupNeedsAPath)
{
    Init();
    EXPECT_EQ(Run({"backup"_q}).status, 2);
}

TEST_F(StoreCommandsTest, CheckOfAWholeStoreSaysSoAndChangesNothing)
{
    Init();
    QByteArray const before = Content(StorePath());
    QString const out = Done({"check"_q});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains("whole"_q)) << out.toStdString();
    EXPECT_EQ(Json({"check"_q}), QJsonArray());
    EXPECT_EQ(Content(StorePath()), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"store.db"_q});
}

TEST_F(StoreCommandsTest, CheckListsWhatItFindsAndFails)
{
    Init();
    RawStore(StorePath()).Run("DROP INDEX FileConfiguration_root; DROP INDEX Schedules_folder"_q);
    Ran const plain = Run({"check"_q});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.err, QString());
    EXPECT_EQ(plain.out, "damage\nindex FileConfiguration_root is missing\nindex Schedules_folder is missing\n"_q);
    Ran const json = Run({"check"_q, "--json"_q});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.json(),
              (QJsonArray{QJsonObject{{"damage"_q, "index FileConfiguration_root is missing"_q}},
                          QJsonObject{{"damage"_q, "index Schedules_folder is missing"_q}}}));
}

TEST_F(StoreCommandsTest, OlderStoreIsBroughtUpToDateByTheFirstCommandThatMayWrite)
{
    using tandry::test::ReleasedStore;
    ReleasedStore{0, sync::database::JournalMode::WriteAheadLog}.CopyTo(StorePath());
    Ran const reading = Run({"list"_q, "roots"_q});
    EXPECT_EQ(reading.status, 3);
    EXPECT_TRUE(reading.err.contains("opened for writing once"_q)) << reading.err.toStdString();
    Done({"init"_q});
    EXPECT_EQ(Json({"list"_q, "roots"_q}).size(), 1);
    EXPECT_TRUE(QFileInfo::exists(At("store.db.version-0")));
}

TEST_F(StoreCommandsTest, StoreFileNameMayHoldOddCharacters)
{
    QString const path = At("a 'b'\n日本?.db");
    EXPECT_EQ(RunBare({"--store"_q, path, "init"_q}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(path));
    Ran const ran = RunBare({"--store"_q, path, "list"_q, "schedules"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
}
