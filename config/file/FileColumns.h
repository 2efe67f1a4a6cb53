#pragma once

#include "config/FileConfiguration.h"
#include "config/PrivilegeWords.h"
#include "config/columns/Column.h"

#include <QtGlobal>

#include <tuple>

namespace sync::config {

inline constexpr NamedValue FileStatuses[] = {
    {FileSyncStatusSyncing, QT_TRANSLATE_NOOP("sync::config::ValueNames", "syncing")},
    {FileSyncStatusNotSynced, QT_TRANSLATE_NOOP("sync::config::ValueNames", "not synced")},
    {FileSyncStatusLinkDiscovered, QT_TRANSLATE_NOOP("sync::config::ValueNames", "link discovered")},
};

inline constexpr NamedValue FileOptions[] = {
    {FileSyncOptionNone, QT_TRANSLATE_NOOP("sync::config::ValueNames", "none")},
    {FileSyncOptionRepathRequired, QT_TRANSLATE_NOOP("sync::config::ValueNames", "repath required")},
};

inline constexpr NamedValue FileTypes[] = {
    {FileConfigurationTypeFile, QT_TRANSLATE_NOOP("sync::config::ValueNames", "file")},
    {FileConfigurationTypeGenerated, QT_TRANSLATE_NOOP("sync::config::ValueNames", "generated")},
    {FileConfigurationTypeBase, QT_TRANSLATE_NOOP("sync::config::ValueNames", "base")},
};

/// The columns of the three tables of files.
template <>
struct TableColumns<FileConfiguration>
{
    using Record = FileConfiguration;

    static constexpr auto list =
        std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                        column::Integer<&Record::folderConfigurationId>("folderConfigurationId"),
                        column::Text<&Record::name>("name"),
                        column::Text<&Record::clientPath>("clientPath"),
                        column::Text<&Record::serverPath>("serverPath"),
                        column::Text<&Record::checkSum>("checkSum"),
                        column::UtcTime<&Record::createdDateTime>("createdDateTime"),
                        column::UtcTime<&Record::lastModifiedDateTime>("lastModifiedDateTime"),
                        column::Status<&Record::syncStatus, &Record::syncStatusChanged>("syncStatus", FileStatuses),
                        column::Integer<&Record::lastOperationType>("lastOperationType"),
                        column::LongInteger<&Record::size>("size"),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties"),
                        column::UtcTime<&Record::lastOperationTime>("lastOperationTime"),
                        column::Integer<&Record::rootFolderId>("rootFolderId"),
                        column::BitField<&Record::syncOption>("syncOption", FileOptions),
                        column::Integer<&Record::parentFileId>("parentFileId"),
                        column::Enumeration<&Record::fileType>("fileType", FileTypes),
                        column::Text<&Record::ownerId>("ownerId"),
                        column::BitField<&Record::privileges>("privileges", PrivilegeNames),
                        column::Integer<&Record::productConfigurationId>("productConfigurationId"),
                        column::Text<&Record::serverFileId>("serverFileId"),
                        column::Text<&Record::serverFileVersionId>("serverFileVersionId"),
                        column::Text<&Record::checkSumMD5>("checkSumMD5"),
                        column::Links<&Record::fileLinks, &Record::fileDate>("fileLinks"));
};

} // namespace sync::config
