#include "config/FileConfigManager.h"

#include "config/FileLinksDocument.h"
#include "config/FolderConfiguration.h"
#include "config/PathRules.h"
#include "config/file/FileColumns.h"
#include "config/file/FileStatements.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"
#include "interf/IFolderConfigManager.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IRefreshNativeFileViewer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <utility>

namespace sync::config {

using sync::interf::FileConfigOrderByEnum;

namespace {

const QString DuplicateFile =
    QStringLiteral("Trying to add duplicate file configuration. File config %1 already exists in database.");

/// A relative path counts from the folder of the base file, whether or not that file exists.
QString ToAbsolutePath(QString const& path, QString const& baseFilePath)
{
    if (!QFileInfo(path).isRelative())
        return QDir::cleanPath(path);
    QString const folder = QDir::cleanPath(QFileInfo(baseFilePath).absolutePath());
    return QDir::cleanPath(QStringLiteral("%1/%2").arg(folder, path));
}

/// Whether the path lies below the folder, which may be a drive's root. Case counts here, unlike on the folder side.
bool IsBelow(QString const& path, QString folder)
{
    folder = QDir::cleanPath(folder);
    if (QFileInfo(folder).isRoot())
        folder.chop(1);
    QString const cleanedPath = QDir::cleanPath(path);
    return folder.size() < cleanedPath.size() && cleanedPath.startsWith(folder) &&
           cleanedPath.at(folder.size()) == QLatin1Char('/');
}

} // namespace

FileConfigManager::FileConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory,
                                     std::shared_ptr<sync::interf::IRefreshNativeFileViewer> refreshNativeFileViewer,
                                     std::shared_ptr<sync::interf::IFolderConfigManager> folderConfigManager)
    : DatabaseConfigurationManager(std::move(databaseFactory))
    , _refreshNativeFileViewer(std::move(refreshNativeFileViewer))
    , _folderConfigManager(std::move(folderConfigManager))
{}

FileConfigManager::~FileConfigManager() = default;

/// The documents of a file's row.
class FileConfigManager::Documents : public store::Documents<FileConfigManager>
{
public:
    using store::Documents<FileConfigManager>::Documents;

    QString WriteLinks(QList<FileLink>& links, QDateTime const& date) const
    {
        return GetXmlStringFromFileLinkArray(links, date);
    }
    QList<FileLink> ReadLinks(QString text, QDateTime& date) const { return GetFileLinkArrayFromXmlString(text, date); }
};

auto FileConfigManager::_Rows()
{
    return store::Rows<&FileConfigManager::_PopulateFileConfiguration, &FileConfigManager::_PopulateFileConfigurations>(
        *_databaseFactory, *this);
}

void FileConfigManager::_PopulateFileConfiguration(sync::interf::IQSqlQueryWrapper* query, FileConfiguration& file)
{
    store::Populate(*query, file, Documents(*this));
}

void FileConfigManager::_PopulateFileConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                    QVector<FileConfiguration>& fileConfigurations)
{
    store::AppendRows(*query, fileConfigurations, [&](auto& record) { _PopulateFileConfiguration(query, record); });
}

// Lookups and listings.

FileConfiguration FileConfigManager::GetFileConfigurationById(int id)
{
    return _Rows().FirstIfAny(file_sql::GetById, bind::id(id));
}

FileConfiguration FileConfigManager::GetFileConfigurationByServerId(QString serverFileId)
{
    return _Rows().FirstIfAny(file_sql::GetByServerId, bind::serverFileId(serverFileId));
}

FileConfiguration FileConfigManager::GetBaseFileConfigurationById(int)
{
    return {};
}

FileConfiguration FileConfigManager::GetGeneratedFileConfigurationById(int id)
{
    return _Rows().FirstIfAny(file_sql::GetGeneratedById, bind::id(id));
}

FileConfiguration FileConfigManager::GetFileConfigurationByClientPath(QString clientPath)
{
    auto const miss = [&](FileConfiguration& file) {
        file.name = clientPath; // callers know a miss by this name and the id -1
        file.setSyncStatus(FileSyncStatusSyncing);
        file.resetSyncStatusChanged();
    };
    return _Rows().FirstOr(miss, file_sql::GetByClientPath, bind::clientPath(clientPath));
}

QVector<FileConfiguration> FileConfigManager::GetAllFileConfigurationsByClientPath(QString clientPath)
{
    return _Rows().All(file_sql::GetByClientPath, bind::clientPath(clientPath));
}

