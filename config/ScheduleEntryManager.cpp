#include "config/ScheduleEntryManager.h"

#include "config/ScheduleEntryStatements.h"
#include "config/StoreOperations.h"

#include <utility>

namespace sync::config {

namespace sql = schedules_sql;

ScheduleEntryManager::ScheduleEntryManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ScheduleEntryManager::~ScheduleEntryManager() = default;

template <class Bind>
ScheduleEntry ScheduleEntryManager::_FindOne(QString const& statement, Bind const& bind)
{
    return store::FindOne<ScheduleEntry>(
        *_databaseFactory, statement, bind, [this](auto* query, auto& entry) { _PopulateScheduleEntry(query, entry); });
}

ScheduleEntry ScheduleEntryManager::GetScheduleEntryById(int scheduleEntryId)
{
    return _FindOne(sql::GetById, store::Values(bind::id(scheduleEntryId)));
}

ScheduleEntry ScheduleEntryManager::GetDefaultScheduleEntry()
{
    return _FindOne(sql::GetDefault, store::Values());
}

bool ScheduleEntryManager::Update(ScheduleEntry const& scheduleEntry)
{
    return store::Write(*_databaseFactory,
                        sql::Update,
                        store::Values(bind::id(scheduleEntry.id),
                                      bind::folderConfigurationId(scheduleEntry.folderConfigId),
                                      bind::startTime(scheduleEntry.startTime),
                                      bind::expireTime(scheduleEntry.expireTime),
                                      bind::syncScheduleType(scheduleEntry.syncScheduleType),
                                      bind::syncInterval(scheduleEntry.syncInterval)));
}

bool ScheduleEntryManager::Remove(int scheduleEntryId)
{
    return store::Write(*_databaseFactory, sql::Remove, store::Values(bind::id(scheduleEntryId)));
}

void ScheduleEntryManager::_PopulateScheduleEntry(sync::interf::IQSqlQueryWrapper* query, ScheduleEntry& scheduleEntry)
{
    if (!query->isValid())
        return;
    scheduleEntry.id = store::Int(query->value(0));
    scheduleEntry.folderConfigId = store::Int(query->value(1));
    // Schedules keep wall-clock times, where folders and files keep UTC.
    scheduleEntry.startTime = query->value(2).toDateTime();
    scheduleEntry.startTime.setTimeSpec(Qt::LocalTime);
    scheduleEntry.expireTime = query->value(3).toDateTime();
    scheduleEntry.expireTime.setTimeSpec(Qt::LocalTime);
    scheduleEntry.syncScheduleType = static_cast<SyncSchedule>(store::Int(query->value(4)));
    scheduleEntry.syncInterval = store::Int(query->value(5));
}

void ScheduleEntryManager::_PopulateScheduleEntries(sync::interf::IQSqlQueryWrapper* query,
                                                    QVector<ScheduleEntry>& scheduleEntries)
{
    store::AppendRows(query, scheduleEntries, [this](auto* row, auto& entry) { _PopulateScheduleEntry(row, entry); });
}

} // namespace sync::config
