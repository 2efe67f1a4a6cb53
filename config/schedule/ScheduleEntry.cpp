#include "config/ScheduleEntry.h"

#include "config/columns/ColumnList.h"
#include "config/schedule/ScheduleEntryColumns.h"

#include <utility>

namespace sync::config {

ScheduleEntry::ScheduleEntry() = default;

ScheduleEntry::ScheduleEntry(ScheduleEntry const& other)
    : QObject()
{
    _CopyMembers(other);
}

ScheduleEntry& ScheduleEntry::operator=(ScheduleEntry const& other)
{
    _CopyMembers(other);
    return *this;
}

ScheduleEntry::~ScheduleEntry() = default;

void ScheduleEntry::_CopyMembers(ScheduleEntry const& other)
{
    column::CopyAll(*this, other);
}

int ScheduleEntry::getId() const
{
    return id;
}

int ScheduleEntry::getFolderConfigId() const
{
    return folderConfigId;
}

QDateTime ScheduleEntry::getStartTime() const
{
    return startTime;
}

QDateTime ScheduleEntry::getExpireTime() const
{
    return expireTime;
}

SyncSchedule ScheduleEntry::getSyncScheduleType() const
{
    return syncScheduleType;
}

int ScheduleEntry::getSyncInterval() const
{
    return syncInterval;
}

void ScheduleEntry::setFolderConfigId(int value)
{
    folderConfigId = value;
}

void ScheduleEntry::setStartTime(QDateTime value)
{
    startTime = std::move(value);
}

void ScheduleEntry::setExpireTime(QDateTime value)
{
    expireTime = std::move(value);
}

void ScheduleEntry::setSyncScheduleType(SyncSchedule value)
{
    syncScheduleType = value;
}

void ScheduleEntry::setSyncInterval(int value)
{
    syncInterval = value;
}

} // namespace sync::config
