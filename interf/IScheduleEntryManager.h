#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>

namespace sync::config {
class ScheduleEntry;
}

namespace sync::interf {

/// Reads, changes and removes schedules. No operation inserts one: a new store holds the default schedule.
///
/// Records are copies that belong to the caller. A lookup returns the default record (`id` -1, interval 30) both if
/// nothing matches and if the store fails; the store's factory tells which. Operations run on the caller's thread;
/// several threads may share a manager if the store allows it. Each operation runs one statement; a write is a
/// `sync::database::TransactionalScope` of its own.
class TANDRY_INTERFACES_EXPORT IScheduleEntryManager : public QObject
{
    Q_OBJECT

public:
    IScheduleEntryManager();
    ~IScheduleEntryManager() override;

    /// Returns the schedule with this id.
    virtual sync::config::ScheduleEntry GetScheduleEntryById(int scheduleEntryId) = 0;

    /// Returns the default schedule: the first whose folder id is 0.
    virtual sync::config::ScheduleEntry GetDefaultScheduleEntry() = 0;

    /// Writes all columns of the record's row. Returns false if the store fails, and true if there is no such row.
    virtual bool Update(sync::config::ScheduleEntry const& scheduleEntry) = 0;

    /// Removes one row. Returns false if the store fails, and true if there is no such row. No operation inserts the
    /// default schedule again.
    virtual bool Remove(int scheduleEntryId) = 0;
};

} // namespace sync::interf
