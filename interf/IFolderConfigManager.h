#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class FolderConfiguration;
}

namespace sync::interf {

/// Keeps the synchronised folders, roots and sub-folders, and knows how paths relate to them.
///
/// A lookup of one folder answers with a default record (`id` -1), a listing with an empty vector, when nothing matches
/// or the store fails. A write answers false when the store fails; a missing row is no failure. Paths have `/` as
/// separator.
class TANDRY_INTERFACES_EXPORT IFolderConfigManager : public QObject
{
    Q_OBJECT

public:
    IFolderConfigManager();
    ~IFolderConfigManager() override;

    virtual sync::config::FolderConfiguration GetFolderConfigurationById(int folderConfigurationId) = 0;
    virtual sync::config::FolderConfiguration GetFolderConfigurationByServerId(QString serverFolderId) = 0;

    /// The first folder with exactly this path, whatever its account.
    virtual sync::config::FolderConfiguration GetFolderConfigurationByClientPath(QString clientPath) = 0;
    virtual sync::config::FolderConfiguration
    GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId) = 0;

    virtual QVector<sync::config::FolderConfiguration>
    GetFolderConfigurationsByAuthenticationId(int authenticationId) = 0;
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationsByRootId(int rootFolderId) = 0;

    /// Folders whose root is not on record; nothing on disk is looked at.
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationsOfNonExistingRootFolders() = 0;

    /// All folders, from a cache that lags behind `Update` by up to two seconds.
    virtual QVector<sync::config::FolderConfiguration> GetAll() = 0;

    /// Writes all columns of the record's row; tells the shell when its status was set. The cached listings stay as
    /// they are.
    virtual bool Update(sync::config::FolderConfiguration folderConfiguration) = 0;

    /// Inserts a row and writes its id into the record; a root (parent 0) without a root id becomes its own root.
    /// Refuses a record without a parent, and a sub-folder without a root.
    virtual bool Add(sync::config::FolderConfiguration& folderConfiguration) = 0;

    /// The folder with this path, made below the root together with its missing ancestors if need be. The record has
    /// `id` -1 when the path lies outside every folder on record or the store fails; ancestors made before a failure
    /// stay.
    virtual sync::config::FolderConfiguration
    AddFolderAndParent(QString const& absolutePath, sync::config::FolderConfiguration const& rootConfig) = 0;

    /// Removes one row; sub-folders and files stay.
    virtual bool Remove(int folderConfigurationId) = 0;

    /// Removes a folder with all below it, deepest first, and the rows of their files. Stops at the first failure; what
    /// was removed stays removed.
    virtual bool RemoveFolderAndChildren(int folderConfigurationId) = 0;

    /// Whether a local path lies in a root of this account; a negative id means any account. With `honourFolderOption`
    /// a root whose option is 1 counts only the files directly in it.
    virtual bool IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption) = 0;

    /// Whether a root of exactly this account overlaps a server path; gives that root's server path back, or an empty
    /// text.
    virtual bool AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                          int authenticationId,
                                                          QString& matchingServerFolder) = 0;

    /// All roots, from a cache that lags behind `Update` by up to two seconds.
    virtual QVector<sync::config::FolderConfiguration> GetAllRootFolders() = 0;

    /// The direct sub-folders, by name.
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationByParentId(int folderConfigurationId) = 0;

    /// Whether a folder uses this account; true when the store fails.
    virtual bool IsInExistingAuthentication(int authenticationId) = 0;

    /// Whether a folder has the status 2; true when the store fails.
    virtual bool IsAnyFolderConfigOutOfSync() = 0;

    /// How many roots there are, -1 when the store fails.
    virtual int GetRootFolderConfigurationCount() = 0;

    /// Makes the next listing read the store.
    virtual void ClearCaches() = 0;

    /// Removes a root, its files' rows and its sub-folders as one unit of durability. Stops at the first failure; what
    /// was removed stays removed.
    virtual bool CleanRootFolder(int folderConfigurationId) = 0;

    /// Asks the shell to redraw one path.
    virtual void RefreshNativeFileViewer(QString& clientPath) = 0;

    /// Asks the shell to redraw every root that the store holds now.
    virtual void RefreshNativeFileViewer() = 0;
};

} // namespace sync::interf