QVector<FileConfiguration> FileConfigManager::GetFileConfigurationsOfNonExistingRootFolders()
{
    QStringList rootIds;
    for (FolderConfiguration const& root : _folderConfigManager->GetAllRootFolders())
        rootIds.append(QString::number(root.getId()));
    return _Rows().All(file_sql::GetOfNonExistingRootFolders.arg(rootIds.join(QLatin1Char(','))));
}

FileConfiguration FileConfigManager::GetGeneratedFileConfigurationByClientPath(QString clientPath)
{
    return _Rows().FirstIfAny(file_sql::GetGeneratedByClientPath, bind::clientPath(clientPath));
}

FileConfiguration FileConfigManager::GetFileConfigurationByClientPathAndAuthenticationId(QString clientPath,
                                                                                         int authenticationId)
{
    return _FirstOfAccount(GetAllFileConfigurationsByClientPath(clientPath), authenticationId);
}

FileConfiguration FileConfigManager::GetFileConfigurationByServerPathAndAuthenticationId(QString serverPath,
                                                                                         int authenticationId)
{
    return _FirstOfAccount(_GetFileConfigurationsByServerPath(serverPath), authenticationId);
}

QVector<FileConfiguration> FileConfigManager::GetFileConfigurationsByFolderId(int folderConfigurationId,
                                                                              FileConfigOrderByEnum order)
{
    return _Rows().All(file_sql::GetByFolderId + _GenerateOrderBy(order),
                       bind::folderConfigurationId(folderConfigurationId));
}

QVector<FileConfiguration> FileConfigManager::GetFileConfigurationsByRootFolderId(int rootFolderId,
                                                                                  FileConfigurationType fileType)
{
    return _Rows().All(file_sql::TableOf(fileType).getByRootFolderId, bind::rootFolderId(rootFolderId));
}

QVector<FileConfiguration> FileConfigManager::GetFileConfigurationsByRootFolderId(int rootFolderId,
                                                                                  FileConfigOrderByEnum order)
{
    return _Rows().All(file_sql::Files.getByRootFolderId + _GenerateOrderBy(order), bind::rootFolderId(rootFolderId));
}

QVector<FileConfiguration> FileConfigManager::GetFileConfigurationsWithSyncOption(int rootFolderId,
                                                                                  FileSyncOption option)
{
    return _Rows().All(file_sql::GetWithSyncOption.arg(option).arg(option), bind::rootFolderId(rootFolderId));
}

QVector<FileConfiguration> FileConfigManager::GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId,
                                                                                           FileConfigOrderByEnum order)
{
    return _Rows().All(file_sql::GeneratedFiles.getByRootFolderId + _GenerateOrderBy(order),
                       bind::rootFolderId(rootFolderId));
}

QVector<FileConfiguration>
FileConfigManager::GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                                FileSynchronizationStatus syncStatus)
{
    return _Rows().All(file_sql::GetByFolderIdAndSyncStatus,
                       bind::folderConfigurationId(folderConfigurationId),
                       bind::syncStatus(syncStatus));
}

QVector<FileConfiguration> FileConfigManager::GetGeneratedFileConfigurationsByParentFileId(int parentFileId)
{
    return _Rows().All(file_sql::GetGeneratedByParentFileId, bind::parentFileId(parentFileId));
}

QVector<FileConfiguration> FileConfigManager::GetAll(FileConfigurationType fileType)
{
    return _Rows().All(file_sql::TableOf(fileType).getAll);
}

QVector<FileConfiguration> FileConfigManager::GetAll()
{
    return _Rows().All(file_sql::Files.getAll);
}

// Writes.

bool FileConfigManager::Update(FileConfiguration file)
{
    if (GetTableNameByFileType(file.fileType).isEmpty())
        return false;
    if (!file.fileLinks.isEmpty())
        AddFileLinks(file);

    return store::Write(*_databaseFactory,
                        file_sql::TableOf(file.fileType).update,
                        store::ColumnsForUpdate(file, Documents(*this)),
                        [&](auto&) { _RefreshNativeFileViewerIfSyncStatusChanged(file); });
}

