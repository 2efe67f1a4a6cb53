#include "config/ScheduleEntry.h"

#include "support/ScheduleRecords.h"

#include <gtest/gtest.h>

#include <QMetaProperty>

namespace {

using sync::config::ScheduleEntry;
using sync::config::SyncSchedule;

QDateTime LocalTime()
{
    return QDateTime(QDate(2024, 7, 3), QTime(12, 30, 15, 250), Qt::LocalTime);
}

TEST(ScheduleEntry, DefaultRecordIsTheDefaultScheduleEvery30)
{
    tandry::test::ExpectDefaultSchedule(ScheduleEntry());
}

TEST(ScheduleEntry, CopyAndAssignmentCarryAllMembersAndNothingOfTheObject)
{
    ScheduleEntry source;
    source.setObjectName(QStringLiteral("source"));
    source.setFolderConfigId(7);
    source.setStartTime(LocalTime());
    source.setExpireTime(LocalTime().addDays(1));
    source.setSyncScheduleType(SyncSchedule(3));
    source.setSyncInterval(45);

    ScheduleEntry const copy(source);
    ScheduleEntry assigned;
    assigned.setObjectName(QStringLiteral("assigned"));
    assigned = source;

    for (ScheduleEntry const* entry : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(entry->getFolderConfigId(), 7);
        EXPECT_EQ(entry->getStartTime(), LocalTime());
        EXPECT_EQ(entry->getExpireTime(), LocalTime().addDays(1));
        EXPECT_EQ(entry->getSyncScheduleType(), 3);
        EXPECT_EQ(entry->getSyncInterval(), 45);
        EXPECT_EQ(entry->parent(), nullptr);
    }
    EXPECT_TRUE(copy.objectName().isEmpty());
    EXPECT_EQ(assigned.objectName(), QStringLiteral("assigned"));
}

TEST(ScheduleEntry, PropertiesAreReadAndWrittenByName)
{
    ScheduleEntry entry;
    EXPECT_FALSE(entry.setProperty("Id", 5));
    EXPECT_EQ(entry.property("Id").toInt(), -1);

    EXPECT_TRUE(entry.setProperty("StartTime", LocalTime()));
    EXPECT_TRUE(entry.setProperty("ExpireTime", LocalTime().addDays(1)));
    EXPECT_TRUE(entry.setProperty("FolderConfigId", 7));
    EXPECT_TRUE(entry.setProperty("SyncScheduleType", 3));
    EXPECT_TRUE(entry.setProperty("SyncInterval", 45));

    EXPECT_EQ(entry.property("StartTime").toDateTime(), LocalTime());
    EXPECT_EQ(entry.property("ExpireTime").toDateTime(), LocalTime().addDays(1));
    EXPECT_EQ(entry.property("FolderConfigId").toInt(), 7);
    EXPECT_EQ(entry.property("SyncScheduleType").toInt(), 3);
    EXPECT_EQ(entry.property("SyncInterval").toInt(), 45);
    EXPECT_EQ(entry.getSyncScheduleType(), 3);
    EXPECT_EQ(entry.getSyncInterval(), 45);
}

} // namespace
