#pragma once

#include <QString>

/// The statements that the folder manager must send. Copies of the library's constants, so that the tests detect a
/// change of those.
namespace tandry::test::folder_texts {

const QString Columns =
    QStringLiteral("SELECT id, authenticationId, name, remoteShortKey, remoteLongKey, clientPath, serverPath, "
                   "syncStatus, nameValueProperties, parentId, lastOperationTime, lastSyncTime, folderOption, "
                   "lastOperationType, syncDriveType, rootId, syncOption, ownerId, privileges, serverRoot, "
                   "productConfigurationId, serverFolderId");

const QString SelectById = Columns + QStringLiteral(" FROM FolderConfiguration WHERE id = :id");
const QString SelectByServerId =
    Columns + QStringLiteral(" FROM FolderConfiguration WHERE serverFolderId = :serverFolderId");
const QString SelectByParentId =
    Columns + QStringLiteral(" FROM FolderConfiguration WHERE parentId = :parentId ORDER BY name");
const QString SelectByClientPath = Columns + QStringLiteral(" FROM FolderConfiguration WHERE clientPath = :clientPath");
const QString SelectByClientPathAndAuthenticationId =
    Columns + QStringLiteral(" FROM FolderConfiguration WHERE clientPath = :clientPath AND authenticationId = "
                             ":authenticationId");
const QString SelectByAuthenticationId =
    Columns + QStringLiteral(" FROM FolderConfiguration WHERE authenticationId = :authenticationId");
const QString SelectByRootId = Columns + QStringLiteral(" FROM FolderConfiguration WHERE rootId = :rootId");
const QString SelectNotInRoots = Columns + QStringLiteral(" FROM FolderConfiguration WHERE rootId NOT IN (%1)");
const QString SelectAll = Columns + QStringLiteral(" FROM FolderConfiguration");
const QString SelectRoots = Columns + QStringLiteral(" FROM FolderConfiguration WHERE parentId = '0'");
const QString Update =
    QStringLiteral("UPDATE FolderConfiguration SET authenticationId = :authenticationId, name = :name, "
                   "remoteShortKey = :remoteShortKey, remoteLongKey = :remoteLongKey, clientPath = :clientPath, "
                   "serverPath = :serverPath, syncStatus = :syncStatus, nameValueProperties = "
                   ":nameValueProperties, parentId = :parentId, lastOperationTime = :lastOperationTime, "
                   "lastSyncTime = :lastSyncTime, folderOption = :folderOption, lastOperationType = "
                   ":lastOperationType, syncDriveType = :syncDriveType, rootId = :rootId, syncOption = "
                   ":syncOption, ownerId = :ownerId, privileges = :privileges, serverRoot = :serverRoot, "
                   "productConfigurationId = :productConfigurationId, serverFolderId = :serverFolderId WHERE id "
                   "= :id");
const QString Insert =
    QStringLiteral("INSERT INTO FolderConfiguration (authenticationId, name, remoteShortKey, remoteLongKey, "
                   "clientPath, serverPath, syncStatus, nameValueProperties, parentId, lastOperationTime, "
                   "lastSyncTime, folderOption, lastOperationType, syncDriveType, rootId, syncOption, ownerId, "
                   "privileges, serverRoot, productConfigurationId, serverFolderId) VALUES (:authenticationId, "
                   ":name, :remoteShortKey, :remoteLongKey, :clientPath, :serverPath, :syncStatus, "
                   ":nameValueProperties, :parentId, :lastOperationTime, :lastSyncTime, :folderOption, "
                   ":lastOperationType, :syncDriveType, :rootId, :syncOption, :ownerId, :privileges, "
                   ":serverRoot, :productConfigurationId, :serverFolderId);");
const QString DeleteById = QStringLiteral("DELETE FROM FolderConfiguration WHERE Id = :id;");
const QString DeleteFilesByRoot =
    QStringLiteral("DELETE FROM FileConfiguration WHERE rootFolderId = :folderConfigurationId;");
const QString DeleteByRoot = QStringLiteral("DELETE FROM FolderConfiguration WHERE rootId = :folderConfigurationId;");
const QString CountByAuthentication =
    QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE authenticationId = :authenticationId");
const QString CountOutOfSync = QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE syncStatus = 2;");
const QString CountRoots = QStringLiteral("SELECT count(*) from FolderConfiguration WHERE parentId=0;");
const QString DeleteFilesByFolder =
    QStringLiteral("DELETE FROM FileConfiguration WHERE folderConfigurationId = :folderConfigurationId;");

/// Returns the name of the constant with this text, or the text itself.
inline QString NameOf(QString const& statement)
{
    struct Known
    {
        QString const& text;
        char const* name;
    };
    for (Known const& known : {
             Known{SelectById, "SelectById"},
             Known{SelectByServerId, "SelectByServerId"},
             Known{SelectByParentId, "SelectByParentId"},
             Known{SelectByClientPath, "SelectByClientPath"},
             Known{SelectByClientPathAndAuthenticationId, "SelectByClientPathAndAuthenticationId"},
             Known{SelectByAuthenticationId, "SelectByAuthenticationId"},
             Known{SelectByRootId, "SelectByRootId"},
             Known{SelectNotInRoots, "SelectNotInRoots"},
             Known{SelectAll, "SelectAll"},
             Known{SelectRoots, "SelectRoots"},
             Known{Update, "Update"},
             Known{Insert, "Insert"},
             Known{DeleteById, "DeleteById"},
             Known{DeleteFilesByRoot, "DeleteFilesByRoot"},
             Known{DeleteByRoot, "DeleteByRoot"},
             Known{CountByAuthentication, "CountByAuthentication"},
             Known{CountOutOfSync, "CountOutOfSync"},
             Known{CountRoots, "CountRoots"},
             Known{DeleteFilesByFolder, "DeleteFilesByFolder"},
         }) {
        if (statement == known.text)
            return QString::fromUtf8(known.name);
    }
    return statement;
}

} // namespace tandry::test::folder_texts
