#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QDir>
#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class DoctorCommandTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/docs"_q);
    }

    /// Adds files 1 to `count`, whose folder is not on record.
    void AddFilesWithoutFolder(int count)
    {
        RawStore(StorePath())
            .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                 "INSERT INTO FileConfiguration (id, folderConfigurationId, clientPath, rootFolderId) "
                 "SELECT i, 99, '%2/docs/f' || i, 1 FROM n"_q.arg(count)
                     .arg(folder.path()));
    }
};

} // namespace

TEST_F(DoctorCommandTest, StoreWithoutFindingsIsReportedAsSuch)
{
    QString const out = RunSuccessfully({"doctor"_q});
    EXPECT_TRUE(out.contains(StorePath()) && out.contains("nothing was found"_q)) << out.toStdString();
    EXPECT_EQ(Json({"doctor"_q}), QJsonArray());
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"store.db"_q});
}

TEST_F(DoctorCommandTest, FaultIsListedWithItsRowsAndFails)
{
    AddFilesWithoutFolder(1);
    RunResult const ran = Run({"doctor"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, QString());
    EXPECT_TRUE(ran.out.startsWith("fault file-without-folder: "_q)) << ran.out.toStdString();
    EXPECT_TRUE(
        ran.out.contains("\n  FileConfiguration 1 '%1/docs/f1': folderConfigurationId 99\n"_q.arg(folder.path())))
        << ran.out.toStdString();
}

TEST_F(DoctorCommandTest, NoteIsListedAndSucceeds)
{
    RawStore(StorePath()).Run("DELETE FROM Schedules"_q);
    EXPECT_TRUE(RunSuccessfully({"doctor"_q}).startsWith("note no-default-schedule: "_q));
}

TEST_F(DoctorCommandTest, JsonHasAnObjectForEachCode)
{
    AddFilesWithoutFolder(1);
    RawStore(StorePath()).Run("DELETE FROM Schedules"_q);
    RunResult const ran = Run({"doctor"_q, "--json"_q});
    EXPECT_EQ(ran.status, 1);
    ASSERT_EQ(ran.json().size(), 2);
    QJsonObject const fault = ran.json().at(0).toObject();
    EXPECT_EQ(fault.value("code"_q), QJsonValue("file-without-folder"_q));
    EXPECT_EQ(fault.value("severity"_q), QJsonValue("fault"_q));
    EXPECT_FALSE(fault.value("meaning"_q).toString().isEmpty());
    EXPECT_EQ(fault.value("fixable"_q), QJsonValue(true));
    EXPECT_FALSE(fault.value("remedy"_q).toString().isEmpty());
    EXPECT_EQ(fault.value("rows"_q).toArray(),
              (QJsonArray{QJsonObject{{"table"_q, "FileConfiguration"_q},
                                      {"id"_q, 1},
                                      {"name"_q, At("docs/f1")},
                                      {"detail"_q, "folderConfigurationId 99"_q}}}));
    QJsonObject const note = ran.json().at(1).toObject();
    EXPECT_EQ(note.value("code"_q), QJsonValue("no-default-schedule"_q));
    EXPECT_EQ(note.value("severity"_q), QJsonValue("note"_q));
    EXPECT_EQ(note.value("rows"_q).toArray(),
              (QJsonArray{QJsonObject{{"table"_q, "Schedules"_q},
                                      {"id"_q, QJsonValue()},
                                      {"name"_q, QJsonValue()},
                                      {"detail"_q, "no row with folderConfigurationId 0"_q}}}));
}

TEST_F(DoctorCommandTest, FixCopiesTheStoreThenFixesAndTells)
{
    AddFilesWithoutFolder(2);
    RunResult const ran = Run({"doctor"_q, "--fix"_q, "file-without-folder"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    QStringList const backups = QDir(folder.path()).entryList({"store.db.*-before-file-without-folder"_q}, QDir::Files);
    ASSERT_EQ(backups.size(), 1);
    EXPECT_EQ(ran.out,
              ("copied the store to '%1' first\n"
               "2 rows for file-without-folder changed:\n"
               "  FileConfiguration 1 '%2/docs/f1': folderConfigurationId set to 1\n"
               "  FileConfiguration 2 '%2/docs/f2': folderConfigurationId set to 1\n"_q)
                  .arg(At(backups.first()), folder.path()));
    EXPECT_EQ(RawStore(At(backups.first())).Value("SELECT folderConfigurationId FROM FileConfiguration"_q),
              QVariant(99LL));
    RunSuccessfully({"doctor"_q});

    QString const again = RunSuccessfully({"doctor"_q, "--fix"_q, "file-without-folder"_q});
    EXPECT_TRUE(again.contains("nothing is to be fixed"_q)) << again.toStdString();
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), (QStringList{"store.db"_q, backups.first()}));
}

TEST_F(DoctorCommandTest, DryRunTellsWhatTheFixTellsAndChangesNothing)
{
    AddFilesWithoutFolder(2);
    QJsonObject const dry = JsonObject({"doctor"_q, "--fix"_q, "file-without-folder"_q, "--dry-run"_q});
    EXPECT_TRUE(dry.value("backup"_q).isNull());
    EXPECT_EQ(RawStore(StorePath()).Value("SELECT min(folderConfigurationId) FROM FileConfiguration"_q),
              QVariant(99LL));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"store.db"_q});
    QJsonObject const real = JsonObject({"doctor"_q, "--fix"_q, "file-without-folder"_q});
    EXPECT_TRUE(real.value("backup"_q).toString().startsWith(StorePath()));
    EXPECT_EQ(dry.value("fixed"_q), real.value("fixed"_q));
    EXPECT_EQ(real.value("fixed"_q).toArray().size(), 2);
    EXPECT_EQ(real.value("left"_q), QJsonValue(QJsonArray()));
}

