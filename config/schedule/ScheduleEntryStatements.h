#pragma once

#include <QString>

/// The statements on `Schedules`; even their spaces are fixed.
namespace sync::config::schedules_sql {

const QString Select =
    QStringLiteral("SELECT id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval");

const QString GetDefault = Select + QStringLiteral(" FROM Schedules WHERE folderConfigurationId = 0");
const QString GetById = Select + QStringLiteral(" FROM Schedules WHERE id = :id");

const QString Update =
    QStringLiteral("UPDATE Schedules SET folderConfigurationId = :folderConfigurationId, startTime = :startTime, "
                   "expireTime = :expireTime, syncScheduleType = :syncScheduleType, syncInterval = :syncInterval  "
                   "WHERE id = :id");
const QString Remove = QStringLiteral("DELETE FROM Schedules WHERE Id = :id;");

} // namespace sync::config::schedules_sql
