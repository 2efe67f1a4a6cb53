#pragma once

#include "FileConfigOrderByEnum.h"
#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class FileConfiguration;
class FileLink;
enum FileConfigurationType : int;
enum FileSynchronizationStatus : int;
enum FileSyncOption : int;
} // namespace sync::config

namespace sync::interf {

/// Stores the files, the files generated from them and their base files, each kind in a table of its own. Unless the
/// name of an operation says otherwise, it uses the table of the files.
///
/// Paths have `/` as separator and are compared exactly. Records are copies that belong to the caller. Operations run
/// on the caller's thread; several threads may share a manager if the store allows it.
///
/// A lookup returns the default record (`id` -1) both if nothing matches and if the store fails; a listing that fails
/// returns the rows read until then, usually none. The store's factory tells a miss from a failure. Listings have no
/// particular order unless one is given. A null text matches no row. A write returns false if the store fails, and true
/// if there is no such row.
///
/// Each operation runs one statement unless its comment says otherwise; a write is a
/// `sync::database::TransactionalScope` of its own. The composite ones are not: open a scope around them to make their
/// writes durable together, or a client transaction to be able to take them back.
class TANDRY_INTERFACES_EXPORT IFileConfigManager : public QObject
{
    Q_OBJECT

public:
    IFileConfigManager();
    ~IFileConfigManager() override;

    /// Returns the file with this id.
    virtual sync::config::FileConfiguration GetFileConfigurationById(int id) = 0;

    /// Returns the first file with exactly this id on the server, `serverFileId`.
    virtual sync::config::FileConfiguration GetFileConfigurationByServerId(QString serverFileId) = 0;

    /// Returns the default record: base files cannot be looked up. Runs no statement.
    virtual sync::config::FileConfiguration GetBaseFileConfigurationById(int id) = 0;

    /// Returns the generated file with this id.
    virtual sync::config::FileConfiguration GetGeneratedFileConfigurationById(int id) = 0;

    /// Returns the first file with this path. If nothing matches, the record has the id -1, the path as `name` and the
    /// status 1; if the store fails, it is the default record.
    virtual sync::config::FileConfiguration GetFileConfigurationByClientPath(QString clientPath) = 0;

    /// Returns all files with this path.
    virtual QVector<sync::config::FileConfiguration> GetAllFileConfigurationsByClientPath(QString clientPath) = 0;

    /// Returns the files whose root folder id is none of the roots that the folder manager's `GetAllRootFolders` lists;
    /// does not access the disk. The ids of all roots stand in the text of its statement.
    ///
    /// If that listing is outdated or failed, files of existing roots are among them: see
    /// `IFolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders`.
    virtual QVector<sync::config::FileConfiguration> GetFileConfigurationsOfNonExistingRootFolders() = 0;

    /// Returns the first generated file with this path.
    virtual sync::config::FileConfiguration GetGeneratedFileConfigurationByClientPath(QString clientPath) = 0;

    /// Returns the first file with this path whose folder has this account. A file whose folder is not on record has
    /// the account -1. Looks up the folder of each file with this path.
    virtual sync::config::FileConfiguration
    GetFileConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId) = 0;

    /// The same for the path on the server.
    virtual sync::config::FileConfiguration
    GetFileConfigurationByServerPathAndAuthenticationId(QString serverPath, int authenticationId) = 0;

    /// Returns the files directly in this folder.
    virtual QVector<sync::config::FileConfiguration> GetFileConfigurationsByFolderId(int folderConfigurationId,
                                                                                     FileConfigOrderByEnum order) = 0;

    /// Returns the files, generated files or base files in this root and its folders. For an unknown type the statement
    /// fails.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByRootFolderId(int rootFolderId, sync::config::FileConfigurationType fileType) = 0;

    /// Returns the files in this root and its folders.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) = 0;

    /// Returns the files in this root and its folders that have all bits of the option set.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsWithSyncOption(int rootFolderId, sync::config::FileSyncOption option) = 0;

