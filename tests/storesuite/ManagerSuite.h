#pragma once

#include "RecordValues.h"
#include "StoreSuiteFixture.h"
#include <tandry/config/Managers.h>
#include <tandry/database/TransactionalScope.h>

#include <optional>
#include <string>
#include <vector>

namespace tandry::storesuite {

/// The six managers on the store.
class ManagerSuite : public StoreSuite
{
protected:
    void SetUp() override
    {
        StoreSuite::SetUp();
        if (HasFatalFailure())
            return;
        managers.emplace(factory);
    }

    int AddServerRecord(QString const& davUrl)
    {
        ServerConfiguration server;
        server.setDavUrl(davUrl);
        server.setWebServiceUrl(QStringLiteral("https://web.example/"));
        EXPECT_TRUE(managers->servers->Add(server));
        return server.getId();
    }

    int AddAccount(QString const& userName, int serverId)
    {
        AuthenticationConfiguration account;
        account.setDomain(QStringLiteral("domain"));
        account.setUserName(userName);
        account.setServerId(serverId);
        account.setPassword(QStringLiteral("password"));
        EXPECT_TRUE(managers->accounts->Add(account));
        return account.getId();
    }

    FolderConfiguration
    AddFolder(QString const& path, FolderConfiguration const& parent, FolderConfiguration const& root)
    {
        FolderConfiguration folder;
        folder.setName(path.section(QLatin1Char('/'), -1));
        folder.setClientPath(path);
        folder.setServerPath(QStringLiteral("/server") + path);
        folder.setAuthenticationId(root.getAuthenticationId());
        folder.setParentId(parent.getId());
        folder.setRootId(root.getId());
        EXPECT_TRUE(managers->folders->Add(folder));
        return folder;
    }

    FolderConfiguration AddRoot(QString const& path, int accountId = 1)
    {
        FolderConfiguration folder;
        folder.setName(path.section(QLatin1Char('/'), -1));
        folder.setClientPath(path);
        folder.setServerPath(QStringLiteral("/server") + path);
        folder.setAuthenticationId(accountId);
        folder.setParentId(0);
        EXPECT_TRUE(managers->folders->Add(folder));
        return folder;
    }

    FileConfiguration AddFile(QString const& path,
                              FolderConfiguration const& folder,
                              sync::config::FileConfigurationType type = sync::config::FileConfigurationTypeFile)
    {
        FileConfiguration file;
        file.clientPath = path;
        file.name = path.section(QLatin1Char('/'), -1);
        file.folderConfigurationId = folder.getId();
        file.rootFolderId = folder.getRootId();
        file.fileType = type;
        EXPECT_TRUE(managers->files->Add(file));
        return file;
    }

    static QStringList Names(QVector<FileConfiguration> const& list)
    {
        QStringList names;
        for (FileConfiguration const& file : list)
            names.append(file.name);
        return names;
    }

