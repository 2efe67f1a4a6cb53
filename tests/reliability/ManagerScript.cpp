#include "reliability/ManagerScript.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FileLink.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace tandry::test {

namespace {

using namespace sync::config;
using namespace sync::interf;
using sync::database::StoreFactory;

/// Ids of rows in the script's store.
constexpr int RootId = 1;
constexpr int SubFolderId = 2;
constexpr int ListedFolderId = 3;
constexpr int FirstFileId = 1;
/// Enough files that a listing needs several pages.
constexpr int ListedFiles = 8;
constexpr int NoSuchRoot = 99;

/// Returns a directory that exists until the program ends: links are resolved only to files on disk.
QString Place()
{
    static QTemporaryDir const place;
    return place.path();
}

QString At(char const* name)
{
    return Place() + QString::fromUtf8(name);
}

// Records as texts.

QString Text(FolderConfiguration const& folder)
{
    return QStringLiteral("folder %1 %2 in %3 of %4")
        .arg(folder.getId())
        .arg(folder.getClientPath())
        .arg(folder.getParentId())
        .arg(folder.getRootId());
}

QString Text(FileConfiguration const& file)
{
    return QStringLiteral("file %1 %2 %3 in %4 of %5, %6 links")
        .arg(file.id)
        .arg(file.name, file.clientPath)
        .arg(file.folderConfigurationId)
        .arg(file.rootFolderId)
        .arg(file.fileLinks.size());
}

QString Text(ServerConfiguration const& server)
{
    return QStringLiteral("server %1 %2").arg(server.getId()).arg(server.getDavUrl());
}

QString Text(AuthenticationConfiguration const& account)
{
    return QStringLiteral("account %1 %2 %3").arg(account.getId()).arg(account.getDomain(), account.getUserName());
}

QString Text(ProductConfiguration const& product)
{
    return QStringLiteral("product %1 %2 %3")
        .arg(product.getId())
        .arg(product.getConsumerKey(), product.getConsumerSecret());
}

QString Text(ScheduleEntry const& entry)
{
    return QStringLiteral("schedule %1 every %2").arg(entry.getId()).arg(entry.getSyncInterval());
}

QString Text(bool answer)
{
    return answer ? QStringLiteral("yes") : QStringLiteral("no");
}

QString Text(int answer)
{
    return QString::number(answer);
}

template <class List>
QString TextOfAll(List const& records)
{
    QStringList texts;
    for (auto const& record : records)
        texts.append(Text(record));
    return texts.join(QLatin1Char('\n'));
}

// Records to be written.

FolderConfiguration Folder(int parentId, int rootId, QString const& path, int accountId)
{
    FolderConfiguration folder;
    folder.setParentId(parentId);
    folder.setRootId(rootId);
    folder.setAuthenticationId(accountId);
    folder.setName(path.section(QLatin1Char('/'), -1));
    folder.setClientPath(path);
    folder.setServerPath(QStringLiteral("/server") + path);
    folder.setServerFolderId(QStringLiteral("id of ") + path);
    return folder;
}

FileConfiguration File(int folderId, int rootId, QString const& path)
{
    FileConfiguration file;
    file.folderConfigurationId = folderId;
    file.rootFolderId = rootId;
    file.name = path.section(QLatin1Char('/'), -1);
    file.clientPath = path;
    file.serverPath = QStringLiteral("/server") + path;
    file.serverFileId = QStringLiteral("id of ") + path;
    return file;
}

FileConfiguration Generated(int parentFileId, QString const& path)
{
    FileConfiguration file = File(RootId, RootId, path);
    file.fileType = FileConfigurationTypeGenerated;
    file.parentFileId = parentFileId;
    return file;
}

FileConfiguration Base(QString const& path)
{
    FileConfiguration file = File(RootId, RootId, path);
    file.fileType = FileConfigurationTypeBase;
    return file;
}

FileLink LinkTo(QString const& path)
{
    FileLink link;
    link.path = path;
    return link;
}

ServerConfiguration Server(char const* name)
{
    ServerConfiguration server;
    server.setAlias(QString::fromUtf8(name));
    server.setDavUrl(QStringLiteral("https://dav/") + QString::fromUtf8(name));
    server.setWebServiceUrl(QStringLiteral("https://web/") + QString::fromUtf8(name));
    return server;
}

AuthenticationConfiguration Account(char const* user, int serverId)
{
    AuthenticationConfiguration account;
    account.setDomain(QStringLiteral("domain"));
    account.setUserName(QString::fromUtf8(user));
    account.setServerId(serverId);
    return account;
}

ProductConfiguration Product(char const* key)
{
    ProductConfiguration product;
    product.setServerId(1);
    product.setConsumerKey(QString::fromUtf8(key));
    product.setConsumerSecret(QStringLiteral("secret"));
    return product;
}

} // namespace

