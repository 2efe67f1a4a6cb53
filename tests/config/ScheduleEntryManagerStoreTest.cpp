#include "config/FolderConfigManager.h"
#include "config/ScheduleEntryManager.h"

#include "support/QtPrinters.h"
#include "support/ScheduleRecords.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <QTimeZone>

#include <limits>
#include <memory>

namespace {

using namespace tandry::test;
using sync::config::FolderConfigManager;
using sync::config::FolderConfiguration;
using sync::config::ScheduleEntry;
using sync::config::ScheduleEntryManager;
using sync::config::SyncSchedule;

class SchedulesInAStore : public StoreFixture
{
protected:
    /// A schedule with this id and folder, as a client's store would come to hold it.
    ScheduleEntry Stored(int id, int folderId)
    {
        Raw().Run(
            QStringLiteral("INSERT INTO Schedules (id, folderConfigurationId) VALUES (%1, %2)").arg(id).arg(folderId));
        return Manager().GetScheduleEntryById(id);
    }

    ScheduleEntryManager Manager() { return ScheduleEntryManager(store); }
    RawStore Raw() const { return RawStore(StorePath()); }
};

TEST_F(SchedulesInAStore, NewStoreHoldsADefaultScheduleEvery30)
{
    ScheduleEntry const entry = Manager().GetDefaultScheduleEntry();
    EXPECT_GT(entry.getId(), 0);
    ExpectDefaultSchedule(entry, entry.getId());
}

TEST_F(SchedulesInAStore, EmptyTableYieldsADefaultRecordEvery30)
{
    Raw().Run("DELETE FROM Schedules"_q);
    ExpectDefaultSchedule(Manager().GetDefaultScheduleEntry());
}

TEST_F(SchedulesInAStore, FirstOfSeveralDefaultSchedulesIsTaken)
{
    int const first = Manager().GetDefaultScheduleEntry().getId();
    Stored(first + 10, 0);
    EXPECT_EQ(Manager().GetDefaultScheduleEntry().getId(), first);
}

TEST_F(SchedulesInAStore, AllFieldsComeBackAfterTheStoreWasReopened)
{
    QDateTime const start(QDate(2024, 7, 3), QTime(12, 30, 15, 250), Qt::LocalTime);
    QDateTime const expiry(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::LocalTime);
    ScheduleEntry entry = Stored(7, 4);
    entry.setStartTime(start);
    entry.setExpireTime(expiry);
    entry.setSyncScheduleType(SyncSchedule(-3));
    entry.setSyncInterval(std::numeric_limits<int>::max());
    EXPECT_TRUE(Manager().Update(entry));
    ReopenStore();
    ScheduleEntry const read = Manager().GetScheduleEntryById(7);
    EXPECT_EQ(read.getId(), 7);
    EXPECT_EQ(read.getFolderConfigId(), 4);
    EXPECT_EQ(read.getStartTime(), start);
    EXPECT_EQ(read.getExpireTime(), expiry);
    EXPECT_EQ(read.getSyncScheduleType(), -3);
    EXPECT_EQ(read.getSyncInterval(), std::numeric_limits<int>::max());
}

TEST_F(SchedulesInAStore, TimesOfAnyKindComeBackWithTheSameClockReadingInLocalTime)
{
    QDate const date(2024, 7, 3);
    QTime const time(12, 30, 15, 250);
    QDateTime const times[] = {QDateTime(date, time, Qt::LocalTime),
                               QDateTime(date, time, Qt::UTC),
                               QDateTime(date, time, Qt::OffsetFromUTC, -5 * 3600),
                               QDateTime(date, time, QTimeZone("Asia/Tokyo"))};
    ScheduleEntry entry = Stored(7, 4);
    for (QDateTime const& given : times) {
        entry.setStartTime(given);
        entry.setExpireTime(given);
        EXPECT_TRUE(Manager().Update(entry));
        ScheduleEntry const read = Manager().GetScheduleEntryById(7);
        for (QDateTime const& kept : {read.getStartTime(), read.getExpireTime()}) {
            EXPECT_EQ(kept.date(), date);
            EXPECT_EQ(kept.time(), time);
            EXPECT_EQ(kept.timeSpec(), Qt::LocalTime);
        }
    }
}

TEST_F(SchedulesInAStore, NullTimesAreInvalidAndInvalidTimesAreStoredAsNull)
{
    ScheduleEntry entry = Stored(7, 4);
    EXPECT_FALSE(entry.getStartTime().isValid());
    EXPECT_FALSE(entry.getExpireTime().isValid());
    entry.setStartTime(QDateTime(QDate(2024, 7, 3), QTime(12, 30)));
    EXPECT_TRUE(Manager().Update(entry));
    entry.setStartTime(QDateTime());
    EXPECT_TRUE(Manager().Update(entry));
    EXPECT_FALSE(Raw().Value("SELECT startTime FROM Schedules WHERE id = 7"_q).isValid());
    EXPECT_FALSE(Manager().GetScheduleEntryById(7).getStartTime().isValid());
}

TEST_F(SchedulesInAStore, UpdateOfARecordWithoutARowAnswersTrueAndChangesNothing)
{
    auto const before = Raw().Rows("SELECT * FROM Schedules"_q);
    ScheduleEntry entry;
    entry.setSyncInterval(99);
    EXPECT_TRUE(Manager().Update(entry));
    EXPECT_EQ(Raw().Rows("SELECT * FROM Schedules"_q), before);
}

TEST_F(SchedulesInAStore, UpdateMovesAScheduleToAnotherFolderOrMakesItTheDefault)
{
    EXPECT_TRUE(Manager().Remove(Manager().GetDefaultScheduleEntry().getId()));
    ScheduleEntry entry = Stored(7, 4);
    entry.setFolderConfigId(5);
    EXPECT_TRUE(Manager().Update(entry));
    EXPECT_EQ(Manager().GetScheduleEntryById(7).getFolderConfigId(), 5);
    EXPECT_EQ(Manager().GetDefaultScheduleEntry().getId(), -1);
    entry.setFolderConfigId(0);
    EXPECT_TRUE(Manager().Update(entry));
    EXPECT_EQ(Manager().GetDefaultScheduleEntry().getId(), 7);
}

TEST_F(SchedulesInAStore, RemoveTakesOneRowAndAnswersTrueForAMissingOne)
{
    Stored(7, 4);
    EXPECT_TRUE(Manager().Remove(7));
    EXPECT_EQ(Manager().GetScheduleEntryById(7).getId(), -1);
    EXPECT_EQ(Raw().Count("Schedules"_q), 1);
    for (int const id : {7, -1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_TRUE(Manager().Remove(id));
    EXPECT_EQ(Raw().Count("Schedules"_q), 1);
}

TEST_F(SchedulesInAStore, ScheduleOutlivesItsFolderHoweverThatIsRemoved)
{
    FolderConfigManager folders(store, nullptr);
    FolderConfiguration root;
    root.setParentId(0);
    using Removal = bool (FolderConfigManager::*)(int);
    int scheduleId = 100;
    for (Removal const removal : {Removal(&FolderConfigManager::Remove),
                                  Removal(&FolderConfigManager::RemoveFolderAndChildren),
                                  Removal(&FolderConfigManager::CleanRootFolder)}) {
        root.setRootId(-1);
        ASSERT_TRUE(folders.Add(root));
        Stored(++scheduleId, root.getId());
        EXPECT_TRUE((folders.*removal)(root.getId()));
        EXPECT_EQ(folders.GetFolderConfigurationById(root.getId()).getId(), -1);
        EXPECT_EQ(Manager().GetScheduleEntryById(scheduleId).getFolderConfigId(), root.getId());
        EXPECT_TRUE(Manager().Remove(scheduleId));
        EXPECT_EQ(Manager().GetScheduleEntryById(scheduleId).getId(), -1);
    }
}

TEST_F(SchedulesInAStore, FailingStoreShowsInTheAnswersAndInTheStoresError)
{
    ScheduleEntry const entry = Stored(7, 4);
    Raw().Run("ALTER TABLE Schedules RENAME TO Elsewhere"_q);
    EXPECT_EQ(Manager().GetDefaultScheduleEntry().getId(), -1);
    EXPECT_EQ(Manager().GetDefaultScheduleEntry().getSyncInterval(), 30);
    EXPECT_EQ(Manager().GetScheduleEntryById(7).getId(), -1);
    EXPECT_FALSE(Manager().Update(entry));
    EXPECT_FALSE(Manager().Remove(7));
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

} // namespace