    std::optional<sync::config::Managers> managers;
};

// Records come back complete.

TEST_P(ManagerSuite, ServerComesBackAndIsFoundByItsUrls)
{
    ServerConfiguration server;
    server.setAlias(QStringLiteral("alias"));
    server.setDavUrl(QStringLiteral("https://dav.example/"));
    server.setWebServiceUrl(QStringLiteral("https://web.example/"));
    server.setBinaryDiffEncoder(QStringLiteral("encoder"));
    ASSERT_TRUE(managers->servers->Add(server));

    ServerConfiguration const read = managers->servers->GetServerConfigById(server.getId());
    EXPECT_EQ(read.getId(), server.getId());
    EXPECT_EQ(read.getAlias(), QStringLiteral("alias"));
    EXPECT_EQ(read.getDavUrl(), QStringLiteral("https://dav.example")); // stored without the trailing slash
    EXPECT_EQ(read.getWebServiceUrl(), QStringLiteral("https://web.example"));
    EXPECT_EQ(read.getBinaryDiffEncoder(), QStringLiteral("encoder"));
    EXPECT_EQ(managers->servers->GetServerConfigByServers(server.getDavUrl(), server.getWebServiceUrl()).getId(),
              server.getId());
    EXPECT_EQ(managers->servers->GetAll().size(), 1U);
}

TEST_P(ManagerSuite, AccountComesBackWithoutItsPassword)
{
    int const id = AddAccount(QStringLiteral("user"), 7);
    AuthenticationConfiguration const read = managers->accounts->GetAuthenticationConfigurationByDomainAndUser(
        QStringLiteral("domain"), QStringLiteral("user"));
    EXPECT_EQ(read.getId(), id);
    EXPECT_EQ(read.getServerId(), 7);
    EXPECT_TRUE(read.getPassword().isNull());
    EXPECT_TRUE(Value(4, statements::GetAccounts).isNull());
}

TEST_P(ManagerSuite, UpdateRemovesAProductsSecret)
{
    ProductConfiguration product;
    product.setName(QStringLiteral("name"));
    product.setConsumerKey(QStringLiteral("key"));
    product.setConsumerSecret(QStringLiteral("secret"));
    product.setServerId(3);
    ASSERT_TRUE(managers->products->Add(product));
    EXPECT_EQ(managers->products->GetProductConfigurationById(product.getId()).getConsumerSecret(),
              QStringLiteral("secret"));
    ASSERT_TRUE(managers->products->Update(product));
    EXPECT_TRUE(Value(3, statements::GetProducts).isNull());
    EXPECT_EQ(managers->products->GetProductConfigurationByServerIdAndConsumerKey(3, QStringLiteral("key")).getId(),
              product.getId());
    EXPECT_EQ(managers->products->GetProductConfigurationByServerIdAndConsumerKey(4, QStringLiteral("key")).getId(),
              -1);
}

TEST_P(ManagerSuite, FolderComesBackComplete)
{
    QDateTime const local(QDate(2024, 7, 1), QTime(2, 3, 4, 5), Qt::LocalTime);
    QDateTime const utc(QDate(2024, 3, 31), QTime(2, 30, 0, 6), Qt::UTC);
    auto folder = DistinctRecord<FolderConfiguration>();
    folder.setFeatureName(QStringLiteral("<feature> & \u00e9"));
    folder.setLastOperationTime(local);
    folder.setLastSyncTime(utc);
    ASSERT_TRUE(managers->folders->Add(folder));

    FolderConfiguration const read = managers->folders->GetFolderConfigurationById(folder.getId());
    EXPECT_EQ(read.getFeatureName(), QStringLiteral("<feature> & \u00e9"));
    EXPECT_EQ(read.getLastSyncTime(), utc);
    folder.setLastOperationTime(QDateTime(local.date(), local.time(), Qt::UTC)); // the clock reading is stored
    EXPECT_EQ(DifferingColumns(read, folder), std::vector<std::string>());
}

TEST_P(ManagerSuite, FileComesBackComplete)
{
    using namespace sync::config;
    for (FileConfigurationType type :
         {FileConfigurationTypeFile, FileConfigurationTypeGenerated, FileConfigurationTypeBase}) {
        auto file = DistinctRecord<FileConfiguration>();
        file.fileType = type;
        file.clientPath = QStringLiteral("/client/%1").arg(type);
        file.fileLinks.clear(); // managers follow links on disk
        ASSERT_TRUE(managers->files->Add(file));

        QVector<FileConfiguration> const all = managers->files->GetAll(type);
        ASSERT_EQ(all.size(), 1);
        EXPECT_EQ(DifferingColumns(all.front(), file), std::vector<std::string>());
    }
}

TEST_P(ManagerSuite, ScheduleKeepsItsWallClockTimes)
{
    ScheduleEntry schedule = managers->schedules->GetDefaultScheduleEntry();
    ASSERT_NE(schedule.getId(), -1);
    EXPECT_EQ(schedule.getSyncInterval(), 30);
    schedule.setStartTime(QDateTime(QDate(2024, 7, 1), QTime(8, 0), Qt::LocalTime));
    schedule.setExpireTime(QDateTime(QDate(2024, 7, 1), QTime(20, 0), Qt::UTC));
    schedule.setSyncScheduleType(sync::config::SyncSchedule(4));
    schedule.setFolderConfigId(12);
    schedule.setSyncInterval(5);
    ASSERT_TRUE(managers->schedules->Update(schedule));

    ScheduleEntry const read = managers->schedules->GetScheduleEntryById(schedule.getId());
    EXPECT_EQ(read.getStartTime(), QDateTime(QDate(2024, 7, 1), QTime(8, 0), Qt::LocalTime));
    EXPECT_EQ(read.getExpireTime(), QDateTime(QDate(2024, 7, 1), QTime(20, 0), Qt::LocalTime));
    EXPECT_EQ(read.getSyncScheduleType(), 4);
    EXPECT_EQ(read.getFolderConfigId(), 12);
    EXPECT_EQ(read.getSyncInterval(), 5);
    EXPECT_EQ(managers->schedules->GetDefaultScheduleEntry().getId(), -1);
    EXPECT_TRUE(managers->schedules->Remove(schedule.getId()));
    EXPECT_EQ(managers->schedules->GetScheduleEntryById(schedule.getId()).getId(), -1);
}

// Missing rows.

TEST_P(ManagerSuite, LookupsWithoutARowReturnADefaultRecord)
{
    EXPECT_EQ(managers->servers->GetServerConfigById(1).getId(), -1);
    EXPECT_EQ(managers->accounts->GetAuthenticationConfigurationById(1).getId(), -1);
    EXPECT_EQ(managers->products->GetProductConfigurationById(1).getId(), -1);
    EXPECT_EQ(managers->folders->GetFolderConfigurationById(1).getId(), -1);
    EXPECT_EQ(managers->files->GetFileConfigurationById(1).id, -1);
    EXPECT_EQ(managers->schedules->GetScheduleEntryById(-5).getId(), -1);
}

TEST_P(ManagerSuite, WritesOfAMissingRowReturnTrue)
{
    EXPECT_TRUE(managers->servers->Update(ServerConfiguration()));
    EXPECT_TRUE(managers->servers->Remove(1));
    EXPECT_TRUE(managers->accounts->Update(AuthenticationConfiguration()));
    EXPECT_TRUE(managers->accounts->Remove(1));
    EXPECT_TRUE(managers->products->Update(ProductConfiguration()));
    EXPECT_TRUE(managers->products->Remove(1));
    EXPECT_TRUE(managers->folders->Update(FolderConfiguration()));
    EXPECT_TRUE(managers->folders->Remove(1));
    EXPECT_TRUE(managers->files->Update(FileConfiguration()));
    EXPECT_TRUE(managers->files->RemoveFileConfigurationAndLinkedConfigurations(1));
    EXPECT_TRUE(managers->schedules->Update(ScheduleEntry()));
    EXPECT_TRUE(managers->schedules->Remove(-5));
}

TEST_P(ManagerSuite, FileTypeWithoutATableFails)
{
    FileConfiguration file;
    file.clientPath = QStringLiteral("/a");
    file.fileType = sync::config::FileConfigurationType(9);
    EXPECT_FALSE(managers->files->Add(file));
    EXPECT_EQ(file.id, -1);
    EXPECT_TRUE(managers->files->GetAll(sync::config::FileConfigurationType(9)).isEmpty());
}

// Joins.

TEST_P(ManagerSuite, ServerIsFoundFromAnAccountAFolderAndAFile)
{
    AddServerRecord(QStringLiteral("https://other.example"));
    int const server = AddServerRecord(QStringLiteral("https://dav.example"));
    int const account = AddAccount(QStringLiteral("user"), server);
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"), account);
    FileConfiguration const file = AddFile(QStringLiteral("/r/f"), root);
    EXPECT_EQ(managers->servers->GetServerConfigByAuthenticationId(account).getId(), server);
    EXPECT_EQ(managers->servers->GetServerConfigByFolderId(root.getId()).getId(), server);
    EXPECT_EQ(managers->servers->GetServerConfigByFileId(file.id).getId(), server);
    EXPECT_TRUE(managers->servers->Remove(server));
    EXPECT_EQ(managers->servers->GetServerConfigByFileId(file.id).getId(), -1);
    EXPECT_EQ(managers->accounts->GetAuthenticationConfigurationById(account).getServerId(), server);
}

TEST_P(ManagerSuite, UpdatePasswordCountsAllAccountsOfTheName)
{
    AddAccount(QStringLiteral("user"), 1);
    AddAccount(QStringLiteral("user"), 2);
    AddAccount(QStringLiteral("other"), 1);
    EXPECT_EQ(
        managers->accounts->UpdatePassword(QStringLiteral("domain"), QStringLiteral("user"), QStringLiteral("new")), 2);
    EXPECT_EQ(managers->accounts->UpdatePassword(QStringLiteral("domain"), QStringLiteral("nobody"), QString()), 0);
    EXPECT_EQ(managers->accounts->GetDistinctAuthenticationConfigurations().size(), 2);
}

// Folders.

TEST_P(ManagerSuite, NewRootIsItsOwnRoot)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    EXPECT_EQ(root.getRootId(), root.getId());
    EXPECT_EQ(managers->folders->GetFolderConfigurationById(root.getId()).getRootId(), root.getId());
    EXPECT_EQ(managers->folders->GetAllRootFolders().size(), 1);
    EXPECT_EQ(managers->folders->GetRootFolderConfigurationCount(), 1);
}