void FillScriptStore(Managers& managers)
{
    auto const addFolder = [&](FolderConfiguration folder) { EXPECT_TRUE(managers.folders->Add(folder)); };
    auto const addFile = [&](FileConfiguration file) { EXPECT_TRUE(managers.files->Add(file)); };
    for (char const* name : {"a", "b"}) {
        ServerConfiguration server = Server(name);
        EXPECT_TRUE(managers.servers->Add(server));
        AuthenticationConfiguration account = Account(name, server.getId());
        EXPECT_TRUE(managers.accounts->Add(account));
        ProductConfiguration product = Product(name);
        EXPECT_TRUE(managers.products->Add(product));
    }

    addFolder(Folder(0, -1, Place(), 1));
    addFolder(Folder(RootId, RootId, At("/sub"), 1));
    addFolder(Folder(SubFolderId, RootId, At("/sub/listed"), 1));
    addFolder(Folder(0, -1, QStringLiteral("/other"), 2));
    addFolder(Folder(NoSuchRoot, NoSuchRoot, QStringLiteral("/nowhere"), 2));

    FileConfiguration first = File(RootId, RootId, At("/first"));
    first.syncOption = FileSyncOptionRepathRequired;
    addFile(first);
    addFile(File(SubFolderId, RootId, At("/sub/second")));
    addFile(File(NoSuchRoot, NoSuchRoot, QStringLiteral("/nowhere/lost")));
    for (int number = 0; number < ListedFiles; ++number) {
        QString const name = QString::number(number);
        FileConfiguration file = File(ListedFolderId, RootId, At("/sub/listed/") + name);
        file.checkSum = QString(1500, QLatin1Char('c'));
        file.setSyncStatus(FileSyncStatusSyncing);
        addFile(file);
    }
    addFile(Generated(FirstFileId, At("/generated")));
    addFile(Generated(1, At("/generated from a generated one")));
    addFile(Base(At("/base")));
    WriteFile(At("/linked"), "a link leads here");
}