    /// Returns the generated files in this root and its folders.
    virtual QVector<sync::config::FileConfiguration>
    GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) = 0;

    /// Returns the files directly in this folder that have this status, ordered by name.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                 sync::config::FileSynchronizationStatus syncStatus) = 0;

    /// Returns the files generated from this file, ordered by id.
    virtual QVector<sync::config::FileConfiguration> GetGeneratedFileConfigurationsByParentFileId(int parentFileId) = 0;

    /// Returns all files, generated files or base files. For an unknown type the statement fails.
    virtual QVector<sync::config::FileConfiguration> GetAll(sync::config::FileConfigurationType fileType) = 0;

    /// Returns all files.
    virtual QVector<sync::config::FileConfiguration> GetAll() = 0;

    /// Resolves the links of the record, then writes all columns of its row in the table of its `fileType`, and
    /// refreshes the file's folder in the shell if the status was set. The ids of the resolved links are stored but not
    /// returned. Returns false, without accessing the store, for an unknown `fileType`.
    ///
    /// A link's path may be relative to the folder of the linking file. A link whose path leads out of the root or to
    /// nothing on disk loses its id; if the root is not on record, nothing counts as out of it. Any other link is
    /// looked up by its id, or else by its path, and gets the id and the server id of the file that is found. What is
    /// not on record is added as a file with the status 3, after its missing folders, and stays if the write fails.
    /// Links cost a look-up of the root, and each of them up to two more, besides what is added.
    virtual bool Update(sync::config::FileConfiguration fileConfiguration) = 0;

    /// Resolves the links of the record as `Update` does, inserts a row in the table of its `fileType`, sets the
    /// record's id, and refreshes the file's folder in the shell if the status was set. Returns false, without
    /// accessing the store, for an empty path, and false for an unknown `fileType`. If it returns false, the links stay
    /// resolved. Runs two statements, and those for links. If the insertion is rolled back, a later row gets the same
    /// id.
    ///
    /// If the table of the files has a row with the same path and folder, the record gets that row's id and is passed
    /// to `Update`, and its links stay as they were. This is so for every `fileType`: a generated or base file then
    /// overwrites the row of its own table that happens to have this id, or none.
    virtual bool Add(sync::config::FileConfiguration& fileConfiguration) = 0;

    /// Deletes the files generated from this file from disk, removes their rows and the file's row, and refreshes the
    /// file's folder in the shell. The file itself stays on disk, and generated files that cannot be deleted are
    /// ignored. Returns false if one of the two removals of rows fails; the other is still tried. A rollback brings
    /// back rows, not deleted files. Runs up to four statements.
    virtual bool RemoveFileConfigurationAndLinkedConfigurations(int id) = 0;

    /// Does nothing and returns true. Runs no statement.
    virtual bool RemoveBaseFileConfiguration(int id) = 0;

    /// Removes one row, which it looks up first; the file stays on disk.
    virtual bool RemoveGeneratedFileConfiguration(int id) = 0;

    /// Removes the rows of the files directly in this folder. Rows of generated files and base files stay, and so do
    /// all files on disk.
    virtual bool RemoveByFolderConfigurationId(int folderConfigurationId) = 0;

    /// Removes the rows of the generated files in this root and its folders. The files stay on disk.
    virtual bool RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId) = 0;

    /// Removes the rows of the generated files whose `parentFileId` is the id of a generated file of this root and
    /// status; the latter stay. Always returns false. Runs a statement for each of the latter, and one more.
    virtual bool RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
        int rootFolderId, sync::config::FileSynchronizationStatus syncStatus) = 0;

    /// Sets the status of the files directly in this folder from 1 to 2. Does not refresh the shell.
    virtual bool UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId) = 0;

    /// Returns the default record: base files cannot be looked up. Runs no statement.
    virtual sync::config::FileConfiguration GetBaseFileConfigurationByParentFileId(int parentFileId) = 0;

    /// Returns the file that a link leads to: the one with the link's id, or else the one with its path; a relative
    /// path starts at the folder of the linking file. If neither matches, returns what
    /// `GetFileConfigurationByClientPath` does. Runs up to two statements.
    virtual sync::config::FileConfiguration GetFileConfiguration(sync::config::FileLink fileLink,
                                                                 QString const& linkingFilePath) = 0;

    /// Begins a client transaction for the calling thread. See `IQSqlDatabaseWrapper::transaction`.
    virtual bool transaction() = 0;

    /// Commits the client transaction. See `IQSqlDatabaseWrapper::commit`.
    virtual bool commit() = 0;

    /// Rolls back the client transaction. See `IQSqlDatabaseWrapper::rollback`: files deleted on disk stay deleted, and
    /// ids are given again.
    virtual bool rollback() = 0;
};

} // namespace sync::interf
