#pragma once

#include "../interf/IFolderConfigManager.h"
#include "DatabaseConfigurationManager.h"
#include "FolderConfiguration.h"
#include "TandryConfigurationExport.h"

#include <QDateTime>
#include <QVector>

#include <memory>

namespace sync::interf {
class IQSqlQueryWrapper;
class IRefreshNativeFileViewer;
} // namespace sync::interf

namespace sync::config {

class FolderCaches;

/// The folders of a store. The interface documents what each operation returns on failure.
///
/// Several threads may share a manager if the store allows it. While one of them changes folders, `GetAll` and
/// `GetAllRootFolders` of another may return nothing, and operations that use them then find no root: the change can
/// clear the cache just after it was filled.
///
/// Operations call one another through the virtual interface, so an override takes effect in the composite ones too.
/// `RemoveFolderAndChildren` and `AddFolderAndParent` take less than 200 bytes of stack for each level of the tree or
/// the path, besides the stack of an override: 2,000 folders in one another fit into a thread's stack of 512 KiB.
class TANDRY_CONFIGURATION_EXPORT FolderConfigManager : public sync::interf::IFolderConfigManager,
                                                        public DatabaseConfigurationManager
{
    Q_OBJECT

public:
    /// Does not access the store. If the refresh object is null, the shell is never refreshed.
    FolderConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory,
                        std::shared_ptr<sync::interf::IRefreshNativeFileViewer> refreshNativeFileViewer);
    ~FolderConfigManager() override;

    // Clients call these by name and by index, so their order and the spelling of types and parameter names stay.
    Q_INVOKABLE sync::config::FolderConfiguration GetFolderConfigurationById(int folderConfigurationId) override;
    Q_INVOKABLE sync::config::FolderConfiguration GetFolderConfigurationByClientPath(QString clientPath) override;
    Q_INVOKABLE sync::config::FolderConfiguration
    GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId) override;
    Q_INVOKABLE QVector<sync::config::FolderConfiguration> GetAll() override;
    Q_INVOKABLE bool Update(sync::config::FolderConfiguration folderConfiguration) override;
    Q_INVOKABLE bool Add(sync::config::FolderConfiguration& folderConfiguration) override;
    Q_INVOKABLE FolderConfiguration AddFolderAndParent(QString const& absolutePath,
                                                       FolderConfiguration const& rootConfig) override;
    Q_INVOKABLE bool Remove(int folderConfigurationId) override;
    Q_INVOKABLE bool RemoveFolderAndChildren(int folderConfigurationId) override;
    Q_INVOKABLE bool AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                              int authenticationId,
                                                              QString& matchingServerFolder) override;
    Q_INVOKABLE QVector<sync::config::FolderConfiguration> GetAllRootFolders() override;
    Q_INVOKABLE QVector<sync::config::FolderConfiguration>
    GetFolderConfigurationByParentId(int folderConfigurationId) override;
    Q_INVOKABLE QVector<sync::config::FolderConfiguration> GetFolderConfigurationsByRootId(int rootFolderId) override;
    Q_INVOKABLE bool IsInExistingAuthentication(int authenticationId) override;
    Q_INVOKABLE bool IsAnyFolderConfigOutOfSync() override;
    Q_INVOKABLE int GetRootFolderConfigurationCount() override;
    Q_INVOKABLE void ClearCaches() override;
    Q_INVOKABLE bool CleanRootFolder(int folderConfigurationId) override;
    Q_INVOKABLE void RefreshNativeFileViewer() override;
    Q_INVOKABLE void RefreshNativeFileViewer(QString& clientPath) override;

    // These cannot be called by name.
    sync::config::FolderConfiguration GetFolderConfigurationByServerId(QString serverFolderId) override;
    QVector<sync::config::FolderConfiguration> GetFolderConfigurationsByAuthenticationId(int authenticationId) override;
    QVector<sync::config::FolderConfiguration> GetFolderConfigurationsOfNonExistingRootFolders() override;
    bool IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption) override;

private:
    auto _Rows();

    QVector<FolderConfiguration> _GetAll();
    QVector<FolderConfiguration> _GetAllRootFolders();
    bool _RemoveFileConfigurationsByRootId(int rootFolderId);
    bool _RemoveFolderConfigurationsByRootId(int rootFolderId);

    void _PopulateFolderConfiguration(sync::interf::IQSqlQueryWrapper* query, FolderConfiguration& folder);
    void _PopulateFolderConfigurations(sync::interf::IQSqlQueryWrapper* query, QVector<FolderConfiguration>& folders);
    void _RefreshNativeFileViewerIfSyncStatusChanged(FolderConfiguration& folderConfiguration);

    /// The lifetime of the cached listings in milliseconds. Only whole seconds count, so it is just under two seconds.
    static const int _allFoldersCacheRefreshRateMsec;

    std::unique_ptr<FolderCaches> _caches;
    std::shared_ptr<sync::interf::IRefreshNativeFileViewer> _refreshNativeFileViewer;
    // Nothing reads or writes these two.
    QVector<FolderConfiguration> _allFolders;
    QDateTime _allFoldersRefreshTime;
};

} // namespace sync::config
