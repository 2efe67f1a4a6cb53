#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>

namespace sync::config {
class ScheduleEntry;
}

namespace sync::interf {

/// Reads, changes and removes schedules. Rows come into being with the store; the default schedule is one of them.
class TANDRY_INTERFACES_EXPORT IScheduleEntryManager : public QObject
{
    Q_OBJECT

public:
    IScheduleEntryManager();
    ~IScheduleEntryManager() override;

    /// The schedule with this id, or a default record (`id` -1) when there is none or the store fails.
    virtual sync::config::ScheduleEntry GetScheduleEntryById(int scheduleEntryId) = 0;

    /// The schedule of no folder in particular, or a default record (`id` -1, every 30) when the store holds none or
    /// fails.
    virtual sync::config::ScheduleEntry GetDefaultScheduleEntry() = 0;

    /// Writes all columns of the record's row. False when the store fails; a missing row is no failure.
    virtual bool Update(sync::config::ScheduleEntry const& scheduleEntry) = 0;

    /// Removes one row. False when the store fails; a missing row is no failure.
    virtual bool Remove(int scheduleEntryId) = 0;
};

} // namespace sync::interf
