#include "config/FolderConfigManager.h"

#include "config/CommonConstants.h"
#include "config/FolderCaches.h"
#include "config/FolderStatements.h"
#include "config/PathRules.h"
#include "config/StoreOperations.h"
#include "interf/IRefreshNativeFileViewer.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <optional>
#include <utility>

namespace sync::config {

namespace sql = folders_sql;
using sync::interf::IQSqlQueryWrapper;

const int FolderConfigManager::_allFoldersCacheRefreshRateMsec = 1000;

FolderConfigManager::FolderConfigManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory,
    std::shared_ptr<sync::interf::IRefreshNativeFileViewer> refreshNativeFileViewer)
    : DatabaseConfigurationManager(std::move(databaseFactory))
    , _caches(std::make_unique<FolderCaches>(
          [this] { return _GetAll(); }, [this] { return _GetAllRootFolders(); }, _allFoldersCacheRefreshRateMsec))
    , _refreshNativeFileViewer(std::move(refreshNativeFileViewer))
{}

FolderConfigManager::~FolderConfigManager() = default;

// The table's columns: bound, then read.

void FolderConfigManager::_BindFolderConfiguration(IQSqlQueryWrapper& query, FolderConfiguration const& folder)
{
    BindAll(query,
            bind::authenticationId(folder.authenticationId),
            bind::name(folder.name),
            bind::remoteShortKey(folder.remoteShortKey),
            bind::remoteLongKey(folder.remoteLongKey),
            bind::clientPath(folder.clientPath),
            bind::serverPath(folder.serverPath),
            bind::syncStatus(folder.syncStatus),
            bind::nameValueProperties(ToNameValuePropertyString(folder.nameValueProperties)),
            bind::parentId(folder.parentId),
            bind::lastOperationTime(folder.lastOperationTime),
            bind::lastSyncTime(folder.getLastSyncTime()),
            bind::folderOption(folder.folderOption),
            bind::lastOperationType(folder.lastOperationType),
            bind::syncDriveType(folder.syncDriveType),
            bind::rootId(folder.rootId),
            bind::syncOption(folder.syncOption),
            bind::ownerId(folder.ownerId),
            bind::privileges(folder.privileges),
            bind::serverRoot(folder.serverRoot),
            bind::productConfigurationId(folder.productConfigurationId),
            bind::serverFolderId(folder.serverFolderId));
}

void FolderConfigManager::_PopulateFolderConfiguration(IQSqlQueryWrapper* query, FolderConfiguration& folder)
{
    if (!query->isValid())
        return;
    folder.id = store::Int(query->value(0));
    folder.authenticationId = store::Int(query->value(1));
    folder.name = query->value(2).toString();
    folder.remoteShortKey = query->value(3).toString();
    folder.remoteLongKey = query->value(4).toString();
    folder.clientPath = query->value(5).toString();
    folder.serverPath = query->value(6).toString();
    folder.setSyncStatus(static_cast<FolderSynchronizationStatus>(store::Int(query->value(7))));
    folder.resetSyncStatusChanged();
    folder.nameValueProperties = ToNameValuePropertyMap(query->value(8).toString());
    folder.parentId = store::Int(query->value(9));
    folder.lastOperationTime = query->value(10).toDateTime();
    folder.lastOperationTime.setTimeSpec(Qt::UTC);
    folder.setLastSyncTime(query->value(11).toDateTime());
    folder.folderOption = static_cast<SynchronizationFolderOption>(store::Int(query->value(12)));
    folder.lastOperationType = static_cast<FolderOperationType>(store::Int(query->value(13)));
    folder.syncDriveType = static_cast<DriveType>(store::Int(query->value(14)));
    folder.rootId = store::Int(query->value(15));
    folder.syncOption = static_cast<FolderSyncOption>(store::Int(query->value(16)));
    folder.ownerId = query->value(17).toString();
    folder.privileges = static_cast<FolderPrivileges>(store::Int(query->value(18)));
    folder.serverRoot = query->value(19).toString();
    folder.productConfigurationId = store::Int(query->value(20));
    folder.serverFolderId = query->value(21).toString();
}