TEST_P(ManagerSuite, MissingFoldersAreAddedFromTheRootDown)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const made = managers->folders->AddFolderAndParent(QStringLiteral("/r/a/b"), root);
    FolderConfiguration const parent = managers->folders->GetFolderConfigurationByClientPath(QStringLiteral("/r/a"));
    ASSERT_NE(made.getId(), -1);
    EXPECT_EQ(made.getParentId(), parent.getId());
    EXPECT_EQ(parent.getParentId(), root.getId());
    EXPECT_EQ(made.getServerPath(), QStringLiteral("/server/r/a/b"));
    EXPECT_EQ(managers->folders->GetFolderConfigurationsByRootId(root.getId()).size(), 3);
    EXPECT_EQ(managers->folders->AddFolderAndParent(QStringLiteral("/r/a/b"), root).getId(), made.getId());
}

TEST_P(ManagerSuite, ChildrenAreSortedByName)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    for (char const* name : {"b", "c", "a"})
        AddFolder(QStringLiteral("/r/") + QString::fromUtf8(name), root, root);
    QStringList names;
    for (FolderConfiguration const& child : managers->folders->GetFolderConfigurationByParentId(root.getId()))
        names.append(child.getName());
    EXPECT_EQ(names, QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
}

TEST_P(ManagerSuite, TreeIsRemovedWithItsFilesAndNothingElse)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const a = AddFolder(QStringLiteral("/r/a"), root, root);
    FolderConfiguration const b = AddFolder(QStringLiteral("/r/a/b"), a, root);
    FileConfiguration const kept = AddFile(QStringLiteral("/r/f"), root);
    AddFile(QStringLiteral("/r/a/f"), a);
    AddFile(QStringLiteral("/r/a/b/f"), b);
    EXPECT_TRUE(managers->folders->RemoveFolderAndChildren(a.getId()));
    EXPECT_EQ(managers->folders->GetFolderConfigurationsByRootId(root.getId()).size(), 1);
    ASSERT_EQ(managers->files->GetAll().size(), 1);
    EXPECT_EQ(managers->files->GetAll().front().id, kept.id);
}

