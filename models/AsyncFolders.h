#pragma once

#include "../config/FolderConfiguration.h"
#include "Answer.h"
#include "TandryModelsExport.h"

#include <QString>
#include <QVector>
#include <QtGlobal>

#include <optional>

namespace sync::models {

class AsyncManagers;

/// The operations of a folder manager, each of which runs on the thread of `AsyncManagers` and gives there what
/// `sync::interf::IFolderConfigManager` says of the operation of the same name.
///
/// Where that sets an argument, the answer has what was set: the added record with its id, or the matching path. It has
/// nothing where that returns false, with an error only if the store failed.
class TANDRY_MODELS_EXPORT AsyncFolders
{
public:
    /// For `AsyncManagers`.
    explicit AsyncFolders(AsyncManagers& managers);

    FutureAnswer<sync::config::FolderConfiguration> GetFolderConfigurationById(int folderConfigurationId) const;
    FutureAnswer<sync::config::FolderConfiguration>
    GetFolderConfigurationByServerId(QString const& serverFolderId) const;
    FutureAnswer<sync::config::FolderConfiguration> GetFolderConfigurationByClientPath(QString const& clientPath) const;
    FutureAnswer<sync::config::FolderConfiguration>
    GetFolderConfigurationByClientPathAndAuthenticationId(QString const& clientPath, int authenticationId) const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>>
    GetFolderConfigurationsByAuthenticationId(int authenticationId) const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>> GetFolderConfigurationsByRootId(int rootFolderId) const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>> GetFolderConfigurationsOfNonExistingRootFolders() const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>> GetAll() const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>> GetAllRootFolders() const;
    FutureAnswer<QVector<sync::config::FolderConfiguration>>
    GetFolderConfigurationByParentId(int folderConfigurationId) const;
    FutureAnswer<bool>
    IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption) const;
    FutureAnswer<std::optional<QString>> AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                                                  int authenticationId) const;
    FutureAnswer<bool> IsInExistingAuthentication(int authenticationId) const;
    FutureAnswer<bool> IsAnyFolderConfigOutOfSync() const;
    FutureAnswer<int> GetRootFolderConfigurationCount() const;

    FutureAnswer<bool> Update(sync::config::FolderConfiguration const& folderConfiguration) const;
    FutureAnswer<std::optional<sync::config::FolderConfiguration>>
    Add(sync::config::FolderConfiguration const& folderConfiguration) const;
    FutureAnswer<sync::config::FolderConfiguration>
    AddFolderAndParent(QString const& absolutePath, sync::config::FolderConfiguration const& rootConfig) const;
    FutureAnswer<bool> Remove(int folderConfigurationId) const;
    FutureAnswer<bool> RemoveFolderAndChildren(int folderConfigurationId) const;
    FutureAnswer<bool> CleanRootFolder(int folderConfigurationId) const;
    FutureAnswer<void> ClearCaches() const;

private:
    Q_DISABLE_COPY_MOVE(AsyncFolders)

    AsyncManagers& _managers;
};

} // namespace sync::models
