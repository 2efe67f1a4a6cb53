#include "models/AsyncFiles.h"

#include "models/AsyncManagers.h"

namespace sync::models {

using sync::config::FileConfigManager;
using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FileLink;
using sync::config::FileSynchronizationStatus;
using sync::config::FileSyncOption;
using sync::config::Managers;
using sync::interf::FileConfigOrderByEnum;
using sync::interf::IFileConfigManager;

namespace {

constexpr auto OwnFiles = &Managers::files;

} // namespace

AsyncFiles::AsyncFiles(AsyncManagers& managers)
    : _managers(managers)
{}

FutureAnswer<FileConfiguration> AsyncFiles::GetFileConfigurationById(int id) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationById, id);
}

FutureAnswer<FileConfiguration> AsyncFiles::GetFileConfigurationByServerId(QString const& serverFileId) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationByServerId, serverFileId);
}

FutureAnswer<FileConfiguration> AsyncFiles::GetGeneratedFileConfigurationById(int id) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetGeneratedFileConfigurationById, id);
}

FutureAnswer<FileConfiguration> AsyncFiles::GetFileConfigurationByClientPath(QString const& clientPath) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationByClientPath, clientPath);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetAllFileConfigurationsByClientPath(QString const& clientPath) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetAllFileConfigurationsByClientPath, clientPath);
}

FutureAnswer<QVector<FileConfiguration>> AsyncFiles::GetFileConfigurationsOfNonExistingRootFolders() const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationsOfNonExistingRootFolders);
}

FutureAnswer<FileConfiguration> AsyncFiles::GetGeneratedFileConfigurationByClientPath(QString const& clientPath) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetGeneratedFileConfigurationByClientPath, clientPath);
}

FutureAnswer<FileConfiguration>
AsyncFiles::GetFileConfigurationByClientPathAndAuthenticationId(QString const& clientPath, int authenticationId) const
{
    return _managers.Call(OwnFiles,
                          &IFileConfigManager::GetFileConfigurationByClientPathAndAuthenticationId,
                          clientPath,
                          authenticationId);
}

FutureAnswer<FileConfiguration>
AsyncFiles::GetFileConfigurationByServerPathAndAuthenticationId(QString const& serverPath, int authenticationId) const
{
    return _managers.Call(OwnFiles,
                          &IFileConfigManager::GetFileConfigurationByServerPathAndAuthenticationId,
                          serverPath,
                          authenticationId);
}

FutureAnswer<QVector<FileConfiguration>> AsyncFiles::GetFileConfigurationsByFolderId(int folderConfigurationId,
                                                                                     FileConfigOrderByEnum order) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationsByFolderId, folderConfigurationId, order);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetFileConfigurationsByRootFolderId(int rootFolderId, FileConfigurationType fileType) const
{
    return _managers.Call(
        OwnFiles,
        qOverload<int, FileConfigurationType>(&IFileConfigManager::GetFileConfigurationsByRootFolderId),
        rootFolderId,
        fileType);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) const
{
    return _managers.Call(
        OwnFiles,
        qOverload<int, FileConfigOrderByEnum>(&IFileConfigManager::GetFileConfigurationsByRootFolderId),
        rootFolderId,
        order);
}

FutureAnswer<QVector<FileConfiguration>> AsyncFiles::GetFileConfigurationsWithSyncOption(int rootFolderId,
                                                                                         FileSyncOption option) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfigurationsWithSyncOption, rootFolderId, option);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) const
{
    return _managers.Call(
        OwnFiles, &IFileConfigManager::GetGeneratedFileConfigurationsByRootFolderId, rootFolderId, order);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                         FileSynchronizationStatus syncStatus) const
{
    return _managers.Call(
        OwnFiles, &IFileConfigManager::GetFileConfigurationsByFolderIdAndSyncStatus, folderConfigurationId, syncStatus);
}

FutureAnswer<QVector<FileConfiguration>>
AsyncFiles::GetGeneratedFileConfigurationsByParentFileId(int parentFileId) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetGeneratedFileConfigurationsByParentFileId, parentFileId);
}

FutureAnswer<QVector<FileConfiguration>> AsyncFiles::GetAll(FileConfigurationType fileType) const
{
    return _managers.Call(OwnFiles, qOverload<FileConfigurationType>(&IFileConfigManager::GetAll), fileType);
}

FutureAnswer<QVector<FileConfiguration>> AsyncFiles::GetAll() const
{
    return _managers.Call(OwnFiles, qOverload<>(&IFileConfigManager::GetAll));
}

FutureAnswer<FileConfiguration> AsyncFiles::GetFileConfiguration(FileLink const& fileLink,
                                                                 QString const& linkingFilePath) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::GetFileConfiguration, fileLink, linkingFilePath);
}

FutureAnswer<bool> AsyncFiles::Update(FileConfiguration const& fileConfiguration) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::Update, fileConfiguration);
}

FutureAnswer<std::optional<FileConfiguration>> AsyncFiles::Add(FileConfiguration const& fileConfiguration) const
{
    return _managers.Run([file = fileConfiguration](Managers const& managers) mutable {
        return managers.files->Add(file) ? std::make_optional(file) : std::nullopt;
    });
}

FutureAnswer<bool> AsyncFiles::UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::UpdateSyncStatusFromSyncingToNotSynced, folderConfigurationId);
}

FutureAnswer<bool> AsyncFiles::RemoveFileConfigurationAndLinkedConfigurations(int id) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::RemoveFileConfigurationAndLinkedConfigurations, id);
}

FutureAnswer<bool> AsyncFiles::RemoveGeneratedFileConfiguration(int id) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::RemoveGeneratedFileConfiguration, id);
}

FutureAnswer<bool> AsyncFiles::RemoveByFolderConfigurationId(int folderConfigurationId) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::RemoveByFolderConfigurationId, folderConfigurationId);
}

FutureAnswer<bool> AsyncFiles::RemoveByRootFolderId(int rootFolderId) const
{
    return _managers.Call(OwnFiles, &FileConfigManager::RemoveByRootFolderId, rootFolderId);
}

FutureAnswer<bool> AsyncFiles::RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId) const
{
    return _managers.Call(OwnFiles, &IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderId, rootFolderId);
}

FutureAnswer<bool>
AsyncFiles::RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(int rootFolderId,
                                                                         FileSynchronizationStatus syncStatus) const
{
    return _managers.Call(OwnFiles,
                          &IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus,
                          rootFolderId,
                          syncStatus);
}

} // namespace sync::models
