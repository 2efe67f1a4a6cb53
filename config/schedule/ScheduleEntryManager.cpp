#include "config/ScheduleEntryManager.h"

#include "config/schedule/ScheduleEntryColumns.h"
#include "config/schedule/ScheduleEntryStatements.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"

#include <utility>

namespace sync::config {

ScheduleEntryManager::ScheduleEntryManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ScheduleEntryManager::~ScheduleEntryManager() = default;

auto ScheduleEntryManager::_Rows()
{
    return store::Rows<&ScheduleEntryManager::_PopulateScheduleEntry, &ScheduleEntryManager::_PopulateScheduleEntries>(
        *_databaseFactory, *this);
}

ScheduleEntry ScheduleEntryManager::GetScheduleEntryById(int scheduleEntryId)
{
    return _Rows().First(schedules_sql::GetById, bind::id(scheduleEntryId));
}

ScheduleEntry ScheduleEntryManager::GetDefaultScheduleEntry()
{
    return _Rows().First(schedules_sql::GetDefault);
}

bool ScheduleEntryManager::Update(ScheduleEntry const& scheduleEntry)
{
    return store::Write(
        *_databaseFactory, schedules_sql::Update, store::ColumnsForUpdate(scheduleEntry, store::Documents(*this)));
}

bool ScheduleEntryManager::Remove(int scheduleEntryId)
{
    return store::Write(*_databaseFactory, schedules_sql::Remove, store::Values(bind::id(scheduleEntryId)));
}

void ScheduleEntryManager::_PopulateScheduleEntry(sync::interf::IQSqlQueryWrapper* query, ScheduleEntry& scheduleEntry)
{
    store::Populate(*query, scheduleEntry, store::Documents(*this));
}

void ScheduleEntryManager::_PopulateScheduleEntries(sync::interf::IQSqlQueryWrapper* query,
                                                    QVector<ScheduleEntry>& scheduleEntries)
{
    store::AppendRows(*query, scheduleEntries, [&](auto& record) { _PopulateScheduleEntry(query, record); });
}

} // namespace sync::config
