#include "ToolFixture.h"

#include "support/RawStore.h"

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// A store with the root 1 and the default schedule 1.
class ScheduleCommandsTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
    }

    RunResult Schedule(QStringList const& arguments) { return Run(QStringList{"schedule"_q} + arguments); }
    QJsonObject AddSchedule(QStringList const& more = {})
    {
        return JsonObject(QStringList{"schedule"_q, "add"_q, "--folder"_q, "1"_q} + more);
    }
    QJsonArray Schedules() { return Json({"list"_q, "schedules"_q}); }
};

} // namespace

TEST_F(ScheduleCommandsTest, AddedScheduleIsListedWithWhatWasGiven)
{
    QJsonObject const expected{{"id"_q, 2},
                               {"folderConfigurationId"_q, 1},
                               {"startTime"_q, "2027-01-31T08:30:00.000"_q},
                               {"expireTime"_q, "2027-07-01T00:00:00.000"_q},
                               {"syncScheduleType"_q, 3},
                               {"syncInterval"_q, 60}};
    EXPECT_EQ(AddSchedule({"--start"_q,
                           "2027-01-31T08:30"_q,
                           "--expire"_q,
                           "2027-07-01"_q,
                           "--type"_q,
                           "3"_q,
                           "--interval"_q,
                           "60"_q}),
              expected);
    EXPECT_EQ(Schedules().last().toObject(), expected);
}

TEST_F(ScheduleCommandsTest, AddWithoutValuesTakesThoseOfANewRecord)
{
    QJsonObject const added = AddSchedule();
    EXPECT_EQ(added.value("syncInterval"_q).toInt(), 30);
    EXPECT_EQ(added.value("syncScheduleType"_q).toInt(), 0);
    EXPECT_TRUE(added.value("startTime"_q).isNull());
    EXPECT_TRUE(added.value("expireTime"_q).isNull());
}

TEST_F(ScheduleCommandsTest, AddNamesTheFolder)
{
    EXPECT_EQ(RunSuccessfully({"schedule"_q, "add"_q, "--folder"_q, "1"_q}),
              "added schedule 2 of folder 1 '"_q + At("docs") + "'\n"_q);
}

TEST_F(ScheduleCommandsTest, AddNeedsAFolderOrTheDefault)
{
    EXPECT_EQ(Schedule({"add"_q}).status, 2);
    EXPECT_EQ(Schedule({"add"_q, "--default"_q, "--folder"_q, "1"_q}).status, 2);
    EXPECT_EQ(Schedules().size(), 1);
}

