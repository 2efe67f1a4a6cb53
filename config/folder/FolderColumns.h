#pragma once

#include "config/FolderConfiguration.h"
#include "config/PrivilegeWords.h"
#include "config/columns/Column.h"

#include <QtGlobal>

#include <tuple>

namespace sync::config {

inline constexpr NamedValue FolderStatuses[] = {
    {FolderStatusInitial, QT_TRANSLATE_NOOP("sync::config::ValueNames", "initial")},
    {FolderStatusOutOfSync, QT_TRANSLATE_NOOP("sync::config::ValueNames", "out of sync")},
    {FolderStatusPlaced, QT_TRANSLATE_NOOP("sync::config::ValueNames", "placed")},
};

inline constexpr NamedValue FolderOptions[] = {
    {FolderOptionTopFilesOnly, QT_TRANSLATE_NOOP("sync::config::ValueNames", "top files only")},
};

/// The columns of `FolderConfiguration`.
template <>
struct TableColumns<FolderConfiguration>
{
    using Record = FolderConfiguration;

    static constexpr auto list =
        std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                        column::Integer<&Record::authenticationId>("authenticationId"),
                        column::Text<&Record::name>("name"),
                        column::Text<&Record::remoteShortKey>("remoteShortKey"),
                        column::Text<&Record::remoteLongKey>("remoteLongKey"),
                        column::Text<&Record::clientPath>("clientPath"),
                        column::Text<&Record::serverPath>("serverPath"),
                        column::Status<&Record::syncStatus, &Record::syncStatusChanged>("syncStatus", FolderStatuses),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties"),
                        column::Integer<&Record::parentId>("parentId"),
                        column::UtcTime<&Record::lastOperationTime>("lastOperationTime"),
                        column::UtcTime<&Record::lastSyncTime>("lastSyncTime"),
                        column::Enumeration<&Record::folderOption>("folderOption", FolderOptions),
                        column::Enumeration<&Record::lastOperationType>("lastOperationType"),
                        column::Enumeration<&Record::syncDriveType>("syncDriveType"),
                        column::Integer<&Record::rootId>("rootId"),
                        column::Enumeration<&Record::syncOption>("syncOption"),
                        column::Text<&Record::ownerId>("ownerId"),
                        column::BitField<&Record::privileges>("privileges", PrivilegeNames),
                        column::Text<&Record::serverRoot>("serverRoot"),
                        column::Integer<&Record::productConfigurationId>("productConfigurationId"),
                        column::Text<&Record::serverFolderId>("serverFolderId"));
};

} // namespace sync::config