bool FileConfigManager::Add(FileConfiguration& file)
{
    if (file.clientPath.isEmpty())
        return false;

    // The look-up of a duplicate uses the table of the client's own files for every type. So a generated or base file
    // may update the row of another table that has this id: clients rely on the result, and there is rarely such a row.
    for (FileConfiguration const& known : GetAllFileConfigurationsByClientPath(file.clientPath)) {
        if (known.folderConfigurationId != file.folderConfigurationId)
            continue;
        static_cast<void>(DuplicateFile.arg(known.clientPath)); // for a log that the library doesn't have
        file.id = known.id;
        return Update(file);
    }

    if (GetTableNameByFileType(file.fileType).isEmpty())
        return false;
    if (!file.fileLinks.isEmpty())
        AddFileLinks(file);

    return store::Insert(*_databaseFactory,
                         file_sql::TableOf(file.fileType).add,
                         store::ColumnsForInsert(file, Documents(*this)),
                         file.id,
                         [&] { _RefreshNativeFileViewerIfSyncStatusChanged(file); });
}

bool FileConfigManager::RemoveFileConfigurationAndLinkedConfigurations(int id)
{
    bool removed = true;
    QVector<FileConfiguration> const generatedFiles = GetGeneratedFileConfigurationsByParentFileId(id);
    if (!generatedFiles.isEmpty()) {
        for (FileConfiguration const& file : generatedFiles)
            QFile::remove(file.clientPath); // missing or locked: its row goes all the same
        removed = _RemoveGeneratedFileConfigurationsByParentFileId(id);
    }
    return _Remove(id) && removed;
}

bool FileConfigManager::RemoveBaseFileConfiguration(int)
{
    return true;
}

bool FileConfigManager::RemoveGeneratedFileConfiguration(int id)
{
    static_cast<void>(GetGeneratedFileConfigurationById(id)); // asked for, and of no effect
    return store::Write(*_databaseFactory, file_sql::RemoveGenerated, store::Values(bind::id(id)));
}

bool FileConfigManager::RemoveByFolderConfigurationId(int folderConfigurationId)
{
    return store::Write(*_databaseFactory,
                        file_sql::RemoveByFolderId,
                        store::Values(bind::folderConfigurationId(folderConfigurationId)));
}

bool FileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId)
{
    return store::Write(
        *_databaseFactory, file_sql::RemoveGeneratedByRootFolderId, store::Values(bind::rootFolderId(rootFolderId)));
}

bool FileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
    int rootFolderId, FileSynchronizationStatus syncStatus)
{
    // Removes the files generated from the matching files, but not the files themselves, and always returns false.
    for (FileConfiguration const& file :
         GetGeneratedFileConfigurationsByRootFolderId(rootFolderId, sync::interf::FileConfigOrderById)) {
        if (file.getSyncStatus() == syncStatus)
            _RemoveGeneratedFileConfigurationsByParentFileId(file.id);
    }
    return false;
}

bool FileConfigManager::UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId)
{
    return store::Write(*_databaseFactory,
                        file_sql::UpdateSyncStatus,
                        store::Values(bind::syncStatusNotSynced(FileSyncStatusNotSynced),
                                      bind::folderConfigurationId(folderConfigurationId),
                                      bind::syncStatusSyncing(FileSyncStatusSyncing)));
}

FileConfiguration FileConfigManager::GetBaseFileConfigurationByParentFileId(int)
{
    return {};
}

FileConfiguration FileConfigManager::GetFileConfiguration(FileLink fileLink, QString const& linkingFilePath)
{
    FileConfiguration file;
    if (fileLink.fileId != -1)
        file = GetFileConfigurationById(fileLink.fileId);
    if (file.id == -1)
        file = GetFileConfigurationByClientPath(ToAbsolutePath(fileLink.path, linkingFilePath));
    return file;
}

bool FileConfigManager::transaction()
{
    return _databaseFactory->CreateDatabase()->transaction();
}

bool FileConfigManager::commit()
{
    return _databaseFactory->CreateDatabase()->commit();
}

bool FileConfigManager::rollback()
{
    return _databaseFactory->CreateDatabase()->rollback();
}

bool FileConfigManager::RemoveByRootFolderId(int rootFolderId)
{
    return store::Write(
        *_databaseFactory, file_sql::RemoveByRootFolderId, store::Values(bind::rootFolderId(rootFolderId)));
}

FileConfiguration FileConfigManager::_FirstOfAccount(QVector<FileConfiguration> const& files, int authenticationId)
{
    for (FileConfiguration const& file : files) {
        auto const folder = _folderConfigManager->GetFolderConfigurationById(file.folderConfigurationId);
        if (folder.getAuthenticationId() == authenticationId)
            return file;
    }
    return {};
}