void FolderConfigManager::_PopulateFolderConfigurations(IQSqlQueryWrapper* query, QVector<FolderConfiguration>& folders)
{
    store::AppendRows(query, folders, [this](auto* row, auto& folder) { _PopulateFolderConfiguration(row, folder); });
}

// Lookups and listings.

template <class Bind>
FolderConfiguration FolderConfigManager::_FindOne(QString const& statement, Bind const& bind)
{
    return store::FindOne<FolderConfiguration>(*_databaseFactory, statement, bind, [this](auto* query, auto& folder) {
        _PopulateFolderConfiguration(query, folder);
    });
}

template <class Bind>
QVector<FolderConfiguration> FolderConfigManager::_FindAll(QString const& statement, Bind const& bind)
{
    return store::FindAll<QVector<FolderConfiguration>>(
        *_databaseFactory, statement, bind, [this](auto* query, auto& folders) {
            _PopulateFolderConfigurations(query, folders);
        });
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationById(int folderConfigurationId)
{
    return _FindOne(sql::GetById, store::Values(bind::id(folderConfigurationId)));
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByServerId(QString serverFolderId)
{
    return store::FindOneIfAny<FolderConfiguration>(
        *_databaseFactory,
        sql::GetByServerId,
        store::Values(bind::serverFolderId(serverFolderId)),
        [this](auto* query, auto& folder) { _PopulateFolderConfiguration(query, folder); });
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByClientPath(QString clientPath)
{
    return _FindOne(sql::GetByClientPath, store::Values(bind::clientPath(clientPath)));
}

FolderConfiguration FolderConfigManager::GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath,
                                                                                               int authenticationId)
{
    return _FindOne(sql::GetByClientPathAndAuthenticationId,
                    store::Values(bind::clientPath(clientPath), bind::authenticationId(authenticationId)));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationByParentId(int folderConfigurationId)
{
    return _FindAll(sql::GetByParentId, store::Values(bind::parentId(folderConfigurationId)));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsByAuthenticationId(int authenticationId)
{
    return _FindAll(sql::GetByAuthenticationId, store::Values(bind::authenticationId(authenticationId)));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsByRootId(int rootFolderId)
{
    return _FindAll(sql::GetByRootId, store::Values(bind::rootId(rootFolderId)));
}

QVector<FolderConfiguration> FolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders()
{
    QVector<FolderConfiguration> const roots = GetAllRootFolders();
    QStringList ids;
    for (FolderConfiguration const& root : roots)
        ids.append(QString::number(root.id));
    return _FindAll(sql::GetOfNonExistingRoots.arg(ids.join(QLatin1Char(','))), store::Values());
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
    return _FindAll(sql::GetAll, store::Values());
}

QVector<FolderConfiguration> FolderConfigManager::_GetAllRootFolders()
{
    return _FindAll(sql::GetAllRoots, store::Values());
}

// Counts.

bool FolderConfigManager::IsInExistingAuthentication(int authenticationId)
{
    std::optional<int> const count = store::Count(
        *_databaseFactory, sql::CountByAuthenticationId, store::Values(bind::authenticationId(authenticationId)));
    return !count || *count > 0; // an account that can't be looked up counts as used
}

bool FolderConfigManager::IsAnyFolderConfigOutOfSync()
{
    std::optional<int> const count = store::Count(*_databaseFactory, sql::CountOutOfSync, store::Values());
    return !count || *count > 0; // folders that can't be looked up count as out of sync
}

int FolderConfigManager::GetRootFolderConfigurationCount()
{
    return store::Count(*_databaseFactory, sql::CountRoots, store::Values()).value_or(-1);
}

// Writes.

bool FolderConfigManager::Update(FolderConfiguration folderConfiguration)
{
    // The cached listings stay: they may lag behind an update, and a caller who can't wait clears them.
    return store::Write(
        *_databaseFactory,
        sql::Update,
        [&](IQSqlQueryWrapper& query) {
            BindAll(query, bind::id(folderConfiguration.id));
            _BindFolderConfiguration(query, folderConfiguration);
        },
        [&](IQSqlQueryWrapper&) { _RefreshNativeFileViewerIfSyncStatusChanged(folderConfiguration); });
}

bool FolderConfigManager::Add(FolderConfiguration& folderConfiguration)
{
    // A parent of -1 is also what a failed look-up of the parent leaves behind.
    bool const hasRoot = folderConfiguration.isRoot() || folderConfiguration.rootId != -1;
    if (!hasRoot || folderConfiguration.parentId == -1)
        return false;

    return store::Insert(
        *_databaseFactory,
        sql::Add,
        [&](IQSqlQueryWrapper& query) { _BindFolderConfiguration(query, folderConfiguration); },
        folderConfiguration.id,
        [&] {
            if (folderConfiguration.rootId == -1) {
                folderConfiguration.rootId = folderConfiguration.id;
                static_cast<void>(Update(folderConfiguration)); // the folder is on record either way
            }
            ClearCaches();
            _RefreshNativeFileViewerIfSyncStatusChanged(folderConfiguration); // for a new root once more
        });
}

FolderConfiguration FolderConfigManager::AddFolderAndParent(QString const& absolutePath,
                                                            FolderConfiguration const& rootConfig)
{
    if (absolutePath.isEmpty())
        return FolderConfiguration();

    QString const path = QDir::cleanPath(absolutePath);
    FolderConfiguration const existing = GetFolderConfigurationByClientPath(path);
    if (existing.id != -1)
        return existing;

    QString const parentPath = QDir::cleanPath(QFileInfo(path).absolutePath());
    if (parentPath.compare(path, Qt::CaseInsensitive) == 0)
        return existing; // nothing is above the root of a file system; `Add` refuses what has this for a parent

    FolderConfiguration const parent = AddFolderAndParent(parentPath, rootConfig);
    QString const serverPath = ReplacePathPrefix(path, rootConfig.clientPath, rootConfig.serverPath);

    FolderConfiguration folder;
    folder.rootId = rootConfig.id;
    folder.authenticationId = rootConfig.authenticationId;
    folder.productConfigurationId = rootConfig.productConfigurationId;
    folder.name = QFileInfo(path).fileName();
    folder.remoteShortKey = rootConfig.remoteShortKey;
    folder.remoteLongKey = serverPath;
    folder.clientPath = path;
    folder.serverPath = serverPath;
    folder.parentId = parent.id;
    folder.setSyncStatus(FolderStatusPlaced);
    static_cast<void>(Add(folder)); // a failure shows in the id
    return folder;
}

// Removal.

bool FolderConfigManager::Remove(int folderConfigurationId)
{
    // Read ahead of the delete, for the shell; a folder that isn't there is removed all the same.
    QString clientPath = GetFolderConfigurationById(folderConfigurationId).clientPath;
    return store::Write(
        *_databaseFactory, sql::Remove, store::Values(bind::id(folderConfigurationId)), [&](IQSqlQueryWrapper&) {
            ClearCaches();
            RefreshNativeFileViewer(clientPath);
        });
}

bool FolderConfigManager::RemoveFolderAndChildren(int folderConfigurationId)
{
    QVector<FolderConfiguration> const children = GetFolderConfigurationByParentId(folderConfigurationId);
    for (FolderConfiguration const& child : children) {
        if (!RemoveFolderAndChildren(child.id))
            return false;
    }
    return Remove(folderConfigurationId) &&
           store::Write(*_databaseFactory,
                        sql::RemoveFilesByFolderId,
                        store::Values(bind::folderConfigurationId(folderConfigurationId)));
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
        *_databaseFactory, sql::RemoveFilesByRootId, store::Values(bind::folderConfigurationId(rootFolderId)));
}

bool FolderConfigManager::_RemoveFolderConfigurationsByRootId(int rootFolderId)
{
    // Read ahead of the delete, for the shell.
    QVector<FolderConfiguration> const folders = GetFolderConfigurationsByRootId(rootFolderId);
    return store::Write(*_databaseFactory,
                        sql::RemoveByRootId,
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
