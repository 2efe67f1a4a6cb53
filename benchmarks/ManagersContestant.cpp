#include "benchmarks/ManagersContestant.h"

#include "benchmarks/Failure.h"
#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ServerConfigManager.h"
#include "database/SqliteDatabaseFactory.h"

#include <utility>

namespace sync::benchmarks {

namespace {

using namespace sync::config;
using sync::database::SqliteDatabaseFactory;

std::shared_ptr<SqliteDatabaseFactory> OpenExisting(QString const& path)
{
    QString error;
    sync::database::OpenOptions options;
    options.mode = sync::database::OpenMode::OpenExisting;
    auto factory = SqliteDatabaseFactory::Open(path, &error, options);
    if (!factory)
        Fail(error);
    return factory;
}

struct AllManagers
{
    explicit AllManagers(QString const& path)
        : factory(OpenExisting(path))
        , folders(std::make_shared<FolderConfigManager>(factory, nullptr))
        , files(factory, nullptr, folders)
        , servers(factory)
        , accounts(factory)
        , products(factory)
    {}

    std::shared_ptr<SqliteDatabaseFactory> const factory;
    std::shared_ptr<FolderConfigManager> const folders;
    FileConfigManager files;
    ServerConfigManager servers;
    AuthenticationConfigManager accounts;
    ProductConfigManager products;
};

class ManagersContestant : public Contestant
{
public:
    explicit ManagersContestant(std::shared_ptr<AllManagers> managers)
        : _managers(std::move(managers))
        , _folders(*_managers->folders)
        , _files(_managers->files)
    {}

    std::unique_ptr<Contestant> ForThread() override { return std::make_unique<ManagersContestant>(_managers); }

    void Begin() override { Require(_files.transaction(), "transaction() failed"); }
    void Commit() override { Require(_files.commit(), "commit() failed"); }

    void AddFile(FileConfiguration& file) override { Require(_files.Add(file), "adding a file failed"); }
    void UpdateFile(FileConfiguration const& file) override { Require(_files.Update(file), "updating a file failed"); }
    FileConfiguration FileById(int id) override { return _files.GetFileConfigurationById(id); }
    FileConfiguration FileByPath(QString const& clientPath) override
    {
        return _files.GetFileConfigurationByClientPath(clientPath);
    }
    FileConfiguration FileByServerId(QString const& serverFileId) override
    {
        return _files.GetFileConfigurationByServerId(serverFileId);
    }
    QVector<FileConfiguration> FilesOfFolder(int folderId) override
    {
        return _files.GetFileConfigurationsByFolderId(folderId, interf::FileConfigOrderByName);
    }
    QVector<FileConfiguration> AllFiles() override { return _files.GetAll(); }
    void SyncingToNotSynced(int folderId) override
    {
        Require(_files.UpdateSyncStatusFromSyncingToNotSynced(folderId), "changing a folder's status failed");
    }

    void AddFolder(FolderConfiguration& folder) override { Require(_folders.Add(folder), "adding a folder failed"); }
    void UpdateFolder(FolderConfiguration const& folder) override
    {
        Require(_folders.Update(folder), "updating a folder failed");
    }
    FolderConfiguration FolderById(int id) override { return _folders.GetFolderConfigurationById(id); }
    FolderConfiguration FolderByPath(QString const& clientPath) override
    {
        return _folders.GetFolderConfigurationByClientPath(clientPath);
    }
    FolderConfiguration FolderByServerId(QString const& serverFolderId) override
    {
        return _folders.GetFolderConfigurationByServerId(serverFolderId);
    }
    QVector<FolderConfiguration> SubFolders(int folderId) override
    {
        return _folders.GetFolderConfigurationByParentId(folderId);
    }
    QVector<FolderConfiguration> AllFolders() override
    {
        _folders.ClearCaches();
        QVector<FolderConfiguration> folders = _folders.GetAll();
        _folders.ClearCaches(); // so that the caller's list ends with the caller
        return folders;
    }
    void RemoveFolderAndChildren(int folderId) override
    {
        Require(_folders.RemoveFolderAndChildren(folderId), "removing a tree failed");
    }
    void CleanRoot(int rootId) override { Require(_folders.CleanRootFolder(rootId), "removing a root failed"); }
    bool IsInRoot(QString const& path) override { return _folders.IsInExistingClientFolder(path, -1, false); }

    ServerConfiguration ServerById(int id) override { return _managers->servers.GetServerConfigById(id); }
    ServerConfiguration ServerByUrls(QString const& davUrl, QString const& webServiceUrl) override
    {
        return _managers->servers.GetServerConfigByServers(davUrl, webServiceUrl);
    }
    ServerConfiguration ServerOfFile(int fileId) override { return _managers->servers.GetServerConfigByFileId(fileId); }
    AuthenticationConfiguration AccountById(int id) override
    {
        return _managers->accounts.GetAuthenticationConfigurationById(id);
    }
    AuthenticationConfiguration AccountByUser(QString const& domain, QString const& userName) override
    {
        return _managers->accounts.GetAuthenticationConfigurationByDomainAndUser(domain, userName);
    }
    ProductConfiguration ProductById(int id) override { return _managers->products.GetProductConfigurationById(id); }
    ProductConfiguration ProductByKey(int serverId, QString const& consumerKey) override
    {
        return _managers->products.GetProductConfigurationByServerIdAndConsumerKey(serverId, consumerKey);
    }

private:
    std::shared_ptr<AllManagers> const _managers;
    FolderConfigManager& _folders;
    FileConfigManager& _files;
};

} // namespace

std::unique_ptr<Contestant> EnterManagers(QString const& path)
{
    return std::make_unique<ManagersContestant>(std::make_shared<AllManagers>(path));
}

} // namespace sync::benchmarks