TEST_F(DoctorCommandTest, RowsThatAreLeftAreListedAndFail)
{
    RawStore(StorePath())
        .Run("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (7, '/x/y', 99, 98)"_q);
    RunResult const ran = Run({"doctor"_q, "--fix"_q, "folder-without-parent"_q});
    EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.endsWith("1 row is left:\n  FolderConfiguration 7 '/x/y': parentId 99\n"_q))
        << ran.out.toStdString();
}

TEST_F(DoctorCommandTest, WhatCannotBeFixedSaysWhatToDo)
{
    for (char const* code : {"damage", "account-without-server"}) {
        RunResult const ran = Run({"doctor"_q, "--fix"_q, QString::fromUtf8(code)});
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(ran.err.contains("'tandryctl "_q)) << ran.err.toStdString();
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    }
}

TEST_F(DoctorCommandTest, UnknownCodeIsWrongUsage)
{
    RunResult const unknown = Run({"doctor"_q, "--fix"_q, "nonsense"_q});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.contains("nonsense"_q)) << unknown.err.toStdString();
}

TEST_F(DoctorCommandTest, HelpNamesTheCodesThatCanBeFixed)
{
    QString const help = RunWithoutStore({"doctor"_q, "--help"_q}).out;
    EXPECT_TRUE(help.contains("\n  twin\n"_q));
    EXPECT_FALSE(help.contains("\n  damage\n"_q));
}

TEST_F(DoctorCommandTest, ManyRowsAreCutInPlainOutputAndCompleteInJson)
{
    AddFilesWithoutFolder(25);
    QString const out = Run({"doctor"_q}).out;
    EXPECT_TRUE(out.contains("/docs/f20'"_q) && !out.contains("/docs/f21'"_q)) << out.toStdString();
    EXPECT_TRUE(out.contains("\n  and 5 more; --json lists all\n"_q)) << out.toStdString();
    QJsonObject const fault = Run({"doctor"_q, "--json"_q}).json().first().toObject();
    EXPECT_EQ(fault.value("rows"_q).toArray().size(), 25);
}

TEST_F(DoctorCommandTest, DamageOfTheFileIsTheOnlyFinding)
{
    AddFilesWithoutFolder(1);
    RawStore(StorePath()).Run("DROP INDEX FileConfiguration_root"_q);
    RunResult const ran = Run({"doctor"_q, "--json"_q});
    EXPECT_EQ(ran.status, 1);
    ASSERT_EQ(ran.json().size(), 1);
    QJsonObject const damage = ran.json().first().toObject();
    EXPECT_EQ(damage.value("fixable"_q), QJsonValue(false));
    EXPECT_EQ(damage.value("code"_q), QJsonValue("damage"_q));
    EXPECT_EQ(damage.value("rows"_q).toArray().first().toObject().value("detail"_q),
              QJsonValue("index FileConfiguration_root is missing"_q));
}
