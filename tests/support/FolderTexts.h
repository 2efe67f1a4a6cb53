#pragma once

#include "support/StatementList.h"

#include <QString>

/// The statements that the folder manager must send. Texts with all columns come from tests/data/statements.txt; the
/// others are copies of the library's constants, so that the tests detect a change of those.
namespace tandry::test::folder_texts {

inline QString const SelectAll = ListedStatement("SELECT id, authenticationId, ", " FROM FolderConfiguration");
inline QString const SelectById = SelectAll + QStringLiteral(" WHERE id = :id");
inline QString const SelectByServerId = SelectAll + QStringLiteral(" WHERE serverFolderId = :serverFolderId");
inline QString const SelectByParentId = SelectAll + QStringLiteral(" WHERE parentId = :parentId ORDER BY name");
inline QString const SelectByClientPath = SelectAll + QStringLiteral(" WHERE clientPath = :clientPath");
inline QString const SelectByClientPathAndAuthenticationId =
    SelectAll + QStringLiteral(" WHERE clientPath = :clientPath AND authenticationId = "
                               ":authenticationId");
inline QString const SelectByAuthenticationId =
    SelectAll + QStringLiteral(" WHERE authenticationId = :authenticationId");
inline QString const SelectByRootId = SelectAll + QStringLiteral(" WHERE rootId = :rootId");
inline QString const SelectNotInRoots = SelectAll + QStringLiteral(" WHERE rootId NOT IN (%1)");
inline QString const SelectRoots = SelectAll + QStringLiteral(" WHERE parentId = '0'");
inline QString const Update = ListedStatement("UPDATE FolderConfiguration SET ", " WHERE id = :id");
inline QString const Insert = ListedStatement("INSERT INTO FolderConfiguration ", ");");
inline QString const DeleteById = QStringLiteral("DELETE FROM FolderConfiguration WHERE Id = :id;");
inline QString const DeleteFilesByRoot =
    QStringLiteral("DELETE FROM FileConfiguration WHERE rootFolderId = :folderConfigurationId;");
inline QString const DeleteByRoot =
    QStringLiteral("DELETE FROM FolderConfiguration WHERE rootId = :folderConfigurationId;");
inline QString const CountByAuthentication =
    QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE authenticationId = :authenticationId");
inline QString const CountOutOfSync = QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE syncStatus = 2;");
inline QString const CountRoots = QStringLiteral("SELECT count(*) from FolderConfiguration WHERE parentId=0;");
inline QString const DeleteFilesByFolder =
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
