#pragma once

#include "../interf/IScheduleEntryManager.h"
#include "DatabaseConfigurationManager.h"
#include "ScheduleEntry.h"
#include "TandryConfigurationExport.h"

#include <QVector>

#include <memory>

namespace sync::interf {
class IQSqlQueryWrapper;
}

namespace sync::config {

/// The schedules of a store. The interface documents what each operation returns on failure.
class TANDRY_CONFIGURATION_EXPORT ScheduleEntryManager : public sync::interf::IScheduleEntryManager,
                                                         public DatabaseConfigurationManager
{
    Q_OBJECT

public:
    /// Keeps a share of the factory, which must not be null, and makes no call on it.
    explicit ScheduleEntryManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    ~ScheduleEntryManager() override;

    Q_INVOKABLE sync::config::ScheduleEntry GetScheduleEntryById(int scheduleEntryId) override;
    Q_INVOKABLE sync::config::ScheduleEntry GetDefaultScheduleEntry() override;
    Q_INVOKABLE bool Update(sync::config::ScheduleEntry const& scheduleEntry) override;
    Q_INVOKABLE bool Remove(int scheduleEntryId) override;

private:
    auto _Rows();

    void _PopulateScheduleEntry(sync::interf::IQSqlQueryWrapper* query, ScheduleEntry& scheduleEntry);
    void _PopulateScheduleEntries(sync::interf::IQSqlQueryWrapper* query, QVector<ScheduleEntry>& scheduleEntries);
};

} // namespace sync::config