std::vector<ReadingOperation> const& ReadingOperations()
{
    static std::vector<ReadingOperation> const operations{
        {"IFolderConfigManager::GetFolderConfigurationById",
         [](Managers& m) { return Text(m.folders->GetFolderConfigurationById(SubFolderId)); }},
        {"IFolderConfigManager::GetFolderConfigurationByServerId",
         [](Managers& m) { return Text(m.folders->GetFolderConfigurationByServerId(QStringLiteral("id of /other"))); }},
        {"IFolderConfigManager::GetFolderConfigurationByClientPath",
         [](Managers& m) { return Text(m.folders->GetFolderConfigurationByClientPath(At("/sub"))); }},
        {"IFolderConfigManager::GetFolderConfigurationByClientPathAndAuthenticationId",
         [](Managers& m) {
             return Text(m.folders->GetFolderConfigurationByClientPathAndAuthenticationId(At("/sub"), 1));
         }},
        {"IFolderConfigManager::GetFolderConfigurationsByAuthenticationId",
         [](Managers& m) { return TextOfAll(m.folders->GetFolderConfigurationsByAuthenticationId(1)); }},
        {"IFolderConfigManager::GetFolderConfigurationsByRootId",
         [](Managers& m) { return TextOfAll(m.folders->GetFolderConfigurationsByRootId(RootId)); }},
        {"IFolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders",
         [](Managers& m) { return TextOfAll(m.folders->GetFolderConfigurationsOfNonExistingRootFolders()); }},
        {"IFolderConfigManager::GetAll", [](Managers& m) { return TextOfAll(m.folders->GetAll()); }},
        {"IFolderConfigManager::IsInExistingClientFolder",
         [](Managers& m) { return Text(m.folders->IsInExistingClientFolder(At("/x"), 1, false)); }},
        {"IFolderConfigManager::AncestorOrDescendantOfServerFolderExists",
         [](Managers& m) {
             QString matching;
             bool const exists =
                 m.folders->AncestorOrDescendantOfServerFolderExists(QStringLiteral("/server/other/x"), 2, matching);
             return Text(exists) + matching;
         }},
        {"IFolderConfigManager::GetAllRootFolders",
         [](Managers& m) { return TextOfAll(m.folders->GetAllRootFolders()); }},
        {"IFolderConfigManager::GetFolderConfigurationByParentId",
         [](Managers& m) { return TextOfAll(m.folders->GetFolderConfigurationByParentId(RootId)); }},
        {"IFolderConfigManager::IsInExistingAuthentication",
         [](Managers& m) { return Text(m.folders->IsInExistingAuthentication(3)); }},
        {"IFolderConfigManager::IsAnyFolderConfigOutOfSync",
         [](Managers& m) { return Text(m.folders->IsAnyFolderConfigOutOfSync()); }},
        {"IFolderConfigManager::GetRootFolderConfigurationCount",
         [](Managers& m) { return Text(m.folders->GetRootFolderConfigurationCount()); }},
        {"IFolderConfigManager::ClearCaches",
         [](Managers& m) {
             m.folders->ClearCaches();
             return QString();
         },
         false},
        {"IFolderConfigManager::RefreshNativeFileViewer, of one path",
         [](Managers& m) {
             QString path = At("/sub");
             m.folders->RefreshNativeFileViewer(path);
             return path;
         },
         false},
        {"IFolderConfigManager::RefreshNativeFileViewer, of all roots",
         [](Managers& m) {
             m.folders->RefreshNativeFileViewer();
             return QString();
         }},

        {"IFileConfigManager::GetFileConfigurationById",
         [](Managers& m) { return Text(m.files->GetFileConfigurationById(FirstFileId)); }},
        {"IFileConfigManager::GetFileConfigurationByServerId",
         [](Managers& m) {
             return Text(m.files->GetFileConfigurationByServerId(QStringLiteral("id of ") + At("/first")));
         }},
        {"IFileConfigManager::GetBaseFileConfigurationById",
         [](Managers& m) { return Text(m.files->GetBaseFileConfigurationById(1)); },
         false},
        {"IFileConfigManager::GetGeneratedFileConfigurationById",
         [](Managers& m) { return Text(m.files->GetGeneratedFileConfigurationById(1)); }},
        {"IFileConfigManager::GetFileConfigurationByClientPath",
         [](Managers& m) { return Text(m.files->GetFileConfigurationByClientPath(At("/sub/listed/7"))); }},
        {"IFileConfigManager::GetAllFileConfigurationsByClientPath",
         [](Managers& m) { return TextOfAll(m.files->GetAllFileConfigurationsByClientPath(At("/sub/listed/7"))); }},
        {"IFileConfigManager::GetFileConfigurationsOfNonExistingRootFolders",
         [](Managers& m) { return TextOfAll(m.files->GetFileConfigurationsOfNonExistingRootFolders()); }},
        {"IFileConfigManager::GetGeneratedFileConfigurationByClientPath",
         [](Managers& m) { return Text(m.files->GetGeneratedFileConfigurationByClientPath(At("/generated"))); }},
        {"IFileConfigManager::GetFileConfigurationByClientPathAndAuthenticationId",
         [](Managers& m) {
             return Text(m.files->GetFileConfigurationByClientPathAndAuthenticationId(At("/first"), 1));
         }},
        {"IFileConfigManager::GetFileConfigurationByServerPathAndAuthenticationId",
         [](Managers& m) {
             return Text(m.files->GetFileConfigurationByServerPathAndAuthenticationId(
                 QStringLiteral("/server") + At("/first"), 1));
         }},
        {"IFileConfigManager::GetFileConfigurationsByFolderId",
         [](Managers& m) {
             return TextOfAll(m.files->GetFileConfigurationsByFolderId(ListedFolderId, FileConfigOrderByNameDesc));
         }},
        {"IFileConfigManager::GetFileConfigurationsByRootFolderId, by type",
         [](Managers& m) {
             return TextOfAll(m.files->GetFileConfigurationsByRootFolderId(RootId, FileConfigurationTypeBase));
         }},
        {"IFileConfigManager::GetFileConfigurationsByRootFolderId, in an order",
         [](Managers& m) {
             return TextOfAll(m.files->GetFileConfigurationsByRootFolderId(RootId, FileConfigOrderByIdDesc));
         }},
        {"IFileConfigManager::GetFileConfigurationsWithSyncOption",
         [](Managers& m) {
             return TextOfAll(m.files->GetFileConfigurationsWithSyncOption(RootId, FileSyncOptionRepathRequired));
         }},
        {"IFileConfigManager::GetGeneratedFileConfigurationsByRootFolderId",
         [](Managers& m) {
             return TextOfAll(m.files->GetGeneratedFileConfigurationsByRootFolderId(RootId, FileConfigOrderById));
         }},
        {"IFileConfigManager::GetFileConfigurationsByFolderIdAndSyncStatus",
         [](Managers& m) {
             return TextOfAll(
                 m.files->GetFileConfigurationsByFolderIdAndSyncStatus(ListedFolderId, FileSyncStatusSyncing));
         }},
        {"IFileConfigManager::GetGeneratedFileConfigurationsByParentFileId",
         [](Managers& m) { return TextOfAll(m.files->GetGeneratedFileConfigurationsByParentFileId(FirstFileId)); }},
        {"IFileConfigManager::GetAll, by type",
         [](Managers& m) { return TextOfAll(m.files->GetAll(FileConfigurationTypeGenerated)); }},
        {"IFileConfigManager::GetAll, of the client's own", [](Managers& m) { return TextOfAll(m.files->GetAll()); }},
        {"IFileConfigManager::GetBaseFileConfigurationByParentFileId",
         [](Managers& m) { return Text(m.files->GetBaseFileConfigurationByParentFileId(1)); },
         false},
        {"IFileConfigManager::GetFileConfiguration",
         [](Managers& m) {
             return Text(m.files->GetFileConfiguration(LinkTo(QStringLiteral("../first")), At("/sub/second")));
         }},

        {"IServerConfigManager::GetServerConfigById",
         [](Managers& m) { return Text(m.servers->GetServerConfigById(2)); }},
        {"IServerConfigManager::GetServerConfigByServers",
         [](Managers& m) {
             return Text(
                 m.servers->GetServerConfigByServers(QStringLiteral("https://dav/b"), QStringLiteral("https://web/b")));
         }},
        {"IServerConfigManager::GetAll", [](Managers& m) { return TextOfAll(m.servers->GetAll()); }},
        {"IServerConfigManager::GetServerConfigByAuthenticationId",
         [](Managers& m) { return Text(m.servers->GetServerConfigByAuthenticationId(2)); }},
        {"IServerConfigManager::GetServerConfigByFolderId",
         [](Managers& m) { return Text(m.servers->GetServerConfigByFolderId(SubFolderId)); }},
        {"IServerConfigManager::GetServerConfigByFileId",
         [](Managers& m) { return Text(m.servers->GetServerConfigByFileId(FirstFileId)); }},
        {"IServerConfigManager::GetDefaultServerConfig",
         [](Managers& m) { return Text(m.servers->GetDefaultServerConfig()); }},

        {"IAuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser",
         [](Managers& m) {
             return Text(m.accounts->GetAuthenticationConfigurationByDomainAndUser(QStringLiteral("domain"),
                                                                                   QStringLiteral("b")));
         }},
        {"IAuthenticationConfigManager::GetAuthenticationConfigurationById",
         [](Managers& m) { return Text(m.accounts->GetAuthenticationConfigurationById(2)); }},
        {"IAuthenticationConfigManager::GetAll", [](Managers& m) { return TextOfAll(m.accounts->GetAll()); }},
        {"IAuthenticationConfigManager::GetDistinctAuthenticationConfigurations",
         [](Managers& m) { return TextOfAll(m.accounts->GetDistinctAuthenticationConfigurations()); }},

        {"IProductConfigManager::GetProductConfigurationById",
         [](Managers& m) { return Text(m.products->GetProductConfigurationById(2)); }},
        {"IProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey",
         [](Managers& m) {
             return Text(m.products->GetProductConfigurationByServerIdAndConsumerKey(1, QStringLiteral("b")));
         }},
        {"IProductConfigManager::GetAll", [](Managers& m) { return TextOfAll(m.products->GetAll()); }},

        {"IScheduleEntryManager::GetScheduleEntryById",
         [](Managers& m) { return Text(m.schedules->GetScheduleEntryById(1)); }},
        {"IScheduleEntryManager::GetDefaultScheduleEntry",
         [](Managers& m) { return Text(m.schedules->GetDefaultScheduleEntry()); }},
    };
    return operations;
}

