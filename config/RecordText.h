#pragma once

#include "TandryConfigurationExport.h"

#include <QDebug>
#include <QString>

#include <type_traits>

namespace sync::config {

class AuthenticationConfiguration;
class FileConfiguration;
class FileLink;
class FolderConfiguration;
class ProductConfiguration;
class ScheduleEntry;
class ServerConfiguration;

/// Returns a record as a text for logs: its kind, and the columns with their values, numbers with their names, such as
/// `FolderConfiguration(id=1, …, syncStatus=2 (out of sync), …)`. For people: the form may change in any version.
///
/// Secret columns, and in URLs passwords, users without a password and queries, are replaced by `***`. Of name-value
/// properties the text has the keys only.
template <class Record>
QString RecordText(Record const& record);

template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(AuthenticationConfiguration const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(FileConfiguration const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(FileLink const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(FolderConfiguration const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(ProductConfiguration const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(ScheduleEntry const& record);
template <>
TANDRY_CONFIGURATION_EXPORT QString RecordText(ServerConfiguration const& record);

/// Whether a type is one of those that have a `RecordText`.
template <class Type>
inline constexpr bool hasRecordText =
    std::is_same_v<Type, AuthenticationConfiguration> || std::is_same_v<Type, FileConfiguration> ||
    std::is_same_v<Type, FileLink> || std::is_same_v<Type, FolderConfiguration> ||
    std::is_same_v<Type, ProductConfiguration> || std::is_same_v<Type, ScheduleEntry> ||
    std::is_same_v<Type, ServerConfiguration>;

/// Writes the `RecordText` of a record. An operator of a client's own for the type has precedence, since this one is a
/// template.
template <class Record>
std::enable_if_t<hasRecordText<Record>, QDebug> operator<<(QDebug debug, Record const& record)
{
    QDebugStateSaver const saver(debug);
    debug.nospace().noquote() << RecordText(record);
    return debug;
}

} // namespace sync::config
