#pragma once

#include "benchmarks/StatementText.h"
#include "config/AuthenticationStatements.h"
#include "config/FileStatements.h"
#include "config/FolderStatements.h"
#include "config/ProductStatements.h"
#include "config/ServerStatements.h"

/// The managers' statements, for those who run them without managers.
namespace sync::benchmarks::text {

namespace files = config::file_sql;
namespace folders = config::folders_sql;

inline const StatementText AddFile(files::Files.add);
inline const StatementText UpdateFile(files::Files.update);
inline const StatementText FileById(files::GetById);
inline const StatementText FileByPath(files::GetByClientPath);
inline const StatementText FileByServerId(files::GetByServerId);
inline const StatementText FilesOfFolder(files::GetByFolderId + QStringLiteral("ORDER BY Name"));
inline const StatementText AllFiles(files::Files.getAll);
inline const StatementText SyncingToNotSynced(files::UpdateSyncStatus);

inline const StatementText AddFolder(folders::Add);
inline const StatementText UpdateFolder(folders::Update);
inline const StatementText FolderById(folders::GetById);
inline const StatementText FolderByPath(folders::GetByClientPath);
inline const StatementText FolderByServerId(folders::GetByServerId);
inline const StatementText SubFolders(folders::GetByParentId);
inline const StatementText AllFolders(folders::GetAll);
inline const StatementText Roots(folders::GetAllRoots);
inline const StatementText RemoveFolder(folders::Remove);
inline const StatementText RemoveFoldersOfRoot(folders::RemoveByRootId);
inline const StatementText RemoveFilesOfRoot(folders::RemoveFilesByRootId);
inline const StatementText RemoveFilesOfFolder(folders::RemoveFilesByFolderId);
/// Enough to walk a tree; the managers read whole folders here.
inline const StatementText
    SubFolderIds(QStringLiteral("SELECT id FROM FolderConfiguration WHERE parentId = :parentId ORDER BY name"));

inline const StatementText ServerById(config::server_sql::GetById);
inline const StatementText ServerByUrls(config::server_sql::GetByServers);
inline const StatementText ServerOfFile(config::server_sql::GetByFileId);
inline const StatementText AccountById(config::authentication_sql::GetById);
inline const StatementText AccountByUser(config::authentication_sql::GetByDomainAndUser);
inline const StatementText ProductById(config::product_sql::GetById);
inline const StatementText ProductByKey(config::product_sql::GetByServerIdAndConsumerKey);

} // namespace sync::benchmarks::text
