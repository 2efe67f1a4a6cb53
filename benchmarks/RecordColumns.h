#pragma once

#include "benchmarks/Documents.h"
#include "benchmarks/PrivateMembers.h"
#include "config/FileConfiguration.h"

/// Binds records to statements and reads them from rows, for the backends without managers.
///
/// `Statement` has `Bind(placeholder, value)`, called in the order of the placeholders' first occurrence in the text,
/// and reads the current row by column number with `Int`, `Long`, `Text` and `Time`.
namespace sync::benchmarks {

template <class Statement>
void Bind(Statement& to, config::FileConfiguration const& file, Documents& documents)
{
    to.Bind(QStringLiteral(":folderConfigurationId"), file.folderConfigurationId);
    to.Bind(QStringLiteral(":name"), file.name);
    to.Bind(QStringLiteral(":clientPath"), file.clientPath);
    to.Bind(QStringLiteral(":serverPath"), file.serverPath);
    to.Bind(QStringLiteral(":checkSum"), file.checkSum);
    to.Bind(QStringLiteral(":createdDateTime"), file.createdDateTime);
    to.Bind(QStringLiteral(":lastModifiedDateTime"), file.lastModifiedDateTime);
    to.Bind(QStringLiteral(":syncStatus"), int(file.getSyncStatus()));
    to.Bind(QStringLiteral(":lastOperationType"), file.lastOperationType);
    to.Bind(QStringLiteral(":size"), file.size);
    to.Bind(QStringLiteral(":nameValueProperties"), documents.Write(file.nameValueProperties));
    to.Bind(QStringLiteral(":lastOperationTime"), file.lastOperationTime);
    to.Bind(QStringLiteral(":rootFolderId"), file.rootFolderId);
    to.Bind(QStringLiteral(":syncOption"), file.syncOption);
    to.Bind(QStringLiteral(":parentFileId"), file.parentFileId);
    to.Bind(QStringLiteral(":fileType"), int(file.fileType));
    to.Bind(QStringLiteral(":ownerId"), file.ownerId);
    to.Bind(QStringLiteral(":privileges"), file.privileges);
    to.Bind(QStringLiteral(":productConfigurationId"), file.productConfigurationId);
    to.Bind(QStringLiteral(":serverFileId"), file.serverFileId);
    to.Bind(QStringLiteral(":serverFileVersionId"), file.serverFileVersionId);
    to.Bind(QStringLiteral(":checkSumMD5"), file.checkSumMD5);
    to.Bind(QStringLiteral(":fileLinks"), documents.WriteLinks(file));
}

template <class Statement>
void Fill(config::FileConfiguration& file, Statement& from, Documents& documents)
{
    file.id = from.Int(0);
    file.folderConfigurationId = from.Int(1);
    file.name = from.Text(2);
    file.clientPath = from.Text(3);
    file.serverPath = from.Text(4);
    file.checkSum = from.Text(5);
    file.createdDateTime = from.Time(6);
    file.lastModifiedDateTime = from.Time(7);
    file.setSyncStatus(config::FileSynchronizationStatus(from.Int(8)));
    file.resetSyncStatusChanged();
    file.lastOperationType = from.Int(9);
    file.size = from.Long(10);
    file.nameValueProperties = documents.Read(from.Text(11));
    file.lastOperationTime = from.Time(12);
    file.rootFolderId = from.Int(13);
    file.syncOption = from.Int(14);
    file.parentFileId = from.Int(15);
    file.fileType = config::FileConfigurationType(from.Int(16));
    file.ownerId = from.Text(17);
    file.privileges = from.Int(18);
    file.productConfigurationId = from.Int(19);
    file.serverFileId = from.Text(20);
    file.serverFileVersionId = from.Text(21);
    file.checkSumMD5 = from.Text(22);
    documents.ReadLinks(from.Text(23), file);
}

template <class Statement>
void Bind(Statement& to, config::FolderConfiguration const& folder, Documents& documents)
{
    to.Bind(QStringLiteral(":authenticationId"), folder.getAuthenticationId());
    to.Bind(QStringLiteral(":name"), folder.getName());
    to.Bind(QStringLiteral(":remoteShortKey"), folder.getRemoteShortKey());
    to.Bind(QStringLiteral(":remoteLongKey"), folder.getRemoteLongKey());
    to.Bind(QStringLiteral(":clientPath"), folder.getClientPath());
    to.Bind(QStringLiteral(":serverPath"), folder.getServerPath());
    to.Bind(QStringLiteral(":syncStatus"), int(folder.getSyncStatus()));
    to.Bind(QStringLiteral(":nameValueProperties"), documents.Write(folder.*Reveal(member::FolderProperties())));
    to.Bind(QStringLiteral(":parentId"), folder.getParentId());
    to.Bind(QStringLiteral(":lastOperationTime"), folder.getLastOperationTime());
    to.Bind(QStringLiteral(":lastSyncTime"), folder.getLastSyncTime());
    to.Bind(QStringLiteral(":folderOption"), int(folder.getFolderOption()));
    to.Bind(QStringLiteral(":lastOperationType"), int(folder.getLastOperationType()));
    to.Bind(QStringLiteral(":syncDriveType"), int(folder.getSyncDriveType()));
    to.Bind(QStringLiteral(":rootId"), folder.getRootId());
    to.Bind(QStringLiteral(":syncOption"), int(folder.getSyncOption()));
    to.Bind(QStringLiteral(":ownerId"), folder.getOwnerId());
    to.Bind(QStringLiteral(":privileges"), int(folder.getPrivileges()));
    to.Bind(QStringLiteral(":serverRoot"), folder.getServerRoot());
    to.Bind(QStringLiteral(":productConfigurationId"), folder.getProductConfigurationId());
    to.Bind(QStringLiteral(":serverFolderId"), folder.getServerFolderId());
}

template <class Statement>
void Fill(config::FolderConfiguration& folder, Statement& from, Documents& documents)
{
    folder.*Reveal(member::FolderId()) = from.Int(0);
    folder.setAuthenticationId(from.Int(1));
    folder.setName(from.Text(2));
    folder.setRemoteShortKey(from.Text(3));
    folder.setRemoteLongKey(from.Text(4));
    folder.setClientPath(from.Text(5));
    folder.setServerPath(from.Text(6));
    folder.setSyncStatus(config::FolderSynchronizationStatus(from.Int(7)));
    folder.resetSyncStatusChanged();
    folder.*Reveal(member::FolderProperties()) = documents.Read(from.Text(8));
    folder.setParentId(from.Int(9));
    folder.setLastOperationTime(from.Time(10));
    folder.setLastSyncTime(from.Time(11));
    folder.setFolderOption(config::SynchronizationFolderOption(from.Int(12)));
    folder.setLastOperationType(config::FolderOperationType(from.Int(13)));
    folder.setSyncDriveType(config::DriveType(from.Int(14)));
    folder.setRootId(from.Int(15));
    folder.setSyncOption(config::FolderSyncOption(from.Int(16)));
    folder.setOwnerId(from.Text(17));
    folder.setPrivileges(config::FolderPrivileges(from.Int(18)));
    folder.setServerRoot(from.Text(19));
    folder.setProductConfigurationId(from.Int(20));
    folder.setServerFolderId(from.Text(21));
}

template <class Statement>
void Fill(config::ServerConfiguration& server, Statement& from, Documents& documents)
{
    server.setId(from.Int(0));
    server.setAlias(from.Text(1));
    server.setDavUrl(from.Text(2));
    server.setWebServiceUrl(from.Text(3));
    server.*Reveal(member::ServerProperties()) = documents.Read(from.Text(4));
    server.setBinaryDiffEncoder(from.Text(5));
}

template <class Statement>
void Fill(config::AuthenticationConfiguration& account, Statement& from, Documents& documents)
{
    account.setId(from.Int(0));
    account.setDomain(from.Text(1));
    account.setDomainId(from.Text(2));
    account.setUserName(from.Text(3)); // the password behind it is never read
    account.*Reveal(member::AccountProperties()) = documents.Read(from.Text(5));
    account.setServerId(from.Int(6));
}

template <class Statement>
void Fill(config::ProductConfiguration& product, Statement& from, Documents& documents)
{
    product.*Reveal(member::ProductId()) = from.Int(0);
    product.setName(from.Text(1));
    product.setConsumerKey(from.Text(2));
    product.setConsumerSecret(from.Text(3));
    product.setServerId(from.Int(4));
    product.*Reveal(member::ProductProperties()) = documents.Read(from.Text(5));
}

} // namespace sync::benchmarks