std::vector<WritingOperation> const& WritingOperations()
{
    static std::vector<WritingOperation> const operations{
        {"IFolderConfigManager::Update",
         [](Managers& m, auto&) {
             FolderConfiguration folder = m.folders->GetFolderConfigurationById(SubFolderId);
             folder.setSyncStatus(FolderStatusPlaced);
             return m.folders->Update(folder) && folder.getId() == SubFolderId;
         }},
        {"IFolderConfigManager::Add, of a root",
         [](Managers& m, auto&) {
             FolderConfiguration root = Folder(0, -1, QStringLiteral("/new"), 1);
             return m.folders->Add(root);
         }},
        {"IFolderConfigManager::Add, of a sub-folder",
         [](Managers& m, auto&) {
             FolderConfiguration folder = Folder(RootId, RootId, At("/new"), 1);
             return m.folders->Add(folder);
         }},
        {"IFolderConfigManager::AddFolderAndParent",
         [](Managers& m, auto&) {
             FolderConfiguration const root = m.folders->GetFolderConfigurationById(RootId);
             return m.folders->AddFolderAndParent(At("/sub/new"), root).getId() != -1;
         },
         Failing::PartsAndMore},
        {"IFolderConfigManager::Remove", [](Managers& m, auto&) { return m.folders->Remove(SubFolderId); }},
        {"IFolderConfigManager::RemoveFolderAndChildren",
         [](Managers& m, auto&) { return m.folders->RemoveFolderAndChildren(SubFolderId); },
         Failing::Parts},
        {"IFolderConfigManager::CleanRootFolder",
         [](Managers& m, auto&) { return m.folders->CleanRootFolder(RootId); },
         Failing::Parts},

        {"IFileConfigManager::Update",
         [](Managers& m, auto&) {
             FileConfiguration file = File(RootId, RootId, At("/renamed"));
             file.id = FirstFileId;
             file.nameValueProperties[QStringLiteral("key")] = QString(3000, QLatin1Char('v'));
             return m.files->Update(file);
         }},
        {"IFileConfigManager::Add, of a new file",
         [](Managers& m, auto&) {
             FileConfiguration file = File(RootId, RootId, At("/new"));
             return m.files->Add(file);
         }},
        {"IFileConfigManager::Add, of a file on record",
         [](Managers& m, auto&) {
             FileConfiguration file = File(RootId, RootId, At("/first"));
             file.size = 7;
             return m.files->Add(file);
         },
         Failing::PartsAndMore},
        {"IFileConfigManager::Add, of a generated file",
         [](Managers& m, auto&) {
             FileConfiguration file = Generated(FirstFileId, At("/new generated"));
             return m.files->Add(file);
         }},
        {"IFileConfigManager::Add, of a base file",
         [](Managers& m, auto&) {
             FileConfiguration file = Base(At("/new base"));
             return m.files->Add(file);
         }},
        {"IFileConfigManager::Add, of a file with a link",
         [](Managers& m, auto&) {
             FileConfiguration file = File(SubFolderId, RootId, At("/sub/linking"));
             file.fileLinks.append(LinkTo(QStringLiteral("../linked")));
             return m.files->Add(file);
         },
         Failing::PartsAndMore},
        {"IFileConfigManager::RemoveFileConfigurationAndLinkedConfigurations",
         [](Managers& m, auto&) { return m.files->RemoveFileConfigurationAndLinkedConfigurations(FirstFileId); },
         Failing::Parts},
        {"IFileConfigManager::RemoveBaseFileConfiguration",
         [](Managers& m, auto&) { return m.files->RemoveBaseFileConfiguration(1); },
         Failing::AllOrNothing,
         false},
        {"IFileConfigManager::RemoveGeneratedFileConfiguration",
         [](Managers& m, auto&) { return m.files->RemoveGeneratedFileConfiguration(1); }},
        {"IFileConfigManager::RemoveByFolderConfigurationId",
         [](Managers& m, auto&) { return m.files->RemoveByFolderConfigurationId(ListedFolderId); }},
        {"IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderId",
         [](Managers& m, auto&) { return m.files->RemoveGeneratedFileConfigurationsByRootFolderId(RootId); }},
        {"IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus",
         [](Managers& m, StoreFactory& store) {
             EXPECT_FALSE(m.files->RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
                 RootId, FileSyncStatusNotSynced));
             return !store.LastError();
         },
         Failing::Parts},
        {"IFileConfigManager::UpdateSyncStatusFromSyncingToNotSynced",
         [](Managers& m, auto&) { return m.files->UpdateSyncStatusFromSyncingToNotSynced(ListedFolderId); }},
        {"IFileConfigManager::transaction",
         [](Managers& m, auto&) { return m.files->transaction() && m.files->commit(); }},
        {"IFileConfigManager::commit",
         [](Managers& m, auto&) {
             if (!m.files->transaction())
                 return false;
             FileConfiguration file = File(RootId, RootId, At("/new"));
             bool const added = m.files->Add(file) && m.files->RemoveByFolderConfigurationId(ListedFolderId);
             if (added)
                 return m.files->commit();
             EXPECT_TRUE(m.files->rollback());
             return false;
         }},
        {"IFileConfigManager::rollback",
         [](Managers& m, auto&) {
             if (!m.files->transaction())
                 return false;
             static_cast<void>(m.files->RemoveByFolderConfigurationId(ListedFolderId));
             return m.files->rollback();
         }},

        {"IServerConfigManager::Update",
         [](Managers& m, auto&) {
             ServerConfiguration server = Server("changed");
             server.setId(1);
             return m.servers->Update(server);
         }},
        {"IServerConfigManager::Add",
         [](Managers& m, auto&) {
             ServerConfiguration server = Server("new");
             return m.servers->Add(server);
         }},
        {"IServerConfigManager::Remove", [](Managers& m, auto&) { return m.servers->Remove(1); }},

        {"IAuthenticationConfigManager::UpdatePassword",
         [](Managers& m, auto&) {
             return m.accounts->UpdatePassword(QStringLiteral("domain"), QStringLiteral("a"), QString()) == 1;
         }},
        {"IAuthenticationConfigManager::Update",
         [](Managers& m, auto&) {
             AuthenticationConfiguration account = Account("changed", 2);
             account.setId(1);
             return m.accounts->Update(account);
         }},
        {"IAuthenticationConfigManager::Add",
         [](Managers& m, auto&) {
             AuthenticationConfiguration account = Account("new", 2);
             return m.accounts->Add(account);
         }},
        {"IAuthenticationConfigManager::Remove", [](Managers& m, auto&) { return m.accounts->Remove(1); }},

        {"IProductConfigManager::Update",
         [](Managers& m, auto&) {
             ProductConfiguration product = m.products->GetProductConfigurationById(1);
             product.setName(QStringLiteral("changed"));
             return m.products->Update(product) && product.getId() == 1;
         }},
        {"IProductConfigManager::Add",
         [](Managers& m, auto&) {
             ProductConfiguration product = Product("new");
             return m.products->Add(product);
         }},
        {"IProductConfigManager::Remove", [](Managers& m, auto&) { return m.products->Remove(1); }},

        {"IScheduleEntryManager::Update",
         [](Managers& m, auto&) {
             ScheduleEntry entry = m.schedules->GetScheduleEntryById(1);
             entry.setSyncInterval(7);
             return m.schedules->Update(entry) && entry.getId() == 1;
         }},
        {"IScheduleEntryManager::Remove", [](Managers& m, auto&) { return m.schedules->Remove(1); }},
    };
    return operations;
}

