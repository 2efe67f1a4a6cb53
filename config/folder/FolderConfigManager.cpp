#include "config/FolderConfigManager.h"

#include "config/CommonConstants.h"
#include "config/PathRules.h"
#include "config/folder/FolderCaches.h"
#include "config/folder/FolderColumns.h"
#include "config/folder/FolderInRemoval.h"
#include "config/folder/FolderStatements.h"
#include "config/folder/PathRelation.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"
#include "interf/IRefreshNativeFileViewer.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>

namespace sync::config {

using sync::interf::IQSqlQueryWrapper;

const int FolderConfigManager::_allFoldersCacheRefreshRateMsec = 1000;

namespace {

Q_NEVER_INLINE bool RemoveFilesOf(sync::interf::factory::IDatabaseFactory& factory, int folderConfigurationId)
{
    return store::Write(
        factory, folders_sql::RemoveFilesByFolderId, store::Values(bind::folderConfigurationId(folderConfigurationId)));
}

} // namespace

FolderConfigManager::FolderConfigManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory,
    std::shared_ptr<sync::interf::IRefreshNativeFileViewer> refreshNativeFileViewer)
    : DatabaseConfigurationManager(std::move(databaseFactory))
    , _caches(std::make_unique<FolderCaches>(
          [this] { return _GetAll(); }, [this] { return _GetAllRootFolders(); }, _allFoldersCacheRefreshRateMsec))
    , _refreshNativeFileViewer(std::move(refreshNativeFileViewer))
{}

FolderConfigManager::~FolderConfigManager() = default;

auto FolderConfigManager::_Rows()
{
    return store::Rows<&FolderConfigManager::_PopulateFolderConfiguration,
                       &FolderConfigManager::_PopulateFolderConfigurations>(*_databaseFactory, *this);
}

void FolderConfigManager::_PopulateFolderConfiguration(sync::interf::IQSqlQueryWrapper* query,
                                                       FolderConfiguration& folder)
{
    store::Populate(*query, folder, store::Documents(*this));
}

void FolderConfigManager::_PopulateFolderConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                        QVector<FolderConfiguration>& folders)
{
    store::AppendRows(*query, folders, [&](auto& record) { _PopulateFolderConfiguration(query, record); });
}

// Lookups and listings.

