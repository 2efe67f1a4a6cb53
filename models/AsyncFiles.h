#pragma once

#include "../config/FileConfiguration.h"
#include "../config/FileLink.h"
#include "../interf/FileConfigOrderByEnum.h"
#include "Answer.h"
#include "TandryModelsExport.h"

#include <QString>
#include <QVector>
#include <QtGlobal>

#include <optional>

namespace sync::models {

class AsyncManagers;

/// The operations of a file manager, each of which runs on the thread of `AsyncManagers` and gives there what
/// `sync::interf::IFileConfigManager` says of the operation of the same name.
///
/// The answer of `Add` is the added record with its id and its resolved links; nothing where the manager's `Add`
/// returns false, with an error only if the store failed. For a client transaction there is
/// `AsyncManagers::RunInTransaction`.
class TANDRY_MODELS_EXPORT AsyncFiles
{
public:
    /// For `AsyncManagers`.
    explicit AsyncFiles(AsyncManagers& managers);

    FutureAnswer<sync::config::FileConfiguration> GetFileConfigurationById(int id) const;
    FutureAnswer<sync::config::FileConfiguration> GetFileConfigurationByServerId(QString const& serverFileId) const;
    FutureAnswer<sync::config::FileConfiguration> GetGeneratedFileConfigurationById(int id) const;
    FutureAnswer<sync::config::FileConfiguration> GetFileConfigurationByClientPath(QString const& clientPath) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetAllFileConfigurationsByClientPath(QString const& clientPath) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>> GetFileConfigurationsOfNonExistingRootFolders() const;
    FutureAnswer<sync::config::FileConfiguration>
    GetGeneratedFileConfigurationByClientPath(QString const& clientPath) const;
    FutureAnswer<sync::config::FileConfiguration>
    GetFileConfigurationByClientPathAndAuthenticationId(QString const& clientPath, int authenticationId) const;
    FutureAnswer<sync::config::FileConfiguration>
    GetFileConfigurationByServerPathAndAuthenticationId(QString const& serverPath, int authenticationId) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetFileConfigurationsByFolderId(int folderConfigurationId, sync::interf::FileConfigOrderByEnum order) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetFileConfigurationsByRootFolderId(int rootFolderId, sync::config::FileConfigurationType fileType) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetFileConfigurationsByRootFolderId(int rootFolderId, sync::interf::FileConfigOrderByEnum order) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetFileConfigurationsWithSyncOption(int rootFolderId, sync::config::FileSyncOption option) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId, sync::interf::FileConfigOrderByEnum order) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                 sync::config::FileSynchronizationStatus syncStatus) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>>
    GetGeneratedFileConfigurationsByParentFileId(int parentFileId) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>> GetAll(sync::config::FileConfigurationType fileType) const;
    FutureAnswer<QVector<sync::config::FileConfiguration>> GetAll() const;
    FutureAnswer<sync::config::FileConfiguration> GetFileConfiguration(sync::config::FileLink const& fileLink,
                                                                       QString const& linkingFilePath) const;

    FutureAnswer<bool> Update(sync::config::FileConfiguration const& fileConfiguration) const;
    FutureAnswer<std::optional<sync::config::FileConfiguration>>
    Add(sync::config::FileConfiguration const& fileConfiguration) const;
    FutureAnswer<bool> UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId) const;
    FutureAnswer<bool> RemoveFileConfigurationAndLinkedConfigurations(int id) const;
    FutureAnswer<bool> RemoveGeneratedFileConfiguration(int id) const;
    FutureAnswer<bool> RemoveByFolderConfigurationId(int folderConfigurationId) const;
    /// See `sync::config::FileConfigManager::RemoveByRootFolderId`.
    FutureAnswer<bool> RemoveByRootFolderId(int rootFolderId) const;
    FutureAnswer<bool> RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId) const;
    FutureAnswer<bool> RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
        int rootFolderId, sync::config::FileSynchronizationStatus syncStatus) const;

private:
    Q_DISABLE_COPY_MOVE(AsyncFiles)

    AsyncManagers& _managers;
};

} // namespace sync::models
