#include "ToolFixture.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QFile>
#include <QFileInfo>

using namespace tandryctl::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::test::FolderContents;
using tandry::test::RawStore;

namespace {

/// A store with one root, and a backup of it with none.
class RestoreTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        RunSuccessfully({"backup"_q, At("backup.db")});
        AddRoot("docs"_q, "/docs"_q);
    }

    /// Opens the store in this process, which is another one than the tool's.
    void ExpectRefusedWhileOpen(OpenOptions const& options)
    {
        QString error;
        auto const store = SqliteDatabaseFactory::Open(StorePath(), &error, options);
        ASSERT_NE(store, nullptr) << error.toStdString();
        RunResult const ran = Run({"restore"_q, At("backup.db")});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains(StorePath()) && ran.err.contains("locked"_q)) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
        EXPECT_FALSE(QFileInfo::exists(At("store.db.replaced")));
    }
};

} // namespace

TEST_F(RestoreTest, PutsTheBackupInPlaceAndSaysWhereTheEarlierStoreIs)
{
    QString const out = RunSuccessfully({"restore"_q, At("backup.db")});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains(At("backup.db")) && out.contains(At("store.db.replaced")))
        << out.toStdString();
    EXPECT_EQ(Run({"list"_q, "roots"_q}).status, 1);
    EXPECT_EQ(RawStore(At("store.db.replaced")).Count("FolderConfiguration"_q), 1);
}

TEST_F(RestoreTest, InJsonShowsTheThreeFiles)
{
    EXPECT_EQ(
        JsonObject({"restore"_q, At("backup.db")}),
        (QJsonObject{{"store"_q, StorePath()}, {"backup"_q, At("backup.db")}, {"kept"_q, At("store.db.replaced")}}));
    QFile::remove(StorePath());
    EXPECT_EQ(JsonObject({"restore"_q, At("backup.db")}),
              (QJsonObject{{"store"_q, StorePath()}, {"backup"_q, At("backup.db")}, {"kept"_q, QJsonValue()}}));
}

TEST_F(RestoreTest, OfTheUsersOwnStoreMakesItsFolder)
{
    RunResult const ran = RunWithoutStore({"restore"_q, At("backup.db")}, {"XDG_DATA_HOME="_q + At("data")});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(At("data/tandry/tandry.db")));
}

TEST_F(RestoreTest, IsRefusedWhileAProgramHasTheStoreOpen)
{
    OpenOptions options;
    ExpectRefusedWhileOpen(options);
    options.mode = OpenMode::ReadOnly;
    ExpectRefusedWhileOpen(options);
}

TEST_F(RestoreTest, IsRefusedWhileAProgramHasAStoreWithAJournalOpen)
{
    QFile::remove(StorePath());
    OpenOptions options;
    options.journalMode = JournalMode::Rollback;
    ExpectRefusedWhileOpen(options);
    options.mode = OpenMode::ReadOnly;
    ExpectRefusedWhileOpen(options);
}

TEST_F(RestoreTest, IsRefusedWhileAProgramWithoutThisLibraryHasTheLogOpen)
{
    RawStore reader(StorePath());
    EXPECT_EQ(reader.Count("FolderConfiguration"_q), 1); // SQLite takes its lock at the first read
    EXPECT_EQ(Run({"restore"_q, At("backup.db")}).status, 3);
}

TEST_F(RestoreTest, OfAMissingOrForeignBackupChangesNothing)
{
    WriteFile("letter"_q, "dear reader");
    auto const before = FolderContents(folder.path());
    for (QString const& backup : {At("missing.db"), At("letter"), StorePath()}) {
        RunResult const ran = Run({"restore"_q, backup});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains(backup)) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    }
    EXPECT_EQ(FolderContents(folder.path()), before);
    EXPECT_EQ(Run({"restore"_q}).status, 2);
}
