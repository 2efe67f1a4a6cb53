#include "config/ScheduleEntryManager.h"

#include "support/Conversation.h"
#include "support/ScheduleRecords.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace schedule_entry_manager_test {
namespace {

using namespace tandry::test;
using sync::config::ScheduleEntry;
using sync::config::ScheduleEntryManager;
using sync::config::SyncSchedule;

template <class Result, class... Arguments>
using Operation = Result (ScheduleEntryManager::*)(Arguments...);
static_assert(std::is_same_v<decltype(&ScheduleEntryManager::GetScheduleEntryById), Operation<ScheduleEntry, int>>);
static_assert(std::is_same_v<decltype(&ScheduleEntryManager::GetDefaultScheduleEntry), Operation<ScheduleEntry>>);
// The one Update that takes its record by reference.
static_assert(std::is_same_v<decltype(&ScheduleEntryManager::Update), Operation<bool, ScheduleEntry const&>>);
static_assert(std::is_same_v<decltype(&ScheduleEntryManager::Remove), Operation<bool, int>>);

char const* const SelectDefault =
    "SELECT id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval FROM Schedules "
    "WHERE folderConfigurationId = 0";
char const* const SelectById =
    "SELECT id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval FROM Schedules "
    "WHERE id = :id";
char const* const UpdateRow =
    "UPDATE Schedules SET folderConfigurationId = :folderConfigurationId, startTime = :startTime, "
    "expireTime = :expireTime, syncScheduleType = :syncScheduleType, syncInterval = :syncInterval  WHERE id = :id";
char const* const DeleteRow = "DELETE FROM Schedules WHERE Id = :id;";

class ScheduleEntryManagerConversation : public testing::Test
{
protected:
    static QDateTime Start(Qt::TimeSpec kind) { return QDateTime(QDate(2024, 7, 3), QTime(12, 30, 15, 250), kind); }
    static QDateTime Expiry(Qt::TimeSpec kind) { return QDateTime(QDate(2031, 1, 2), QTime(3, 4, 5), kind); }

    static Row StoredRow() { return {7, 4, Start(Qt::UTC), Expiry(Qt::UTC), 3, 45}; }

    static void ExpectStoredRow(ScheduleEntry const& entry)
    {
        EXPECT_EQ(entry.getId(), 7);
        EXPECT_EQ(entry.getFolderConfigId(), 4);
        EXPECT_EQ(entry.getStartTime(), Start(Qt::LocalTime));
        EXPECT_EQ(entry.getStartTime().timeSpec(), Qt::LocalTime);
        EXPECT_EQ(entry.getExpireTime(), Expiry(Qt::LocalTime));
        EXPECT_EQ(entry.getExpireTime().timeSpec(), Qt::LocalTime);
        EXPECT_EQ(entry.getSyncScheduleType(), 3);
        EXPECT_EQ(entry.getSyncInterval(), 45);
    }

    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    ScheduleEntryManager manager{store};
};

TEST_F(ScheduleEntryManagerConversation, ConstructionAndDestructionTouchNoStore)
{
    {
        ScheduleEntryManager const other(store);
        EXPECT_EQ(store.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(ScheduleEntryManagerConversation, GetScheduleEntryByIdReadsOneRowInLocalTime)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetScheduleEntryById(7));
    ExpectConversation(*store, {Read(SelectById, {{":id", 7}})});
}

TEST_F(ScheduleEntryManagerConversation, GetDefaultScheduleEntryBindsNothingAndTakesTheFirstRow)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetDefaultScheduleEntry());
    ExpectConversation(*store, {Read(SelectDefault)});
}

TEST_F(ScheduleEntryManagerConversation, LookupsWithoutARowAnswerWithADefaultScheduleEvery30)
{
    ExpectDefaultSchedule(manager.GetDefaultScheduleEntry());
    ExpectDefaultSchedule(manager.GetScheduleEntryById(7));
}

TEST_F(ScheduleEntryManagerConversation, LookupsOnAFailingStoreAnswerWithADefaultScheduleEvery30)
{
    store->FailAll();
    ExpectDefaultSchedule(manager.GetDefaultScheduleEntry());
    ExpectDefaultSchedule(manager.GetScheduleEntryById(7));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(ScheduleEntryManagerConversation, TimesOfAnyKindKeepTheirClockReadingAndBecomeLocal)
{
    QDateTime const zoned(QDate(2024, 7, 3), QTime(12, 30, 15, 250), Qt::OffsetFromUTC, 5 * 3600);
    for (QDateTime const& time : {Start(Qt::UTC), Start(Qt::LocalTime), zoned}) {
        store->PlayRows({{7, 4, time, time, 3, 45}});
        ScheduleEntry const entry = manager.GetScheduleEntryById(7);
        EXPECT_EQ(entry.getStartTime(), Start(Qt::LocalTime));
        EXPECT_EQ(entry.getStartTime().timeSpec(), Qt::LocalTime);
        EXPECT_EQ(entry.getExpireTime(), Start(Qt::LocalTime));
        EXPECT_EQ(entry.getExpireTime().timeSpec(), Qt::LocalTime);
    }
}

TEST_F(ScheduleEntryManagerConversation, NullColumnsReadAsZeroAndInvalidTimes)
{
    store->PlayRows({Row(6)});
    ExpectDefaultSchedule(manager.GetScheduleEntryById(7), 0, 0);
}

TEST_F(ScheduleEntryManagerConversation, UpdateBindsTheIdFirstAndTheTimesAsTheyStand)
{
    store->PlayRows({StoredRow()});
    ScheduleEntry entry = manager.GetScheduleEntryById(7);
    store->Forget();
    entry.setFolderConfigId(-5);
    entry.setStartTime(Start(Qt::UTC));
    entry.setExpireTime(QDateTime());
    entry.setSyncScheduleType(SyncSchedule(99));
    entry.setSyncInterval(std::numeric_limits<int>::max());
    EXPECT_TRUE(manager.Update(entry));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", 7},
                                 {":folderConfigurationId", -5},
                                 {":startTime", Start(Qt::UTC)},
                                 {":expireTime", QDateTime()},
                                 {":syncScheduleType", 99},
                                 {":syncInterval", std::numeric_limits<int>::max()}})});
}

TEST_F(ScheduleEntryManagerConversation, UpdateOfANewRecordBindsIdMinusOneAndAnswersTrue)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(manager.Update(ScheduleEntry()));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", -1},
                                 {":folderConfigurationId", 0},
                                 {":startTime", QDateTime()},
                                 {":expireTime", QDateTime()},
                                 {":syncScheduleType", 0},
                                 {":syncInterval", 30}})});
}

TEST_F(ScheduleEntryManagerConversation, RemoveDeletesOneRow)
{
    EXPECT_TRUE(manager.Remove(7));
    ExpectConversation(*store, {Written(DeleteRow, {{":id", 7}})});
}

TEST_F(ScheduleEntryManagerConversation, WritesOnAFailingStoreAnswerFalse)
{
    store->FailAll();
    EXPECT_FALSE(manager.Update(ScheduleEntry()));
    EXPECT_FALSE(manager.Remove(7));
    EXPECT_EQ(store->Executions().size(), 2U);
}

} // namespace
} // namespace schedule_entry_manager_test
