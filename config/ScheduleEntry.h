#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QDateTime>
#include <QMetaType>
#include <QObject>

namespace sync::config {

/// Kind of schedule; the client defines the meaning of the values.
enum SyncSchedule : int
{
};

/// When and how often a folder is synchronised: one row of the table `Schedules`.
///
/// A value: a copy has all members, but no state of the QObject.
class TANDRY_CONFIGURATION_EXPORT ScheduleEntry : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Id READ getId)
    Q_PROPERTY(QDateTime StartTime READ getStartTime WRITE setStartTime)
    Q_PROPERTY(QDateTime ExpireTime READ getExpireTime WRITE setExpireTime)
    Q_PROPERTY(int FolderConfigId READ getFolderConfigId WRITE setFolderConfigId)
    Q_PROPERTY(SyncSchedule SyncScheduleType READ getSyncScheduleType WRITE setSyncScheduleType)
    Q_PROPERTY(int SyncInterval READ getSyncInterval WRITE setSyncInterval)

public:
    ScheduleEntry();
    ScheduleEntry(ScheduleEntry const& other);
    ScheduleEntry& operator=(ScheduleEntry const& other);
    ~ScheduleEntry() override;

    /// The row's id; -1 for a record without a row. Only the manager sets it.
    int getId() const;
    /// The id of the schedule's folder; 0 marks the default schedule.
    int getFolderConfigId() const;
    /// Wall-clock time; invalid if the schedule has no start.
    QDateTime getStartTime() const;
    /// Wall-clock time; invalid if the schedule has no end.
    QDateTime getExpireTime() const;
    /// In the client's own terms.
    SyncSchedule getSyncScheduleType() const;
    /// In a unit that the client defines.
    int getSyncInterval() const;

    void setFolderConfigId(int value);
    void setStartTime(QDateTime value);
    void setExpireTime(QDateTime value);
    void setSyncScheduleType(SyncSchedule value);
    void setSyncInterval(int value);

private:
    friend class ScheduleEntryManager;
    template <class Record>
    friend struct TableColumns;

    void _CopyMembers(ScheduleEntry const& other);

    int id = -1;
    int folderConfigId = 0;
    QDateTime startTime;
    QDateTime expireTime;
    SyncSchedule syncScheduleType = SyncSchedule(0);
    int syncInterval = 30;
};

} // namespace sync::config

TANDRY_DECLARE_METATYPE(sync::config::ScheduleEntry)
Q_DECLARE_METATYPE(sync::config::SyncSchedule)
#ifdef Q_MOC_RUN
Q_DECLARE_METATYPE(SyncSchedule) // as spelled in the property, so that reading it by name registers the type
#endif