QVector<FileConfiguration> FileConfigManager::_GetFileConfigurationsByServerPath(QString serverPath)
{
    return _Rows().All(file_sql::GetByServerPath, bind::serverPath(serverPath));
}

bool FileConfigManager::_Remove(int id)
{
    FileConfiguration file = GetFileConfigurationById(id);
    return store::Write(*_databaseFactory, file_sql::Remove, store::Values(bind::id(id)), [&](auto&) {
        _RefreshNativeFileViewer(file);
    });
}

bool FileConfigManager::_RemoveGeneratedFileConfigurationsByParentFileId(int parentFileId)
{
    return store::Write(
        *_databaseFactory, file_sql::RemoveGeneratedByParentFileId, store::Values(bind::parentFileId(parentFileId)));
}

bool FileConfigManager::AddFileLinks(FileConfiguration& file)
{
    auto const root = _folderConfigManager->GetFolderConfigurationById(file.rootFolderId);
    bool added = false;
    // Each write goes through the list, which detaches from copies that an override or the folder side took meanwhile.
    for (int i = 0; i < file.fileLinks.size(); ++i) {
        QString const absolutePath = ToAbsolutePath(file.fileLinks.at(i).path, file.clientPath);
        if (!IsBelow(absolutePath, root.getClientPath()) || !QFile::exists(absolutePath)) {
            file.fileLinks[i].fileId = -1;
            continue;
        }

        FileConfiguration target = GetFileConfiguration(file.fileLinks.at(i), file.clientPath);
        if (target.id != -1) {
            file.fileLinks[i].fileId = target.id;
            file.fileLinks[i].serverFileId = target.serverFileId;
            continue;
        }

        target.serverFileId = file.fileLinks.at(i).serverFileId;
        _AddLinkedFile(target, absolutePath, file, root);
        file.fileLinks[i].fileId = target.id;
        added = true;
    }
    return added;
}

void FileConfigManager::_AddLinkedFile(FileConfiguration& target,
                                       QString const& absolutePath,
                                       FileConfiguration const& linkingFile,
                                       FolderConfiguration const& root)
{
    QFileInfo const file(absolutePath);
    target.name = file.fileName();
    target.clientPath = absolutePath;
    target.serverPath = ReplacePathPrefix(absolutePath, root.getClientPath(), root.getServerPath());
    target.setSyncStatus(FileSyncStatusLinkDiscovered);
    target.lastOperationType = 0;
    target.rootFolderId = linkingFile.rootFolderId;
    target.folderConfigurationId =
        _folderConfigManager
            ->AddFolderAndParent(file.absolutePath(),
                                 _folderConfigManager->GetFolderConfigurationById(linkingFile.rootFolderId))
            .getId();
    target.fileType = FileConfigurationTypeFile;
    target.productConfigurationId = linkingFile.productConfigurationId;
    Add(target); // on failure its id stays -1, and so does the link's
}

void FileConfigManager::_RefreshNativeFileViewer(FileConfiguration& file)
{
    // The shell redraws folders, so this refreshes the folder of the file.
    if (_refreshNativeFileViewer)
        _refreshNativeFileViewer->Refresh(QFileInfo(file.clientPath).absolutePath());
}

void FileConfigManager::_RefreshNativeFileViewerIfSyncStatusChanged(FileConfiguration& file)
{
    if (file.getSyncStatusChanged())
        _RefreshNativeFileViewer(file);
}

QString FileConfigManager::GetTableNameByFileType(FileConfigurationType fileType)
{
    return file_sql::TableOf(fileType).name;
}

QString FileConfigManager::_GenerateOrderBy(FileConfigOrderByEnum order)
{
    auto position = static_cast<std::size_t>(order); // a negative order is out of range as well
    if (position >= 2 * file_sql::OrderColumns.size())
        position = sync::interf::FileConfigOrderById;
    QString const clause = QStringLiteral("ORDER BY ") + file_sql::OrderColumns[position / 2];
    return position % 2 == 0 ? clause : clause + QStringLiteral(" DESC");
}

QString FileConfigManager::GetXmlStringFromFileLinkArray(QList<FileLink>& links, QDateTime const& date)
{
    return WriteFileLinks(links, date);
}

QList<FileLink> FileConfigManager::GetFileLinkArrayFromXmlString(QString& text, QDateTime& date)
{
    return ReadFileLinks(text, date);
}

} // namespace sync::config