TEST_P(ManagerSuite, CleanedRootIsRemovedWithItsFoldersAndFiles)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const other = AddRoot(QStringLiteral("/other"));
    FolderConfiguration const a = AddFolder(QStringLiteral("/r/a"), root, root);
    AddFile(QStringLiteral("/r/a/f"), a);
    AddFile(QStringLiteral("/other/f"), other);
    EXPECT_TRUE(managers->folders->CleanRootFolder(root.getId()));
    ASSERT_EQ(managers->folders->GetAll().size(), 1);
    EXPECT_EQ(managers->folders->GetAll().front().getId(), other.getId());
    EXPECT_EQ(Names(managers->files->GetAll()), QStringList({QStringLiteral("f")}));

    // It is durable.
    auto const elsewhere = store->Open();
    ASSERT_NE(elsewhere, nullptr);
    EXPECT_EQ(sync::config::FolderConfigManager(elsewhere, nullptr).GetAll().size(), 1);
}

TEST_P(ManagerSuite, FoldersAndFilesOfMissingRootsAreFound)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const gone = AddRoot(QStringLiteral("/gone"));
    FolderConfiguration const orphan = AddFolder(QStringLiteral("/gone/a"), gone, gone);
    AddFile(QStringLiteral("/gone/a/orphan"), orphan);
    AddFile(QStringLiteral("/r/f"), root);
    EXPECT_TRUE(managers->folders->Remove(gone.getId()));
    QVector<FolderConfiguration> const found = managers->folders->GetFolderConfigurationsOfNonExistingRootFolders();
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found.front().getId(), orphan.getId());
    EXPECT_EQ(Names(managers->files->GetFileConfigurationsOfNonExistingRootFolders()),
              QStringList({QStringLiteral("orphan")}));
}

TEST_P(ManagerSuite, FoldersOutOfSyncAndOfAnAccountAreFound)
{
    FolderConfiguration root = AddRoot(QStringLiteral("/r"), 5);
    EXPECT_FALSE(managers->folders->IsAnyFolderConfigOutOfSync());
    root.setSyncStatus(sync::config::FolderStatusOutOfSync);
    EXPECT_TRUE(managers->folders->Update(root));
    EXPECT_TRUE(managers->folders->IsAnyFolderConfigOutOfSync());
    EXPECT_TRUE(managers->folders->IsInExistingAuthentication(5));
    EXPECT_FALSE(managers->folders->IsInExistingAuthentication(6));
}

