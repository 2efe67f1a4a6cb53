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

    enum FolderSyncOption
    {
        FolderSyncOptionNone = sync::config::FolderSyncOptionNone,
    };
    Q_ENUM(FolderSyncOption)

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

    enum FileSynchronizationSubStatus
    {
        FileSyncSubStatusNone = sync::config::FileSyncSubStatusNone,
    };
    Q_ENUM(FileSynchronizationSubStatus)

    enum FileSyncOption
    {
        FileSyncOptionNone = sync::config::FileSyncOptionNone,
        FileSyncOptionRepathRequired = sync::config::FileSyncOptionRepathRequired,
    };
    Q_ENUM(FileSyncOption)

    enum FilePrivileges
    {
        FilePrivilegeView = sync::config::FilePrivilegeView,
        FilePrivilegeDownload = sync::config::FilePrivilegeDownload,
        FilePrivilegeUpdate = sync::config::FilePrivilegeUpdate,
        FilePrivilegeDelete = sync::config::FilePrivilegeDelete,
        FilePrivilegeShare = sync::config::FilePrivilegeShare,
    };
    Q_ENUM(FilePrivileges)
};

} // namespace sync::qml
