#pragma once

#include "config/FileConfiguration.h"

#include <QString>

#include <array>

/// The statements on the three tables of files; even their spaces are fixed. A listing whose order the caller chooses
/// ends in a space, after which comes the ORDER BY clause.
namespace sync::config::file_sql {

const QString Select =
    QStringLiteral("SELECT id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, "
                   "lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, "
                   "lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, "
                   "productConfigurationId, serverFileId,  serverFileVersionId, checkSumMD5, fileLinks FROM ");

/// The statements that exist for each of the three tables. They are made once for each table, so that an insert does
/// not have to put the name into its text.
struct TableStatements
{
    explicit TableStatements(QString const& table)
        : name(table)
        , getAll(Select + table)
        , getByRootFolderId(Select + table + QStringLiteral(" WHERE rootFolderId = :rootFolderId "))
        , update(QStringLiteral(
                     "UPDATE %1 SET folderConfigurationId = :folderConfigurationId, name = :name, clientPath = "
                     ":clientPath, serverPath = :serverPath, checkSum = :checkSum, createdDateTime = :createdDateTime, "
                     "lastModifiedDateTime = :lastModifiedDateTime, syncStatus = :syncStatus, lastOperationType = "
                     ":lastOperationType, size = :size, nameValueProperties = :nameValueProperties,  "
                     "lastOperationTime = :lastOperationTime,  rootFolderId = :rootFolderId,  syncOption = "
                     ":syncOption,  parentFileId = :parentFileId,  fileType = :fileType,  ownerId = :ownerId,  "
                     "privileges = :privileges,  productConfigurationId = :productConfigurationId,  serverFileId = "
                     ":serverFileId,  serverFileVersionId = :serverFileVersionId,  checkSumMD5 = :checkSumMD5,  "
                     "fileLinks = :fileLinks  WHERE id = :id")
                     .arg(table))
        , add(QStringLiteral(
                  "INSERT INTO %1 (folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, "
                  "lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, "
                  "rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, productConfigurationId, "
                  "serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES (:folderConfigurationId, :name, "
                  ":clientPath, :serverPath, :checkSum, :createdDateTime, :lastModifiedDateTime, :syncStatus, "
                  ":lastOperationType, :size, :nameValueProperties, :lastOperationTime, :rootFolderId, :syncOption, "
                  ":parentFileId, :fileType, :ownerId, :privileges, :productConfigurationId, :serverFileId, "
                  ":serverFileVersionId, :checkSumMD5, :fileLinks);")
                  .arg(table))
    {}

    QString name;
    QString getAll;
    QString getByRootFolderId;
    QString update;
    QString add;
};

const TableStatements Files(QStringLiteral("FileConfiguration"));
const TableStatements GeneratedFiles(QStringLiteral("GeneratedFileConfiguration"));
const TableStatements BaseFiles(QStringLiteral("BaseFileConfiguration"));
/// For a type without a table: statements that no store can run.
const TableStatements NoFiles{QString()};

inline TableStatements const& TableOf(FileConfigurationType fileType)
{
    switch (fileType) {
    case FileConfigurationTypeFile:
        return Files;
    case FileConfigurationTypeGenerated:
        return GeneratedFiles;
    case FileConfigurationTypeBase:
        return BaseFiles;
    }
    return NoFiles;
}

const QString GetById = Files.getAll + QStringLiteral(" WHERE id = :id");
const QString GetByServerId = Files.getAll + QStringLiteral(" WHERE serverFileId = :serverFileId");
const QString GetByClientPath = Files.getAll + QStringLiteral(" WHERE clientPath = :clientPath");
const QString GetByServerPath = Files.getAll + QStringLiteral(" WHERE serverPath = :serverPath");
const QString GetByFolderId = Files.getAll + QStringLiteral(" WHERE folderConfigurationId = :folderConfigurationId ");
const QString GetByFolderIdAndSyncStatus =
    GetByFolderId + QStringLiteral(" AND syncStatus = :syncStatus ORDER BY name");
/// %1 and %2: the option's number.
const QString GetWithSyncOption = Files.getByRootFolderId + QStringLiteral("AND (syncOption & %1) = %2");
/// %1: the ids of the roots, with commas between them.
const QString GetOfNonExistingRootFolders = Files.getAll + QStringLiteral(" WHERE rootFolderId NOT IN (%1)");

const QString GetGeneratedById = GeneratedFiles.getAll + QStringLiteral(" WHERE id = :id");
const QString GetGeneratedByClientPath = GeneratedFiles.getAll + QStringLiteral(" WHERE clientPath = :clientPath");
const QString GetGeneratedByParentFileId =
    GeneratedFiles.getAll + QStringLiteral(" WHERE parentFileId = :parentFileId ORDER BY id");

const QString Remove = QStringLiteral("DELETE FROM FileConfiguration WHERE Id = :id;");
const QString RemoveByFolderId =
    QStringLiteral("DELETE FROM FileConfiguration WHERE folderConfigurationId = :folderConfigurationId;");
const QString RemoveByRootFolderId =
    QStringLiteral("DELETE FROM FileConfiguration WHERE rootFolderId = :rootFolderId;");
const QString RemoveGenerated = QStringLiteral("DELETE FROM GeneratedFileConfiguration WHERE Id = :id;");
const QString RemoveGeneratedByRootFolderId =
    QStringLiteral("DELETE FROM GeneratedFileConfiguration WHERE rootFolderId = :rootFolderId;");
const QString RemoveGeneratedByParentFileId =
    QStringLiteral("DELETE FROM GeneratedFileConfiguration WHERE parentFileId = :parentFileId;");
const QString UpdateSyncStatus =
    QStringLiteral("UPDATE FileConfiguration SET syncStatus = :syncStatusNotSynced WHERE folderConfigurationId = "
                   ":folderConfigurationId AND syncStatus = :syncStatusSyncing;");

/// The columns that `FileConfigOrderByEnum` names, each ascending and then descending.
const std::array<QString, 11> OrderColumns{QStringLiteral("Id"),
                                           QStringLiteral("Name"),
                                           QStringLiteral("FolderConfigurationId"),
                                           QStringLiteral("ClientPath"),
                                           QStringLiteral("ServerPath"),
                                           QStringLiteral("CheckSum"),
                                           QStringLiteral("CreatedDateTime"),
                                           QStringLiteral("LastModifiedDateTime"),
                                           QStringLiteral("SyncStatus"),
                                           QStringLiteral("LastOperationType"),
                                           QStringLiteral("Size")};

} // namespace sync::config::file_sql
