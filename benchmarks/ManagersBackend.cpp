#include "benchmarks/ManagersBackend.h"

#include "benchmarks/Failure.h"
#include "config/Managers.h"
#include "database/SqliteDatabaseFactory.h"

#include <optional>
#include <utility>

namespace sync::benchmarks {

namespace {

using namespace sync::config;

class ManagersBackend : public Backend
{
public:
    explicit ManagersBackend(StoreOpener open)
        : _open(std::move(open))
        , _managers(std::in_place, _open())
    {}
    ManagersBackend(StoreOpener open, Managers managers)
        : _open(std::move(open))
        , _managers(std::move(managers))
    {}

    std::unique_ptr<Backend> ForThread() override { return std::make_unique<ManagersBackend>(_open, *_managers); }
    void Reopen() override
    {
        _managers.reset();
        _managers.emplace(_open());
    }

    void Begin() override { Require(_managers->files->transaction(), "transaction() failed"); }
    void Commit() override { Require(_managers->files->commit(), "commit() failed"); }

    void AddFile(FileConfiguration& file) override { Require(_managers->files->Add(file), "adding a file failed"); }
    void UpdateFile(FileConfiguration const& file) override
    {
        Require(_managers->files->Update(file), "updating a file failed");
    }
    FileConfiguration FileById(int id) override { return _managers->files->GetFileConfigurationById(id); }
    FileConfiguration FileByPath(QString const& clientPath) override
    {
        return _managers->files->GetFileConfigurationByClientPath(clientPath);
    }
    FileConfiguration FileByServerId(QString const& serverFileId) override
    {
        return _managers->files->GetFileConfigurationByServerId(serverFileId);
    }
    QVector<FileConfiguration> FilesOfFolder(int folderId) override
    {
        return _managers->files->GetFileConfigurationsByFolderId(folderId, interf::FileConfigOrderByName);
    }
    QVector<FileConfiguration> AllFiles() override { return _managers->files->GetAll(); }
    void SyncingToNotSynced(int folderId) override
    {
        Require(_managers->files->UpdateSyncStatusFromSyncingToNotSynced(folderId),
                "changing a folder's status failed");
    }

    void AddFolder(FolderConfiguration& folder) override
    {
        Require(_managers->folders->Add(folder), "adding a folder failed");
    }
    void UpdateFolder(FolderConfiguration const& folder) override
    {
        Require(_managers->folders->Update(folder), "updating a folder failed");
    }
    FolderConfiguration FolderById(int id) override { return _managers->folders->GetFolderConfigurationById(id); }
    FolderConfiguration FolderByPath(QString const& clientPath) override
    {
        return _managers->folders->GetFolderConfigurationByClientPath(clientPath);
    }
    FolderConfiguration FolderByServerId(QString const& serverFolderId) override
    {
        return _managers->folders->GetFolderConfigurationByServerId(serverFolderId);
    }
    QVector<FolderConfiguration> SubFolders(int folderId) override
    {
        return _managers->folders->GetFolderConfigurationByParentId(folderId);
    }
    QVector<FolderConfiguration> AllFolders() override
    {
        FolderConfigManager& manager = *_managers->folders;
        manager.ClearCaches();
        QVector<FolderConfiguration> folders = manager.GetAll();
        manager.ClearCaches(); // so that destroying the returned list frees its records
        return folders;
    }
    void RemoveFolderAndChildren(int folderId) override
    {
        Require(_managers->folders->RemoveFolderAndChildren(folderId), "removing a tree failed");
    }
    void CleanRoot(int rootId) override
    {
        Require(_managers->folders->CleanRootFolder(rootId), "removing a root failed");
    }
    bool IsInRoot(QString const& path) override
    {
        return _managers->folders->IsInExistingClientFolder(path, -1, false);
    }

    ServerConfiguration ServerById(int id) override { return _managers->servers->GetServerConfigById(id); }
    ServerConfiguration ServerByUrls(QString const& davUrl, QString const& webServiceUrl) override
    {
        return _managers->servers->GetServerConfigByServers(davUrl, webServiceUrl);
    }
    ServerConfiguration ServerOfFile(int fileId) override
    {
        return _managers->servers->GetServerConfigByFileId(fileId);
    }
    AuthenticationConfiguration AccountById(int id) override
    {
        return _managers->accounts->GetAuthenticationConfigurationById(id);
    }
    AuthenticationConfiguration AccountByUser(QString const& domain, QString const& userName) override
    {
        return _managers->accounts->GetAuthenticationConfigurationByDomainAndUser(domain, userName);
    }
    ProductConfiguration ProductById(int id) override { return _managers->products->GetProductConfigurationById(id); }
    ProductConfiguration ProductByKey(int serverId, QString const& consumerKey) override
    {
        return _managers->products->GetProductConfigurationByServerIdAndConsumerKey(serverId, consumerKey);
    }

private:
    StoreOpener const _open;
    std::optional<Managers> _managers;
};

} // namespace

std::unique_ptr<Backend> OpenManagersBackend(StoreOpener open)
{
    return std::make_unique<ManagersBackend>(std::move(open));
}

std::unique_ptr<Backend> OpenManagersBackend(QString const& path)
{
    return OpenManagersBackend([path] { return OpenExisting<sync::database::SqliteDatabaseFactory>(path); });
}

} // namespace sync::benchmarks
