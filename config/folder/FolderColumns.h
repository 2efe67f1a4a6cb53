#pragma once

#include "config/FolderConfiguration.h"
#include "config/columns/Column.h"

#include <tuple>

namespace sync::config {

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
                        column::Status<&Record::syncStatus, &Record::syncStatusChanged>("syncStatus"),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties"),
                        column::Integer<&Record::parentId>("parentId"),
                        column::UtcTime<&Record::lastOperationTime>("lastOperationTime"),
                        column::UtcTime<&Record::lastSyncTime>("lastSyncTime"),
                        column::Enumeration<&Record::folderOption>("folderOption"),
                        column::Enumeration<&Record::lastOperationType>("lastOperationType"),
                        column::Enumeration<&Record::syncDriveType>("syncDriveType"),
                        column::Integer<&Record::rootId>("rootId"),
                        column::Enumeration<&Record::syncOption>("syncOption"),
                        column::Text<&Record::ownerId>("ownerId"),
                        column::BitField<&Record::privileges>("privileges"),
                        column::Text<&Record::serverRoot>("serverRoot"),
                        column::Integer<&Record::productConfigurationId>("productConfigurationId"),
                        column::Text<&Record::serverFolderId>("serverFolderId"));
};

} // namespace sync::config
