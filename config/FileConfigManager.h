#pragma once

#include "../interf/IFileConfigManager.h"
#include "DatabaseConfigurationManager.h"
#include "FileConfiguration.h"
#include "FileLink.h"
#include "TandryConfigurationExport.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVector>

#include <memory>

namespace sync::interf {
class IFolderConfigManager;
class IQSqlQueryWrapper;
class IRefreshNativeFileViewer;
} // namespace sync::interf

namespace sync::config {

class FolderConfiguration;

/// The files of a store. The interface documents what each operation returns on failure.
///
/// Operations call one another through the virtual interface, so an override takes effect in the composite ones too.
class TANDRY_CONFIGURATION_EXPORT FileConfigManager : public DatabaseConfigurationManager,
                                                      public sync::interf::IFileConfigManager
{
public:
    /// Keeps a share of each and makes no call on them. If the refresh object is null, the shell is never refreshed;
    /// the other two must not be null.
    FileConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory,
                      std::shared_ptr<sync::interf::IRefreshNativeFileViewer> refreshNativeFileViewer,
                      std::shared_ptr<sync::interf::IFolderConfigManager> folderConfigManager);
    ~FileConfigManager() override;

    /// Removes the rows of a root's files; rows of generated files stay. Returns false if the store fails.
    ///
    /// Declared before the overrides: clients expect it directly after the base's operations in the virtual table, and
    /// some ABIs add entries for overrides of the second base's operations there, too.
    virtual bool RemoveByRootFolderId(int rootFolderId);

    FileConfiguration GetFileConfigurationById(int id) override;
    FileConfiguration GetFileConfigurationByServerId(QString serverFileId) override;
    FileConfiguration GetBaseFileConfigurationById(int id) override;
    FileConfiguration GetGeneratedFileConfigurationById(int id) override;
    FileConfiguration GetFileConfigurationByClientPath(QString clientPath) override;
    QVector<FileConfiguration> GetAllFileConfigurationsByClientPath(QString clientPath) override;
    QVector<FileConfiguration> GetFileConfigurationsOfNonExistingRootFolders() override;
    FileConfiguration GetGeneratedFileConfigurationByClientPath(QString clientPath) override;
    FileConfiguration GetFileConfigurationByClientPathAndAuthenticationId(QString clientPath,
                                                                          int authenticationId) override;
    FileConfiguration GetFileConfigurationByServerPathAndAuthenticationId(QString serverPath,
                                                                          int authenticationId) override;
    QVector<FileConfiguration> GetFileConfigurationsByFolderId(int folderConfigurationId,
                                                               sync::interf::FileConfigOrderByEnum order) override;
    QVector<FileConfiguration> GetFileConfigurationsByRootFolderId(int rootFolderId,
                                                                   FileConfigurationType fileType) override;
    QVector<FileConfiguration> GetFileConfigurationsByRootFolderId(int rootFolderId,
                                                                   sync::interf::FileConfigOrderByEnum order) override;
    QVector<FileConfiguration> GetFileConfigurationsWithSyncOption(int rootFolderId, FileSyncOption option) override;
    QVector<FileConfiguration>
    GetGeneratedFileConfigurationsByRootFolderId(int rootFolderId, sync::interf::FileConfigOrderByEnum order) override;
    QVector<FileConfiguration>
    GetFileConfigurationsByFolderIdAndSyncStatus(int folderConfigurationId,
                                                 FileSynchronizationStatus syncStatus) override;
    QVector<FileConfiguration> GetGeneratedFileConfigurationsByParentFileId(int parentFileId) override;
    QVector<FileConfiguration> GetAll(FileConfigurationType fileType) override;
    QVector<FileConfiguration> GetAll() override;
    bool Update(FileConfiguration fileConfiguration) override;
    bool Add(FileConfiguration& fileConfiguration) override;
    bool RemoveFileConfigurationAndLinkedConfigurations(int id) override;
    bool RemoveBaseFileConfiguration(int id) override;
    bool RemoveGeneratedFileConfiguration(int id) override;
    bool RemoveByFolderConfigurationId(int folderConfigurationId) override;
    bool RemoveGeneratedFileConfigurationsByRootFolderId(int rootFolderId) override;
    bool RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(int rootFolderId,
                                                                      FileSynchronizationStatus syncStatus) override;
    bool UpdateSyncStatusFromSyncingToNotSynced(int folderConfigurationId) override;
    FileConfiguration GetBaseFileConfigurationByParentFileId(int parentFileId) override;
    FileConfiguration GetFileConfiguration(FileLink fileLink, QString const& linkingFilePath) override;
    bool transaction() override;
    bool commit() override;
    bool rollback() override;

private:
    class Documents;

    auto _Rows();
    FileConfiguration _FirstOfAccount(QVector<FileConfiguration> const& files, int authenticationId);

    QVector<FileConfiguration> _GetFileConfigurationsByServerPath(QString serverPath);
    bool _Remove(int id);
    bool _RemoveGeneratedFileConfigurationsByParentFileId(int parentFileId);

    /// Sets each link's id to that of its file's row, and adds a row for a file inside the root that has none. The id
    /// is -1 if the link leads out of the root or to no file. Returns true if it tried to add a row.
    bool AddFileLinks(FileConfiguration& file);
    void _AddLinkedFile(FileConfiguration& target,
                        QString const& absolutePath,
                        FileConfiguration const& linkingFile,
                        FolderConfiguration const& root);

    void _RefreshNativeFileViewer(FileConfiguration& file);
    void _RefreshNativeFileViewerIfSyncStatusChanged(FileConfiguration& file);

    void _PopulateFileConfiguration(sync::interf::IQSqlQueryWrapper* query, FileConfiguration& file);
    void _PopulateFileConfigurations(sync::interf::IQSqlQueryWrapper* query, QVector<FileConfiguration>& files);

    /// Empty for an unknown type.
    static QString GetTableNameByFileType(FileConfigurationType fileType);
    static QString _GenerateOrderBy(sync::interf::FileConfigOrderByEnum order);
    static QString GetXmlStringFromFileLinkArray(QList<FileLink>& links, QDateTime const& date);
    static QList<FileLink> GetFileLinkArrayFromXmlString(QString& text, QDateTime& date);

    std::shared_ptr<void> _spareShare; // always null; keeps the object's layout
    std::shared_ptr<sync::interf::IRefreshNativeFileViewer> _refreshNativeFileViewer;
    std::shared_ptr<sync::interf::IFolderConfigManager> _folderConfigManager;
};

} // namespace sync::config