TEST_F(ScheduleCommandsTest, AddRefusesAnUnknownFolder)
{
    RunResult const ran = Schedule({"add"_q, "--folder"_q, "7"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("folder 7"_q)) << ran.err.toStdString();
    EXPECT_EQ(Schedules().size(), 1);
}

TEST_F(ScheduleCommandsTest, AddRefusesASecondScheduleAndNamesTheFirst)
{
    AddSchedule();
    RunResult const ofFolder = Schedule({"add"_q, "--folder"_q, "1"_q});
    EXPECT_EQ(ofFolder.status, 1);
    EXPECT_TRUE(ofFolder.err.contains("schedule update 2"_q)) << ofFolder.err.toStdString();
    RunResult const ofAll = Schedule({"add"_q, "--default"_q});
    EXPECT_EQ(ofAll.status, 1);
    EXPECT_TRUE(ofAll.err.contains("schedule update 1"_q)) << ofAll.err.toStdString();
    EXPECT_EQ(Schedules().size(), 2);
}

TEST_F(ScheduleCommandsTest, MissingDefaultIsAdded)
{
    RunSuccessfully({"schedule"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(RunSuccessfully({"schedule"_q, "add"_q, "--default"_q, "--interval"_q, "5"_q}),
              "added default schedule 2\n"_q);
    EXPECT_EQ(JsonObject({"schedule"_q, "default"_q}).value("syncInterval"_q).toInt(), 5);
}

TEST_F(ScheduleCommandsTest, TimeThatIsNoClockReadingIsWrongUsage)
{
    for (char const* time :
         {"", "soon", "2027-02-30", "2027-01-31T25:00", "2027-01-31T08:30Z", "2027-01-31T08:30+02:00"}) {
        for (char const* option : {"--start", "--expire"}) {
            RunResult const ran =
                Schedule({"add"_q, "--folder"_q, "1"_q, QString::fromUtf8(option), QString::fromUtf8(time)});
            EXPECT_EQ(ran.status, 2) << time;
            EXPECT_TRUE(ran.err.contains("is not a time"_q)) << ran.err.toStdString();
        }
    }
    EXPECT_EQ(Schedules().size(), 1);
}

TEST_F(ScheduleCommandsTest, ScheduleThatEndsBeforeItBeginsIsWrongUsage)
{
    EXPECT_EQ(
        Schedule({"add"_q, "--folder"_q, "1"_q, "--start"_q, "2027-01-02"_q, "--expire"_q, "2027-01-01"_q}).status, 2);
    AddSchedule({"--start"_q, "2027-01-02"_q});
    EXPECT_EQ(Schedule({"update"_q, "2"_q, "--expire"_q, "2027-01-01"_q}).status, 2);
    EXPECT_TRUE(Schedules().last().toObject().value("expireTime"_q).isNull());
}

TEST_F(ScheduleCommandsTest, UpdateChangesOnlyWhatIsGiven)
{
    QJsonObject expected = AddSchedule({"--start"_q, "2027-01-31T08:30"_q, "--type"_q, "3"_q});
    expected.insert("syncInterval"_q, 7);
    EXPECT_EQ(JsonObject({"schedule"_q, "update"_q, "2"_q, "--interval"_q, "7"_q}), expected);
    expected.insert("startTime"_q, QJsonValue());
    EXPECT_EQ(JsonObject({"schedule"_q, "update"_q, "2"_q, "--start"_q, "none"_q}), expected);
    EXPECT_EQ(Schedules().last().toObject(), expected);
}

TEST_F(ScheduleCommandsTest, UpdateMovesAScheduleButNotOntoAnother)
{
    MakeDirectory("docs/a"_q);
    RunSuccessfully({"scan"_q});
    AddSchedule();
    EXPECT_EQ(RunSuccessfully({"schedule"_q, "update"_q, "2"_q, "--folder"_q, "2"_q}),
              "updated schedule 2 of folder 2 '"_q + At("docs/a") + "'\n"_q);
    EXPECT_EQ(Schedule({"update"_q, "2"_q, "--default"_q}).status, 1);
    EXPECT_EQ(Schedules().last().toObject().value("folderConfigurationId"_q).toInt(), 2);
}

TEST_F(ScheduleCommandsTest, RemoveAsksAndNamesTheFolder)
{
    AddSchedule();
    RunResult const refused = Schedule({"remove"_q, "2"_q});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.contains("schedule 2 of folder 1 '"_q + At("docs") + "'"_q)) << refused.err.toStdString();
    EXPECT_EQ(Schedules().size(), 2);
    EXPECT_EQ(RunSuccessfully({"schedule"_q, "remove"_q, "2"_q, "--yes"_q}),
              "removed schedule 2 of folder 1 '"_q + At("docs") + "' from the store\n"_q);
    EXPECT_EQ(Schedules().size(), 1);
}

TEST_F(ScheduleCommandsTest, RemoveOfTheDefaultSaysSo)
{
    EXPECT_TRUE(Schedule({"remove"_q, "1"_q}).err.contains("default schedule 1"_q));
}

TEST_F(ScheduleCommandsTest, ScheduleOutlivesItsFolderAndCanBeRemoved)
{
    AddSchedule();
    RunSuccessfully({"root"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(RunSuccessfully({"schedule"_q, "remove"_q, "2"_q, "--yes"_q}),
              "removed schedule 2 of the missing folder 1 from the store\n"_q);
}

TEST_F(ScheduleCommandsTest, UpdateAndRemoveOfAnUnknownScheduleFindNothing)
{
    for (QStringList const& arguments : {QStringList{"update"_q, "9"_q}, QStringList{"remove"_q, "9"_q, "--yes"_q}}) {
        RunResult const ran = Schedule(arguments);
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(ran.err.contains("schedule 9"_q)) << ran.err.toStdString();
    }
}

TEST_F(ScheduleCommandsTest, AddReportsThatTheStoreRefuses)
{
    RawStore(StorePath())
        .Run("UPDATE sqlite_sequence SET seq = 2147483647 WHERE name = 'Schedules'"_q); // no id is left
    RunResult const ran = Schedule({"add"_q, "--folder"_q, "1"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("CHECK constraint failed"_q)) << ran.err.toStdString();
    EXPECT_EQ(Schedules().size(), 1);
}
