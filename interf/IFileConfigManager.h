#pragma once

#include "interf/FileConfigOrderByEnum.h"
#include "interf/TandryInterfacesExport.h"

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

/// Keeps the files, the files generated from them and their base files, each kind in a table of its own.
///
/// A lookup of one file answers with a default record (`id` -1), a listing with an empty vector, when nothing matches
/// or the store fails. A write answers false when the store fails; a missing row is no failure.
class TANDRY_INTERFACES_EXPORT IFileConfigManager : public QObject
{
    Q_OBJECT

public:
    IFileConfigManager();
    ~IFileConfigManager() override;

    virtual sync::config::FileConfiguration GetFileConfigurationById(int id) = 0;
    virtual sync::config::FileConfiguration GetFileConfigurationByServerId(QString serverFileId) = 0;

    /// Always a default record: base files have no lookup.
    virtual sync::config::FileConfiguration GetBaseFileConfigurationById(int id) = 0;
    virtual sync::config::FileConfiguration GetGeneratedFileConfigurationById(int id) = 0;

    /// The first file with exactly this path. A miss answers with `id` -1, the path in `name` and the status 1; a
    /// failing store with a plain default record.
    virtual sync::config::FileConfiguration GetFileConfigurationByClientPath(QString clientPath) = 0;
    virtual QVector<sync::config::FileConfiguration> GetAllFileConfigurationsByClientPath(QString clientPath) = 0;

    /// Files whose root folder is not on record; nothing on disk is looked at.
    virtual QVector<sync::config::FileConfiguration> GetFileConfigurationsOfNonExistingRootFolders() = 0;
    virtual sync::config::FileConfiguration GetGeneratedFileConfigurationByClientPath(QString clientPath) = 0;

    /// The first file with this path whose folder belongs to this account.
    virtual sync::config::FileConfiguration
    GetFileConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId) = 0;
    virtual sync::config::FileConfiguration
    GetFileConfigurationByServerPathAndAuthenticationId(QString serverPath, int authenticationId) = 0;

    virtual QVector<sync::config::FileConfiguration> GetFileConfigurationsByFolderId(int folderConfigurationId,
                                                                                     FileConfigOrderByEnum order) = 0;
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByRootFolderId(int rootFolderId, sync::config::FileConfigurationType fileType) = 0;
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) = 0;

    /// Files of the root that have all bits of the option set.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsWithSyncOption(int rootFolderId, sync::config::FileSyncOption option) = 0;
    virtual QVector<sync::config::FileConfiguration>
    GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId, FileConfigOrderByEnum order) = 0;

    /// By name.
    virtual QVector<sync::config::FileConfiguration>
    GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                 sync::config::FileSynchronizationStatus syncStatus) = 0;

    /// By id.
    virtual QVector<sync::config::FileConfiguration> GetGeneratedFileConfigurationsByParentFileId(int parentFileId) = 0;

    virtual QVector<sync::config::FileConfiguration> GetAll(sync::config::FileConfigurationType fileType) = 0;
    virtual QVector<sync::config::FileConfiguration> GetAll() = 0;

    /// Resolves the record's links, writes all columns of its row in the table that `fileType` names, and tells the
    /// shell when the status was set. False also for an unknown `fileType`.
    virtual bool Update(sync::config::FileConfiguration fileConfiguration) = 0;

    /// Resolves the record's links, inserts a row in the table that `fileType` names and writes its id into the record.
    /// A file that its folder holds already is updated instead. False also for an empty path or an unknown `fileType`.
    virtual bool Add(sync::config::FileConfiguration& fileConfiguration) = 0;

    /// Removes a file's row, the rows of the files generated from it, and those generated files on disk. False when
    /// either delete of rows fails; the other is still tried.
    virtual bool RemoveFileConfigurationAndLinkedConfigurations(int id) = 0;

    /// Does nothing and answers true.
    virtual bool RemoveBaseFileConfiguration(int id) = 0;

    /// Removes the row alone; the file on disk stays.
    virtual bool RemoveGeneratedFileConfiguration(int id) = 0;

    /// Removes the rows of a folder's files; generated rows stay.
    virtual bool RemoveByFolderConfigurationId(int folderConfigurationId) = 0;
    virtual bool RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId) = 0;

    /// Removes generated rows whose parent is a generated row of this root and status. Always answers false.
    virtual bool RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
        int rootFolderId, sync::config::FileSynchronizationStatus syncStatus) = 0;

    /// Sets the files of one folder that have the status 1 to the status 2. The shell is not told.
    virtual bool UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId) = 0;

    /// Always a default record: base files have no lookup.
    virtual sync::config::FileConfiguration GetBaseFileConfigurationByParentFileId(int parentFileId) = 0;

    /// The file that a link points at: by its id, or else by its path, a relative one from the folder of the linking
    /// file. A miss answers like `GetFileConfigurationByClientPath`.
    virtual sync::config::FileConfiguration GetFileConfiguration(sync::config::FileLink fileLink,
                                                                 QString const& linkingFilePath) = 0;

    /// Opens a bracket around the operations that follow on this thread. False when one is open already.
    virtual bool transaction() = 0;

    /// Makes durable what the bracket wrote and ends it. False without a bracket, or when the store could not.
    virtual bool commit() = 0;

    /// Takes back what the bracket wrote and ends it. False without a bracket.
    virtual bool rollback() = 0;
};

} // namespace sync::interf