FolderConfiguration FolderConfigManager::GetFolderConfigurationById(int folderConfigurationId)
{
    return _Rows().First(folders_sql::GetById, bind::id(folderConfigurationId));
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByServerId(QString serverFolderId)
{
    return _Rows().FirstIfAny(folders_sql::GetByServerId, bind::serverFolderId(serverFolderId));
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByClientPath(QString clientPath)
{
    return _Rows().First(folders_sql::GetByClientPath, bind::clientPath(clientPath));
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath,
                                                                                               int authenticationId)
{
    return _Rows().First(folders_sql::GetByClientPathAndAuthenticationId,
                         bind::clientPath(clientPath),
                         bind::authenticationId(authenticationId));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationByParentId(int folderConfigurationId)
{
    return _Rows().All(folders_sql::GetByParentId, bind::parentId(folderConfigurationId));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsByAuthenticationId(int authenticationId)
{
    return _Rows().All(folders_sql::GetByAuthenticationId, bind::authenticationId(authenticationId));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsByRootId(int rootFolderId)
{
    return _Rows().All(folders_sql::GetByRootId, bind::rootId(rootFolderId));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders()
{
    QVector<FolderConfiguration> const roots = GetAllRootFolders();
    QStringList ids;
    for (FolderConfiguration const& root : roots)
        ids.append(QString::number(root.id));
    return _Rows().All(folders_sql::GetOfNonExistingRoots.arg(ids.join(QLatin1Char(','))));
}

QVector<FolderConfiguration> FolderConfigManager::GetAll()
{
    return _caches->allFolders.GetValue();
}

QVector<FolderConfiguration> FolderConfigManager::GetAllRootFolders()
{
    return _caches->allRootFolders.GetValue();
}

void FolderConfigManager::ClearCaches()
{
    _caches->allFolders.Clear();
    _caches->allRootFolders.Clear();
}

// The refills run under their cache's lock, so they call none of the three operations above.

QVector<FolderConfiguration> FolderConfigManager::_GetAll()
{
    return _Rows().All(folders_sql::GetAll);
}

QVector<FolderConfiguration> FolderConfigManager::_GetAllRootFolders()
{
    return _Rows().All(folders_sql::GetAllRoots);
}

// Counts.

bool FolderConfigManager::IsInExistingAuthentication(int authenticationId)
{
    std::optional<int> const count = store::Count(*_databaseFactory,
                                                  folders_sql::CountByAuthenticationId,
                                                  store::Values(bind::authenticationId(authenticationId)));
    return !count || *count > 0; // an account that can't be looked up counts as used
}

bool FolderConfigManager::IsAnyFolderConfigOutOfSync()
{
    std::optional<int> const count = store::Count(*_databaseFactory, folders_sql::CountOutOfSync, store::Values());
    return !count || *count > 0; // folders that can't be looked up count as out of sync
}

int FolderConfigManager::GetRootFolderConfigurationCount()
{
    return store::Count(*_databaseFactory, folders_sql::CountRoots, store::Values()).value_or(-1);
}

// Writes.

bool FolderConfigManager::Update(FolderConfiguration folderConfiguration)
{
    // The cached listings stay: they may lag behind an update, and a caller who can't wait clears them.
    return store::Write(*_databaseFactory,
                        folders_sql::Update,
                        store::ColumnsForUpdate(folderConfiguration, store::Documents(*this)),
                        [&](IQSqlQueryWrapper&) { _RefreshNativeFileViewerIfSyncStatusChanged(folderConfiguration); });
}

bool FolderConfigManager::Add(FolderConfiguration& folderConfiguration)
{
    // A parent of -1 is also what a failed look-up of the parent leaves behind.
    bool const hasRoot = folderConfiguration.isRoot() || folderConfiguration.rootId != -1;
    if (!hasRoot || folderConfiguration.parentId == -1)
        return false;

    return store::Insert(*_databaseFactory,
                         folders_sql::Add,
                         store::ColumnsForInsert(folderConfiguration, store::Documents(*this)),
                         folderConfiguration.id,
                         [&] {
                             if (folderConfiguration.rootId == -1) {
                                 folderConfiguration.rootId = folderConfiguration.id;
                                 static_cast<void>(Update(folderConfiguration)); // the folder is on record either way
                             }
                             ClearCaches();
                             _RefreshNativeFileViewerIfSyncStatusChanged(
                                 folderConfiguration); // for a new root once more
                         });
}

namespace {

Q_NEVER_INLINE void Find(FolderConfigManager& manager, QString const& clientPath, FolderConfiguration& folder)
{
    folder = manager.GetFolderConfigurationByClientPath(clientPath);
}

Q_NEVER_INLINE QString ParentOf(QString const& path)
{
    return QDir::cleanPath(QFileInfo(path).absolutePath());
}

Q_NEVER_INLINE void AddBelow(FolderConfigManager& manager,
                             int parentId,
                             QString const& path,
                             FolderConfiguration const& rootConfig,
                             FolderConfiguration& folder)
{
    QString const serverPath = ReplacePathPrefix(path, rootConfig.getClientPath(), rootConfig.getServerPath());

    FolderConfiguration added;
    added.setRootId(rootConfig.getId());
    added.setAuthenticationId(rootConfig.getAuthenticationId());
    added.setProductConfigurationId(rootConfig.getProductConfigurationId());
    added.setName(QFileInfo(path).fileName());
    added.setRemoteShortKey(rootConfig.getRemoteShortKey());
    added.setRemoteLongKey(serverPath);
    added.setClientPath(path);
    added.setServerPath(serverPath);
    added.setParentId(parentId);
    added.setSyncStatus(FolderStatusPlaced);
    static_cast<void>(manager.Add(added)); // a failure shows in the id
    folder = added;
}

} // namespace

/// Calls itself for each level of the path. So its frame must stay small, like that of `RemoveFolderAndChildren`, and
/// holds no record: the one of the parent lies on the heap, and so does the one that is returned to a level below.
FolderConfiguration FolderConfigManager::AddFolderAndParent(QString const& absolutePath,
                                                            FolderConfiguration const& rootConfig)
{
    FolderConfiguration folder;
    if (absolutePath.isEmpty())
        return folder;

    QString const path = QDir::cleanPath(absolutePath);
    Find(*this, path, folder);
    if (folder.id != -1)
        return folder;

    QString const parentPath = ParentOf(path);
    if (parentPath.compare(path, Qt::CaseInsensitive) == 0)
        return folder; // nothing is above the root of a file system; `Add` refuses what has this for a parent

    // NOLINTNEXTLINE(modernize-make-unique): `make_unique` would need a record in the frame
    std::unique_ptr<FolderConfiguration const> const parent(
        new FolderConfiguration(AddFolderAndParent(parentPath, rootConfig)));
    AddBelow(*this, parent->id, path, rootConfig, folder);
    return folder;
}

// Removal.

bool FolderConfigManager::Remove(int folderConfigurationId)
{
    // Read ahead of the delete, for the shell; a folder that isn't there is removed all the same.
    QString clientPath = GetFolderConfigurationById(folderConfigurationId).clientPath;
    return store::Write(*_databaseFactory,
                        folders_sql::Remove,
                        store::Values(bind::id(folderConfigurationId)),
                        [&](IQSqlQueryWrapper&) {
                            ClearCaches();
                            RefreshNativeFileViewer(clientPath);
                        });
}

/// Calls itself for each level of the tree. So its frame must stay small, and what needs more of the stack is called.
bool FolderConfigManager::RemoveFolderAndChildren(int folderConfigurationId)
{
    FolderInRemoval const folder(*this, folderConfigurationId);
    if (folder.isItsOwnAncestor())
        return false;
    QVector<FolderConfiguration> const children = GetFolderConfigurationByParentId(folderConfigurationId);
    for (FolderConfiguration const& child : children) {
        if (!RemoveFolderAndChildren(child.id))
            return false;
    }
    return Remove(folderConfigurationId) && RemoveFilesOf(*_databaseFactory, folderConfigurationId);
}

bool FolderConfigManager::CleanRootFolder(int folderConfigurationId)
{
    sync::database::TransactionalScope scope; // the three deletes become durable together
    bool const removed = Remove(folderConfigurationId) && _RemoveFileConfigurationsByRootId(folderConfigurationId) &&
                         _RemoveFolderConfigurationsByRootId(folderConfigurationId);
    static_cast<void>(scope.commit()); // whatever the outcome: what was removed stays removed
    return removed;
}

bool FolderConfigManager::_RemoveFileConfigurationsByRootId(int rootFolderId)
{
    return store::Write(
        *_databaseFactory, folders_sql::RemoveFilesByRootId, store::Values(bind::folderConfigurationId(rootFolderId)));
}

bool FolderConfigManager::_RemoveFolderConfigurationsByRootId(int rootFolderId)
{
    // Read ahead of the delete, for the shell.
    QVector<FolderConfiguration> const folders = GetFolderConfigurationsByRootId(rootFolderId);
    return store::Write(*_databaseFactory,
                        folders_sql::RemoveByRootId,
                        store::Values(bind::folderConfigurationId(rootFolderId)),
                        [&](IQSqlQueryWrapper&) {
                            ClearCaches();
                            for (FolderConfiguration const& folder : folders) {
                                QString clientPath = folder.clientPath;
                                RefreshNativeFileViewer(clientPath);
                            }
                        });
}

// Path rules.

bool FolderConfigManager::IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption)
{
    QString absolute = QDir(path).absolutePath();
    if (absolute.contains(SyncTempMarker, Qt::CaseInsensitive))
        return false;

    QVector<FolderConfiguration> const roots = GetAllRootFolders();
    for (FolderConfiguration const& root : roots) {
        if (authenticationId >= 0 && authenticationId != root.authenticationId)
            continue;
        PathRelation const relation = RelateToFolder(absolute, root.clientPath);
        if (relation == PathRelation::Outside)
            continue;
        if (relation != PathRelation::Below || !honourFolderOption || root.folderOption != FolderOptionTopFilesOnly)
            return true;

        // Only a file directly in the root counts. The slash stays for the roots that follow, each of which may add
        // one more.
        if (QFileInfo(absolute).isDir())
            absolute.append(QLatin1Char('/'));
        if (absolute.lastIndexOf(QLatin1Char('/')) <= root.clientPath.size())
            return true;
    }
    return false;
}

bool FolderConfigManager::AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                                   int authenticationId,
                                                                   QString& matchingServerFolder)
{
    matchingServerFolder.clear();
    if (serverPath.isEmpty())
        return false;

    QString const path = QDir::cleanPath(serverPath);
    QVector<FolderConfiguration> const roots = GetAllRootFolders();
    for (FolderConfiguration const& root : roots) {
        if (root.authenticationId == authenticationId && PathsOverlap(path, root.serverPath)) {
            matchingServerFolder = root.serverPath;
            return true;
        }
    }
    return false;
}

// Shell refresh.

void FolderConfigManager::RefreshNativeFileViewer()
{
    // Past the cache: the shell is to hear of each root that is there now.
    QVector<FolderConfiguration> const roots = _GetAllRootFolders();
    for (FolderConfiguration const& root : roots) {
        QString clientPath = root.getClientPath();
        RefreshNativeFileViewer(clientPath);
    }
}

void FolderConfigManager::RefreshNativeFileViewer(QString& clientPath)
{
    if (_refreshNativeFileViewer)
        _refreshNativeFileViewer->Refresh(clientPath);
}

void FolderConfigManager::_RefreshNativeFileViewerIfSyncStatusChanged(FolderConfiguration& folderConfiguration)
{
    if (_refreshNativeFileViewer && folderConfiguration.syncStatusChanged)
        _refreshNativeFileViewer->Refresh(folderConfiguration.clientPath);
}

} // namespace sync::config
