#include "models/AsyncFolders.h"

#include "models/AsyncManagers.h"

namespace sync::models {

using sync::config::FolderConfiguration;
using sync::config::Managers;
using sync::interf::IFolderConfigManager;

namespace {

constexpr auto OwnFolders = &Managers::folders;

} // namespace

AsyncFolders::AsyncFolders(AsyncManagers& managers)
    : _managers(managers)
{}

FutureAnswer<FolderConfiguration> AsyncFolders::GetFolderConfigurationById(int folderConfigurationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationById, folderConfigurationId);
}

FutureAnswer<FolderConfiguration> AsyncFolders::GetFolderConfigurationByServerId(QString const& serverFolderId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationByServerId, serverFolderId);
}

FutureAnswer<FolderConfiguration> AsyncFolders::GetFolderConfigurationByClientPath(QString const& clientPath) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationByClientPath, clientPath);
}

FutureAnswer<FolderConfiguration>
AsyncFolders::GetFolderConfigurationByClientPathAndAuthenticationId(QString const& clientPath,
                                                                    int authenticationId) const
{
    return _managers.Call(OwnFolders,
                          &IFolderConfigManager::GetFolderConfigurationByClientPathAndAuthenticationId,
                          clientPath,
                          authenticationId);
}

FutureAnswer<QVector<FolderConfiguration>>
AsyncFolders::GetFolderConfigurationsByAuthenticationId(int authenticationId) const
{
    return _managers.Call(
        OwnFolders, &IFolderConfigManager::GetFolderConfigurationsByAuthenticationId, authenticationId);
}

FutureAnswer<QVector<FolderConfiguration>> AsyncFolders::GetFolderConfigurationsByRootId(int rootFolderId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationsByRootId, rootFolderId);
}

FutureAnswer<QVector<FolderConfiguration>> AsyncFolders::GetFolderConfigurationsOfNonExistingRootFolders() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders);
}

FutureAnswer<QVector<FolderConfiguration>> AsyncFolders::GetAll() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetAll);
}

FutureAnswer<QVector<FolderConfiguration>> AsyncFolders::GetAllRootFolders() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetAllRootFolders);
}

FutureAnswer<QVector<FolderConfiguration>>
AsyncFolders::GetFolderConfigurationByParentId(int folderConfigurationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetFolderConfigurationByParentId, folderConfigurationId);
}

FutureAnswer<bool>
AsyncFolders::IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption) const
{
    return _managers.Call(
        OwnFolders, &IFolderConfigManager::IsInExistingClientFolder, path, authenticationId, honourFolderOption);
}

FutureAnswer<std::optional<QString>> AsyncFolders::AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                                                            int authenticationId) const
{
    return _managers.Run([=](Managers const& managers) -> std::optional<QString> {
        QString matching;
        if (!managers.folders->AncestorOrDescendantOfServerFolderExists(serverPath, authenticationId, matching))
            return std::nullopt;
        return matching;
    });
}

FutureAnswer<bool> AsyncFolders::IsInExistingAuthentication(int authenticationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::IsInExistingAuthentication, authenticationId);
}

FutureAnswer<bool> AsyncFolders::IsAnyFolderConfigOutOfSync() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::IsAnyFolderConfigOutOfSync);
}

FutureAnswer<int> AsyncFolders::GetRootFolderConfigurationCount() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::GetRootFolderConfigurationCount);
}

FutureAnswer<bool> AsyncFolders::Update(FolderConfiguration const& folderConfiguration) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::Update, folderConfiguration);
}

FutureAnswer<std::optional<FolderConfiguration>> AsyncFolders::Add(FolderConfiguration const& folderConfiguration) const
{
    return _managers.Run([folder = folderConfiguration](Managers const& managers) mutable {
        return managers.folders->Add(folder) ? std::make_optional(folder) : std::nullopt;
    });
}

FutureAnswer<FolderConfiguration> AsyncFolders::AddFolderAndParent(QString const& absolutePath,
                                                                   FolderConfiguration const& rootConfig) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::AddFolderAndParent, absolutePath, rootConfig);
}

FutureAnswer<bool> AsyncFolders::Remove(int folderConfigurationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::Remove, folderConfigurationId);
}

FutureAnswer<bool> AsyncFolders::RemoveFolderAndChildren(int folderConfigurationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::RemoveFolderAndChildren, folderConfigurationId);
}

FutureAnswer<bool> AsyncFolders::CleanRootFolder(int folderConfigurationId) const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::CleanRootFolder, folderConfigurationId);
}

FutureAnswer<void> AsyncFolders::ClearCaches() const
{
    return _managers.Call(OwnFolders, &IFolderConfigManager::ClearCaches);
}

} // namespace sync::models