testing::AssertionResult MatchesOutcome(WritingOperation const& operation,
                                        OperationOutcome const& outcome,
                                        RowTexts const& before,
                                        RowTexts const& after,
                                        RowTexts const& found)
{
    if (!outcome.answer && !outcome.hasError)
        return testing::AssertionFailure() << "false without an error";
    if (operation.failing == Failing::AllOrNothing && outcome.isUnknown && Same(after, found, "kept"))
        return testing::AssertionSuccess();
    if (operation.failing == Failing::AllOrNothing || (outcome.succeeded() && !outcome.hasError))
        return Same(outcome.succeeded() ? after : before, found, outcome.succeeded() ? "succeeded" : "failed");

    // Writes before the failure stay, so each row is as before or as after the operation.
    for (QString const& key : before.keys() + after.keys() + found.keys()) {
        bool const mayBeAnother = operation.failing == Failing::PartsAndMore && !before.contains(key);
        bool const isAsBefore = found.contains(key) == before.contains(key) && found[key] == before[key];
        bool const isAsAfter = found.contains(key) == after.contains(key) && found[key] == after[key];
        if (!isAsBefore && !isAsAfter && !mayBeAnother)
            return testing::AssertionFailure()
                   << key.toStdString() << " is neither as before nor as after: " << found[key].toStdString();
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult Same(RowTexts const& expected, RowTexts const& found, char const* what)
{
    for (QString const& key : expected.keys() + found.keys()) {
        QString const wanted = expected.value(key, QStringLiteral("no row"));
        QString const is = found.value(key, QStringLiteral("no row"));
        if (is != wanted)
            return testing::AssertionFailure() << what << ": " << key.toStdString() << " is " << is.toStdString()
                                               << " instead of " << wanted.toStdString();
    }
    return testing::AssertionSuccess();
}

} // namespace tandry::test
