#pragma once

#include <QString>

/// The statements on `FolderConfiguration`, and those on `FileConfiguration` that remove a folder's files; even their
/// spaces are fixed.
namespace sync::config::folders_sql {

const QString Select =
    QStringLiteral("SELECT id, authenticationId, name, remoteShortKey, remoteLongKey, clientPath, serverPath, "
                   "syncStatus, nameValueProperties, parentId, lastOperationTime, lastSyncTime, folderOption, "
                   "lastOperationType, syncDriveType, rootId, syncOption, ownerId, privileges, serverRoot, "
                   "productConfigurationId, serverFolderId FROM FolderConfiguration");

const QString GetById = Select + QStringLiteral(" WHERE id = :id");
const QString GetByServerId = Select + QStringLiteral(" WHERE serverFolderId = :serverFolderId");
const QString GetByParentId = Select + QStringLiteral(" WHERE parentId = :parentId ORDER BY name");
const QString GetByClientPath = Select + QStringLiteral(" WHERE clientPath = :clientPath");
const QString GetByClientPathAndAuthenticationId =
    Select + QStringLiteral(" WHERE clientPath = :clientPath AND authenticationId = :authenticationId");
const QString GetByAuthenticationId = Select + QStringLiteral(" WHERE authenticationId = :authenticationId");
const QString GetByRootId = Select + QStringLiteral(" WHERE rootId = :rootId");
/// %1 is replaced by the ids, separated by commas.
const QString GetOfNonExistingRoots = Select + QStringLiteral(" WHERE rootId NOT IN (%1)");
const QString GetAll = Select;
const QString GetAllRoots = Select + QStringLiteral(" WHERE parentId = '0'");

const QString Update =
    QStringLiteral("UPDATE FolderConfiguration SET authenticationId = :authenticationId, name = :name, "
                   "remoteShortKey = :remoteShortKey, remoteLongKey = :remoteLongKey, clientPath = :clientPath, "
                   "serverPath = :serverPath, syncStatus = :syncStatus, nameValueProperties = :nameValueProperties, "
                   "parentId = :parentId, lastOperationTime = :lastOperationTime, lastSyncTime = :lastSyncTime, "
                   "folderOption = :folderOption, lastOperationType = :lastOperationType, "
                   "syncDriveType = :syncDriveType, rootId = :rootId, syncOption = :syncOption, ownerId = :ownerId, "
                   "privileges = :privileges, serverRoot = :serverRoot, "
                   "productConfigurationId = :productConfigurationId, serverFolderId = :serverFolderId WHERE id = :id");
const QString Add =
    QStringLiteral("INSERT INTO FolderConfiguration (authenticationId, name, remoteShortKey, remoteLongKey, "
                   "clientPath, serverPath, syncStatus, nameValueProperties, parentId, lastOperationTime, "
                   "lastSyncTime, folderOption, lastOperationType, syncDriveType, rootId, syncOption, ownerId, "
                   "privileges, serverRoot, productConfigurationId, serverFolderId) VALUES (:authenticationId, :name, "
                   ":remoteShortKey, :remoteLongKey, :clientPath, :serverPath, :syncStatus, :nameValueProperties, "
                   ":parentId, :lastOperationTime, :lastSyncTime, :folderOption, :lastOperationType, :syncDriveType, "
                   ":rootId, :syncOption, :ownerId, :privileges, :serverRoot, :productConfigurationId, "
                   ":serverFolderId);");
const QString Remove = QStringLiteral("DELETE FROM FolderConfiguration WHERE Id = :id;");
const QString RemoveByRootId = QStringLiteral("DELETE FROM FolderConfiguration WHERE rootId = :folderConfigurationId;");
const QString RemoveFilesByRootId =
    QStringLiteral("DELETE FROM FileConfiguration WHERE rootFolderId = :folderConfigurationId;");
const QString RemoveFilesByFolderId =
    QStringLiteral("DELETE FROM FileConfiguration WHERE folderConfigurationId = :folderConfigurationId;");

const QString CountByAuthenticationId =
    QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE authenticationId = :authenticationId");
const QString CountOutOfSync = QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE syncStatus = 2;");
const QString CountRoots = QStringLiteral("SELECT count(*) from FolderConfiguration WHERE parentId=0;");

} // namespace sync::config::folders_sql
