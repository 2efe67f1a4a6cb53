#pragma once

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"

#include <QObject>

namespace sync::qml {

/// The names of the values that columns have, as in C++: `Tandry.FolderStatusOutOfSync`.
class Enumerations
{
    Q_GADGET

public:
    enum FolderSynchronizationStatus
    {
        FolderStatusInitial = sync::config::FolderStatusInitial,
        FolderStatusOutOfSync = sync::config::FolderStatusOutOfSync,
        FolderStatusPlaced = sync::config::FolderStatusPlaced,
    };
    Q_ENUM(FolderSynchronizationStatus)

    enum SynchronizationFolderOption
    {
        FolderOptionTopFilesOnly = sync::config::FolderOptionTopFilesOnly,
    };
    Q_ENUM(SynchronizationFolderOption)

    enum FolderPrivileges
    {
        FolderPrivilegeView = sync::config::FolderPrivilegeView,
        FolderPrivilegeDownload = sync::config::FolderPrivilegeDownload,
        FolderPrivilegeUpdate = sync::config::FolderPrivilegeUpdate,
        FolderPrivilegeDelete = sync::config::FolderPrivilegeDelete,
        FolderPrivilegeShare = sync::config::FolderPrivilegeShare,
    };
    Q_ENUM(FolderPrivileges)

    enum FileConfigurationType
    {
        FileConfigurationTypeFile = sync::config::FileConfigurationTypeFile,
        FileConfigurationTypeGenerated = sync::config::FileConfigurationTypeGenerated,
        FileConfigurationTypeBase = sync::config::FileConfigurationTypeBase,
    };
    Q_ENUM(FileConfigurationType)

    enum FileSynchronizationStatus
    {
        FileSyncStatusSyncing = sync::config::FileSyncStatusSyncing,
        FileSyncStatusNotSynced = sync::config::FileSyncStatusNotSynced,
        FileSyncStatusLinkDiscovered = sync::config::FileSyncStatusLinkDiscovered,
    };
    Q_ENUM(FileSynchronizationStatus)

    enum FileSyncOption
    {
        FileSyncOptionNone = sync::config::FileSyncOptionNone,
        FileSyncOptionRepathRequired = sync::config::FileSyncOptionRepathRequired,
    };
    Q_ENUM(FileSyncOption)
};

} // namespace sync::qml
