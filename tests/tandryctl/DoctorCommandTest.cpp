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
    EXPECT_EQ(damage.value("code"_q), QJsonValue("damage"_q));
    EXPECT_EQ(damage.value("rows"_q).toArray().first().toObject().value("detail"_q),
              QJsonValue("index FileConfiguration_root is missing"_q));
}
