#include "database/store/StoreTables.h"

namespace sync::database {

namespace {

std::vector<Column> FileColumns()
{
    return {{"folderConfigurationId", ColumnType::Integer},
            {"name", ColumnType::Text},
            {"clientPath", ColumnType::Text},
            {"serverPath", ColumnType::Text},
            {"checkSum", ColumnType::Text},
            {"createdDateTime", ColumnType::DateTime},
            {"lastModifiedDateTime", ColumnType::DateTime},
            {"syncStatus", ColumnType::Integer},
            {"lastOperationType", ColumnType::Integer},
            {"size", ColumnType::Integer},
            {"nameValueProperties", ColumnType::Text},
            {"lastOperationTime", ColumnType::DateTime},
            {"rootFolderId", ColumnType::Integer},
            {"syncOption", ColumnType::Integer},
            {"parentFileId", ColumnType::Integer},
            {"fileType", ColumnType::Integer},
            {"ownerId", ColumnType::Text},
            {"privileges", ColumnType::Integer},
            {"productConfigurationId", ColumnType::Integer},
            {"serverFileId", ColumnType::Text},
            {"serverFileVersionId", ColumnType::Text},
            {"checkSumMD5", ColumnType::Text},
            {"fileLinks", ColumnType::Text}};
}

} // namespace

std::vector<Table> const& ManagerTables()
{
    static std::vector<Table> const tables{
        {"ServerConfiguration",
         {{"alias", ColumnType::Text},
          {"davUrl", ColumnType::Text},
          {"webServiceUrl", ColumnType::Text},
          {"nameValueProperties", ColumnType::Text},
          {"binaryDiffEncoder", ColumnType::Text}}},
        {"AuthenticationConfiguration",
         {{"domain", ColumnType::Text},
          {"domainId", ColumnType::Text},
          {"userName", ColumnType::Text},
          {"encryptedPassword", ColumnType::Text},
          {"nameValueProperties", ColumnType::Text},
          {"serverId", ColumnType::Integer}}},
        {"ProductConfiguration",
         {{"name", ColumnType::Text},
          {"consumerKey", ColumnType::Text},
          {"consumerSecret", ColumnType::Text},
          {"serverId", ColumnType::Integer},
          {"nameValueProperties", ColumnType::Text}}},
        {"FolderConfiguration",
         {{"authenticationId", ColumnType::Integer},
          {"name", ColumnType::Text},
          {"remoteShortKey", ColumnType::Text},
          {"remoteLongKey", ColumnType::Text},
          {"clientPath", ColumnType::Text},
          {"serverPath", ColumnType::Text},
          {"syncStatus", ColumnType::Integer},
          {"nameValueProperties", ColumnType::Text},
          {"parentId", ColumnType::Integer},
          {"lastOperationTime", ColumnType::DateTime},
          {"lastSyncTime", ColumnType::DateTime},
          {"folderOption", ColumnType::Integer},
          {"lastOperationType", ColumnType::Integer},
          {"syncDriveType", ColumnType::Integer},
          {"rootId", ColumnType::Integer},
          {"syncOption", ColumnType::Integer},
          {"ownerId", ColumnType::Text},
          {"privileges", ColumnType::Integer},
          {"serverRoot", ColumnType::Text},
          {"productConfigurationId", ColumnType::Integer},
          {"serverFolderId", ColumnType::Text}}},
        {"FileConfiguration", FileColumns()},
        {"GeneratedFileConfiguration", FileColumns()},
        {"BaseFileConfiguration", FileColumns()},
        {"Schedules",
         {{"folderConfigurationId", ColumnType::Integer},
          {"startTime", ColumnType::DateTime},
          {"expireTime", ColumnType::DateTime},
          {"syncScheduleType", ColumnType::Integer},
          {"syncInterval", ColumnType::Integer}}},
    };
    return tables;
}

std::vector<Index> const& ManagerIndices()
{
    static std::vector<Index> const indices{
        {"ServerConfiguration_urls", "ServerConfiguration", {"davUrl", "webServiceUrl"}},
        {"AuthenticationConfiguration_user", "AuthenticationConfiguration", {"domain", "userName"}},
        {"ProductConfiguration_key", "ProductConfiguration", {"serverId", "consumerKey"}},
        {"FolderConfiguration_account", "FolderConfiguration", {"authenticationId"}},
        {"FolderConfiguration_children", "FolderConfiguration", {"parentId", "name"}},
        {"FolderConfiguration_clientPath", "FolderConfiguration", {"clientPath", "authenticationId"}},
        {"FolderConfiguration_root", "FolderConfiguration", {"rootId"}},
        {"FolderConfiguration_server", "FolderConfiguration", {"serverFolderId"}},
        // Only folders that are out of sync are counted, and usually there are none.
        {"FolderConfiguration_outOfSync", "FolderConfiguration", {"syncStatus"}, "syncStatus = 2"},
        {"FileConfiguration_clientPath", "FileConfiguration", {"clientPath"}},
        {"FileConfiguration_folder", "FileConfiguration", {"folderConfigurationId", "syncStatus", "name"}},
        {"FileConfiguration_root", "FileConfiguration", {"rootFolderId"}},
        {"FileConfiguration_server", "FileConfiguration", {"serverFileId"}},
        {"FileConfiguration_serverPath", "FileConfiguration", {"serverPath"}},
        {"GeneratedFileConfiguration_clientPath", "GeneratedFileConfiguration", {"clientPath"}},
        {"GeneratedFileConfiguration_parent", "GeneratedFileConfiguration", {"parentFileId"}},
        {"GeneratedFileConfiguration_root", "GeneratedFileConfiguration", {"rootFolderId"}},
        {"BaseFileConfiguration_root", "BaseFileConfiguration", {"rootFolderId"}},
        {"Schedules_folder", "Schedules", {"folderConfigurationId"}},
    };
    return indices;
}

} // namespace sync::database