// Files.

TEST_P(ManagerSuite, FileWithAPathThatItsFolderHasIsUpdated)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const a = AddFolder(QStringLiteral("/r/a"), root, root);
    FileConfiguration const file = AddFile(QStringLiteral("/r/f"), root);
    EXPECT_EQ(AddFile(QStringLiteral("/r/f"), root).id, file.id);
    EXPECT_NE(AddFile(QStringLiteral("/r/f"), a).id, file.id);
    EXPECT_EQ(managers->files->GetAllFileConfigurationsByClientPath(QStringLiteral("/r/f")).size(), 2);
}

TEST_P(ManagerSuite, FilesAreSortedInEveryOrder)
{
    using namespace sync::interf;
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    struct Kept
    {
        char const* name;
        qint64 size;
        int day;
    };
    for (Kept const& kept : {Kept{"b", 3'000'000'000, 2}, Kept{"a", 20, 3}, Kept{"c", 100, 1}}) {
        FileConfiguration file;
        file.name = QString::fromUtf8(kept.name);
        file.clientPath = QStringLiteral("/r/") + file.name;
        file.serverPath = file.checkSum = file.name;
        file.folderConfigurationId = file.rootFolderId = root.getId();
        file.size = kept.size;
        file.lastOperationType = int(kept.size % 1000);
        file.createdDateTime = file.lastModifiedDateTime = QDateTime(QDate(2024, 1, kept.day), QTime(0, 0), Qt::UTC);
        file.setSyncStatus(sync::config::FileSynchronizationStatus(kept.day));
        ASSERT_TRUE(managers->files->Add(file));
    }
    auto const order = [&](int value) {
        return Names(managers->files->GetFileConfigurationsByFolderId(root.getId(), FileConfigOrderByEnum(value)))
            .join(QString());
    };
    EXPECT_EQ(order(FileConfigOrderById), QStringLiteral("bac"));
    EXPECT_EQ(order(FileConfigOrderByIdDesc), QStringLiteral("cab"));
    for (int text :
         {FileConfigOrderByName, FileConfigOrderByClientPath, FileConfigOrderByServerPath, FileConfigOrderByCheckSum}) {
        EXPECT_EQ(order(text), QStringLiteral("abc")) << text;
        EXPECT_EQ(order(text + 1), QStringLiteral("cba")) << text + 1;
    }
    for (int day :
         {FileConfigOrderByCreatedDateTime, FileConfigOrderByLastModifiedDateTime, FileConfigOrderBySyncStatus}) {
        EXPECT_EQ(order(day), QStringLiteral("cba")) << day;
        EXPECT_EQ(order(day + 1), QStringLiteral("abc")) << day + 1;
    }
    EXPECT_EQ(order(FileConfigOrderBySize), QStringLiteral("acb"));
    EXPECT_EQ(order(FileConfigOrderBySizeDesc), QStringLiteral("bca"));
    EXPECT_EQ(order(FileConfigOrderByLastOperationType), QStringLiteral("bac"));
    EXPECT_EQ(order(FileConfigOrderByLastOperationTypeDesc), QStringLiteral("cab"));
    EXPECT_EQ(order(FileConfigOrderByFolderConfigurationId).size(), 3);
}

TEST_P(ManagerSuite, FilesAreFoundByAllBitsOfAnOption)
{
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    for (int option : {0, 64, 65, 66, 3}) {
        FileConfiguration file;
        file.name = QString::number(option);
        file.clientPath = QStringLiteral("/r/") + file.name;
        file.folderConfigurationId = file.rootFolderId = root.getId();
        file.syncOption = option;
        ASSERT_TRUE(managers->files->Add(file));
    }
    QStringList found =
        Names(managers->files->GetFileConfigurationsWithSyncOption(root.getId(), sync::config::FileSyncOption(66)));
    EXPECT_EQ(found, QStringList({QStringLiteral("66")}));
    found = Names(
        managers->files->GetFileConfigurationsWithSyncOption(root.getId(), sync::config::FileSyncOptionRepathRequired));
    found.sort();
    EXPECT_EQ(found, QStringList({QStringLiteral("64"), QStringLiteral("65"), QStringLiteral("66")}));
}

TEST_P(ManagerSuite, SyncingFilesOfAFolderBecomeNotSynced)
{
    using namespace sync::config;
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FolderConfiguration const other = AddRoot(QStringLiteral("/other"));
    auto const add = [&](char const* name, FolderConfiguration const& folder, FileSynchronizationStatus status) {
        FileConfiguration file = AddFile(folder.getClientPath() + QString::fromUtf8(name), folder);
        file.setSyncStatus(status);
        EXPECT_TRUE(managers->files->Update(file));
        return file.id;
    };
    int const syncing = add("/a", root, FileSyncStatusSyncing);
    int const linked = add("/b", root, FileSyncStatusLinkDiscovered);
    int const elsewhere = add("/a", other, FileSyncStatusSyncing);
    EXPECT_TRUE(managers->files->UpdateSyncStatusFromSyncingToNotSynced(root.getId()));
    EXPECT_EQ(managers->files->GetFileConfigurationById(syncing).getSyncStatus(), FileSyncStatusNotSynced);
    EXPECT_EQ(managers->files->GetFileConfigurationById(linked).getSyncStatus(), FileSyncStatusLinkDiscovered);
    EXPECT_EQ(managers->files->GetFileConfigurationById(elsewhere).getSyncStatus(), FileSyncStatusSyncing);
}

TEST_P(ManagerSuite, FileIsRemovedWithTheRowsOfItsGeneratedFiles)
{
    using namespace sync::config;
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    FileConfiguration const file = AddFile(QStringLiteral("/r/f"), root);
    for (int parent : {file.id, file.id + 1}) {
        FileConfiguration generated;
        generated.clientPath = QStringLiteral("/r/no such file %1").arg(parent);
        generated.folderConfigurationId = generated.rootFolderId = root.getId();
        generated.fileType = FileConfigurationTypeGenerated;
        generated.parentFileId = parent;
        ASSERT_TRUE(managers->files->Add(generated));
    }
    EXPECT_TRUE(managers->files->RemoveFileConfigurationAndLinkedConfigurations(file.id));
    EXPECT_TRUE(managers->files->GetAll().isEmpty());
    ASSERT_EQ(managers->files->GetAll(FileConfigurationTypeGenerated).size(), 1);
    EXPECT_EQ(managers->files->GetAll(FileConfigurationTypeGenerated).front().parentFileId, file.id + 1);
}

// Transactions and scopes.

TEST_P(ManagerSuite, TransactionOfTheFileManagerIncludesAllManagers)
{
    ASSERT_TRUE(managers->files->transaction());
    FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
    AddFile(QStringLiteral("/r/f"), root);
    AddServerRecord(QStringLiteral("https://dav.example"));
    EXPECT_FALSE(managers->files->transaction());
    EXPECT_TRUE(managers->files->rollback());
    EXPECT_FALSE(managers->files->rollback());
    managers->folders->ClearCaches();
    EXPECT_TRUE(managers->folders->GetAll().isEmpty());
    EXPECT_TRUE(managers->files->GetAll().isEmpty());
    EXPECT_TRUE(managers->servers->GetAll().empty());

    ASSERT_TRUE(managers->files->transaction());
    FolderConfiguration const kept = AddRoot(QStringLiteral("/kept"));
    EXPECT_TRUE(managers->folders->CleanRootFolder(kept.getId()));
    AddRoot(QStringLiteral("/kept"));
    EXPECT_TRUE(managers->files->commit());
    auto const elsewhere = store->Open();
    ASSERT_NE(elsewhere, nullptr);
    EXPECT_EQ(sync::config::FolderConfigManager(elsewhere, nullptr).GetAll().size(), 1);
}

TEST_P(ManagerSuite, OperationsInTheClientsScopeAreDurableAfterItsEnd)
{
    {
        sync::database::TransactionalScope const scope;
        FolderConfiguration const root = AddRoot(QStringLiteral("/r"));
        AddFile(QStringLiteral("/r/f"), root);
        EXPECT_TRUE(managers->files->GetAll(sync::config::FileConfigurationType(9)).isEmpty());
        AddFile(QStringLiteral("/r/g"), root);
    }
    auto const elsewhere = store->Open();
    ASSERT_NE(elsewhere, nullptr);
    auto const others = std::make_shared<sync::config::FolderConfigManager>(elsewhere, nullptr);
    EXPECT_EQ(others->GetAll().size(), 1);
    EXPECT_EQ(sync::config::FileConfigManager(elsewhere, nullptr, others).GetAll().size(), 2);
}

} // namespace tandry::storesuite
