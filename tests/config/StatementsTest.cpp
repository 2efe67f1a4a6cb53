#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"

#include "support/Conversation.h"
#include "support/StatementList.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {

using namespace tandry::test;
using namespace sync::config;
using sync::interf::FileConfigOrderByEnum;

/// Calls every operation of every manager, with each kind of file and each sort order, and keeps what they say.
class EveryOperation : public testing::Test
{
protected:
    std::set<QString> Said() const
    {
        std::vector<QString> const statements = _store->Statements();
        return {statements.begin(), statements.end()};
    }

    void CallServers()
    {
        ServerConfigManager servers(_store);
        ServerConfiguration server;
        servers.GetServerConfigById(1);
        servers.GetServerConfigByServers(QString(), QString());
        servers.GetAll();
        servers.Update(server);
        servers.Add(server);
        servers.Remove(1);
        servers.GetServerConfigByAuthenticationId(1);
        servers.GetServerConfigByFolderId(1);
        servers.GetServerConfigByFileId(1);
        servers.GetDefaultServerConfig();
    }

    void CallAccounts()
    {
        AuthenticationConfigManager accounts(_store);
        AuthenticationConfiguration account;
        accounts.GetAuthenticationConfigurationByDomainAndUser(QString(), QString());
        accounts.GetAuthenticationConfigurationById(1);
        accounts.GetAll();
        accounts.Update(account);
        accounts.Add(account);
        accounts.Remove(1);
        accounts.GetDistinctAuthenticationConfigurations();
        accounts.UpdatePassword(QString(), QString(), QString());
    }

    void CallProducts()
    {
        ProductConfigManager products(_store);
        ProductConfiguration product;
        products.GetProductConfigurationById(1);
        products.GetProductConfigurationByServerIdAndConsumerKey(1, QString());
        products.GetAll();
        products.Update(product);
        products.Add(product);
        products.Remove(1);
    }

    void CallSchedules()
    {
        ScheduleEntryManager schedules(_store);
        schedules.GetScheduleEntryById(1);
        schedules.GetDefaultScheduleEntry();
        schedules.Update(ScheduleEntry());
        schedules.Remove(1);
    }

    void CallFolders()
    {
        FolderConfigManager folders(_store, nullptr);
        FolderConfiguration root;
        root.setParentId(0);
        QString path = "/tree"_q;
        folders.GetFolderConfigurationById(1);
        folders.GetFolderConfigurationByServerId(QString());
        folders.GetFolderConfigurationByClientPath(path);
        folders.GetFolderConfigurationByClientPathAndAuthenticationId(path, 1);
        folders.GetFolderConfigurationsByAuthenticationId(1);
        folders.GetFolderConfigurationsByRootId(1);
        folders.GetAll();
        folders.Update(root);
        folders.Add(root);
        folders.AddFolderAndParent(path + "/a"_q, root);
        folders.Remove(1);
        folders.RemoveFolderAndChildren(1);
        folders.IsInExistingClientFolder(path, 1, false);
        folders.AncestorOrDescendantOfServerFolderExists(path, 1, path);
        folders.GetAllRootFolders();
        folders.GetFolderConfigurationByParentId(1);
        folders.IsInExistingAuthentication(1);
        folders.IsAnyFolderConfigOutOfSync();
        folders.GetRootFolderConfigurationCount();
        folders.ClearCaches();
        folders.CleanRootFolder(1);
        folders.RefreshNativeFileViewer(path);
        folders.RefreshNativeFileViewer();
    }

    void CallFiles()
    {
        FileConfigManager files(_store, nullptr, std::make_shared<FolderConfigManager>(_store, nullptr));
        FileConfiguration file;
        file.clientPath = "/tree/file"_q;
        files.GetFileConfigurationById(1);
        files.GetFileConfigurationByServerId(QString());
        files.GetBaseFileConfigurationById(1);
        files.GetGeneratedFileConfigurationById(1);
        files.GetFileConfigurationByClientPath(QString());
        files.GetAllFileConfigurationsByClientPath(QString());
        files.GetGeneratedFileConfigurationByClientPath(QString());
        files.GetFileConfigurationByClientPathAndAuthenticationId(QString(), 1);
        files.GetFileConfigurationByServerPathAndAuthenticationId(QString(), 1);
        for (int order = 0; order <= 21; ++order) {
            files.GetFileConfigurationsByFolderId(1, static_cast<FileConfigOrderByEnum>(order));
            files.GetFileConfigurationsByRootFolderId(1, static_cast<FileConfigOrderByEnum>(order));
            files.GetGeneratedFileConfigurationsByRootFolderId(1, static_cast<FileConfigOrderByEnum>(order));
        }
        for (int type = 0; type <= 2; ++type) {
            files.GetFileConfigurationsByRootFolderId(1, static_cast<FileConfigurationType>(type));
            files.GetAll(static_cast<FileConfigurationType>(type));
            file.fileType = static_cast<FileConfigurationType>(type);
            files.Update(file);
            files.Add(file);
        }
        files.GetFileConfigurationsWithSyncOption(1, static_cast<FileSyncOption>(64));
        files.GetFileConfigurationsByFolderIdAndSyncStatus(1, static_cast<FileSynchronizationStatus>(1));
        files.GetGeneratedFileConfigurationsByParentFileId(1);
        files.GetAll();
        Row generated(24); // without one the rest has nothing to remove
        generated[3] = _settings.Folder() + "/gone"_q;
        _store->PlayRows({generated});
        files.RemoveFileConfigurationAndLinkedConfigurations(1);
        files.RemoveBaseFileConfiguration(1);
        files.RemoveGeneratedFileConfiguration(1);
        files.RemoveByFolderConfigurationId(1);
        files.RemoveByRootFolderId(1);
        files.RemoveGeneratedFileConfigurationsByRootFolderId(1);
        files.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(1,
                                                                           static_cast<FileSynchronizationStatus>(1));
        files.UpdateSyncStatusFromSyncingToNotSynced(1);
        files.GetBaseFileConfigurationByParentFileId(1);
        files.GetFileConfiguration(FileLink(), QString());
        files.transaction();
        files.commit();
        files.rollback();
    }

    /// The listings of what has lost its root, with no root on record and with the roots 3 and 5.
    void CallListingsWithoutRoot()
    {
        for (std::vector<Row> const& roots : {std::vector<Row>{}, {{3}, {5}}}) {
            auto const folders = std::make_shared<FolderConfigManager>(_store, nullptr);
            _store->PlayRows(roots);
            folders->GetFolderConfigurationsOfNonExistingRootFolders();
            FileConfigManager(_store, nullptr, folders).GetFileConfigurationsOfNonExistingRootFolders();
        }
    }

private:
    TemporarySettings _settings;
    std::shared_ptr<RecordingStore> _store = std::make_shared<RecordingStore>();
};

TEST_F(EveryOperation, SaysNothingButTheListedStatementsAndAllOfThem)
{
    CallServers();
    CallAccounts();
    CallProducts();
    CallSchedules();
    CallFolders();
    CallFiles();
    CallListingsWithoutRoot();

    std::vector<QString> const list = ListedStatements();
    std::set<QString> const listed(list.begin(), list.end());
    std::set<QString> const said = Said();
    EXPECT_EQ(listed.size(), list.size()) << "a statement is listed twice";
    for (QString const& statement : said)
        EXPECT_EQ(listed.count(statement), 1U) << "not listed: " << qPrintable(statement);
    for (QString const& statement : listed)
        EXPECT_EQ(said.count(statement), 1U) << "never said: " << qPrintable(statement);
}

} // namespace
