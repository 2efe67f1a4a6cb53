#pragma once

#include <QString>

/// Statements of the managers, character by character. The suite uses no others, because a store may support only
/// these.
namespace tandry::storesuite::statements {

inline QString const ServerColumns =
    QStringLiteral("SELECT id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder "
                   "FROM ServerConfiguration");
inline QString const GetServers = ServerColumns + QStringLiteral(";");
inline QString const GetServerById = ServerColumns + QStringLiteral(" WHERE id = :id;");
inline QString const GetServerByUrls =
    ServerColumns + QStringLiteral(" WHERE davUrl = :davUrl AND webServiceUrl = :webServiceUrl;");
inline QString const GetServerByAccount =
    QStringLiteral("SELECT SC.id, SC.alias, SC.davUrl, SC.webServiceUrl, SC.nameValueProperties, SC.binaryDiffEncoder "
                   "FROM ServerConfiguration AS SC JOIN AuthenticationConfiguration AS AC ON SC.id = AC.ServerID "
                   "WHERE AC.id = :id;");
inline QString const AddServer = QStringLiteral(
    "INSERT INTO ServerConfiguration (alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder) VALUES "
    "(:alias, :davUrl, :webServiceUrl, :nameValueProperties, :binaryDiffEncoder);");
inline QString const UpdateServer =
    QStringLiteral("UPDATE ServerConfiguration SET alias = :alias, davUrl = :davUrl, webServiceUrl = :webServiceUrl, "
                   "nameValueProperties = :nameValueProperties, binaryDiffEncoder = :binaryDiffEncoder "
                   "WHERE id = :id;");
inline QString const RemoveServer = QStringLiteral("DELETE FROM ServerConfiguration WHERE Id = :id;");

inline QString const AddAccount =
    QStringLiteral("INSERT INTO AuthenticationConfiguration "
                   "(domain, domainId, userName, encryptedPassword, nameValueProperties, serverId) VALUES "
                   "(:domain, :domainId, :userName, :encryptedPassword, :nameValueProperties, :serverId);");
inline QString const ClearPassword =
    QStringLiteral("UPDATE AuthenticationConfiguration SET encryptedPassword = :encryptedPassword "
                   "WHERE domain = :domain AND userName = :userName");
inline QString const GetAccounts =
    QStringLiteral("SELECT id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId "
                   "FROM AuthenticationConfiguration");
inline QString const GetAccountNames =
    QStringLiteral("SELECT DISTINCT domain, userName FROM AuthenticationConfiguration");

inline QString const GetProducts =
    QStringLiteral("SELECT id, name, consumerKey, consumerSecret, serverId, nameValueProperties "
                   "FROM ProductConfiguration");
inline QString const GetProductById = GetProducts + QStringLiteral(" WHERE id = :id");
inline QString const AddProduct = QStringLiteral(
    "INSERT INTO ProductConfiguration (name, consumerKey, consumerSecret, serverId, nameValueProperties) VALUES "
    "(:name, :consumerKey, :consumerSecret, :serverId, :nameValueProperties);");
inline QString const UpdateProduct =
    QStringLiteral("UPDATE ProductConfiguration SET name = :name, consumerKey = :consumerKey, consumerSecret = "
                   ":consumerSecret, serverId = :serverId, nameValueProperties = :nameValueProperties WHERE id = :id");

inline QString const GetFolders =
    QStringLiteral("SELECT id, authenticationId, name, remoteShortKey, remoteLongKey, clientPath, serverPath, "
                   "syncStatus, nameValueProperties, parentId, lastOperationTime, lastSyncTime, folderOption, "
                   "lastOperationType, syncDriveType, rootId, syncOption, ownerId, privileges, serverRoot, "
                   "productConfigurationId, serverFolderId FROM FolderConfiguration");
inline QString const GetFolderById = GetFolders + QStringLiteral(" WHERE id = :id");
inline QString const GetFolderByClientPath = GetFolders + QStringLiteral(" WHERE clientPath = :clientPath");
inline QString const GetFoldersByParent = GetFolders + QStringLiteral(" WHERE parentId = :parentId ORDER BY name");
inline QString const GetRoots = GetFolders + QStringLiteral(" WHERE parentId = '0'");
inline QString const CountRoots = QStringLiteral("SELECT count(*) from FolderConfiguration WHERE parentId=0;");
inline QString const CountOutOfSync = QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE syncStatus = 2;");
inline QString const AddFolder =
    QStringLiteral("INSERT INTO FolderConfiguration (authenticationId, name, remoteShortKey, remoteLongKey, "
                   "clientPath, serverPath, syncStatus, nameValueProperties, parentId, lastOperationTime, "
                   "lastSyncTime, folderOption, lastOperationType, syncDriveType, rootId, syncOption, ownerId, "
                   "privileges, serverRoot, productConfigurationId, serverFolderId) VALUES (:authenticationId, :name, "
                   ":remoteShortKey, :remoteLongKey, :clientPath, :serverPath, :syncStatus, :nameValueProperties, "
                   ":parentId, :lastOperationTime, :lastSyncTime, :folderOption, :lastOperationType, :syncDriveType, "
                   ":rootId, :syncOption, :ownerId, :privileges, :serverRoot, :productConfigurationId, "
                   ":serverFolderId);");

/// %1 is one of `FileTables`.
inline QString const GetFiles =
    QStringLiteral("SELECT id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, "
                   "lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, "
                   "lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, "
                   "productConfigurationId, serverFileId,  serverFileVersionId, checkSumMD5, fileLinks FROM %1");
/// %1 is one of `FileTables`.
inline QString const AddFile =
    QStringLiteral("INSERT INTO %1 (folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, "
                   "lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, "
                   "rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, productConfigurationId, "
                   "serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES (:folderConfigurationId, :name, "
                   ":clientPath, :serverPath, :checkSum, :createdDateTime, :lastModifiedDateTime, :syncStatus, "
                   ":lastOperationType, :size, :nameValueProperties, :lastOperationTime, :rootFolderId, :syncOption, "
                   ":parentFileId, :fileType, :ownerId, :privileges, :productConfigurationId, :serverFileId, "
                   ":serverFileVersionId, :checkSumMD5, :fileLinks);");
inline QString const FileTables[] = {QStringLiteral("FileConfiguration"),
                                     QStringLiteral("GeneratedFileConfiguration"),
                                     QStringLiteral("BaseFileConfiguration")};
inline QString const EndSyncing =
    QStringLiteral("UPDATE FileConfiguration SET syncStatus = :syncStatusNotSynced WHERE folderConfigurationId = "
                   ":folderConfigurationId AND syncStatus = :syncStatusSyncing;");

inline QString const GetDefaultSchedule =
    QStringLiteral("SELECT id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval "
                   "FROM Schedules WHERE folderConfigurationId = 0");
inline QString const GetScheduleById =
    QStringLiteral("SELECT id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval "
                   "FROM Schedules WHERE id = :id");
inline QString const UpdateSchedule =
    QStringLiteral("UPDATE Schedules SET folderConfigurationId = :folderConfigurationId, startTime = :startTime, "
                   "expireTime = :expireTime, syncScheduleType = :syncScheduleType, syncInterval = :syncInterval  "
                   "WHERE id = :id");

} // namespace tandry::storesuite::statements
