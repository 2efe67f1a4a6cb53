#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class FolderConfiguration;
}

namespace sync::interf {

/// Stores the synchronised folders, roots and sub-folders, and tells how paths relate to them.
///
/// A root is a folder whose parent id is 0. Paths have `/` as separator. Records are copies that belong to the caller.
/// Operations run on the caller's thread; several threads may share a manager if the store allows it.
///
/// A lookup returns the default record (`id` -1) both if nothing matches and if the store fails; a listing that fails
/// returns the rows read until then, usually none. The store's factory tells a miss from a failure. A null text matches
/// no row. A write returns false if the store fails, and true if there is no such row.
///
/// `GetAll` and `GetAllRootFolders` return cached listings, which are up to two seconds old. `Add` and the removals
/// clear them, and so does a client transaction or a scope of this process that is rolled back or lost (`rollback`,
/// `CommitFailed`). `Update`, other managers and other programs do not, and a listing that failed is cached like any
/// other, and a cached answer sets no error. The operations on paths and on non-existing roots use the cached roots.
/// Threads that share a manager wait for one another while one of them reads a listing anew.
///
/// Each operation runs one statement unless its comment says otherwise, a cached listing only if it is out of date. A
/// write is a `sync::database::TransactionalScope` of its own. Of the composite operations only `CleanRootFolder` is
/// one: open a scope around the others to make their writes durable together.
class TANDRY_INTERFACES_EXPORT IFolderConfigManager : public QObject
{
    Q_OBJECT

public:
    IFolderConfigManager();
    ~IFolderConfigManager() override;

    /// Returns the folder with this id.
    virtual sync::config::FolderConfiguration GetFolderConfigurationById(int folderConfigurationId) = 0;

    /// Returns the first folder with exactly this id on the server, `serverFolderId`.
    virtual sync::config::FolderConfiguration GetFolderConfigurationByServerId(QString serverFolderId) = 0;

    /// Returns the first folder with exactly this path, of any account.
    virtual sync::config::FolderConfiguration GetFolderConfigurationByClientPath(QString clientPath) = 0;

    /// Returns the first folder with exactly this path and account.
    virtual sync::config::FolderConfiguration
    GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId) = 0;

    /// Returns all folders of this account, roots and sub-folders, in no particular order.
    virtual QVector<sync::config::FolderConfiguration>
    GetFolderConfigurationsByAuthenticationId(int authenticationId) = 0;

    /// Returns the root and all folders below it, in no particular order.
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationsByRootId(int rootFolderId) = 0;

    /// Returns the folders whose root id is none of the roots that `GetAllRootFolders` lists; does not access the disk.
    /// The ids of all roots stand in the text of its statement.
    ///
    /// If that listing is outdated or failed, folders of existing roots are among them, and this thread need not have
    /// an error. Before it removes what this returns, a client calls `ClearCaches`, clears the thread's error, repeats
    /// the listing, checks the error, and compares `GetRootFolderConfigurationCount`, which is not cached, with the
    /// number of roots that `GetAllRootFolders` lists.
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationsOfNonExistingRootFolders() = 0;

    /// Returns all folders from the cache, in no particular order. Before a client removes something because its folder
    /// is not among them, it takes the steps that `GetFolderConfigurationsOfNonExistingRootFolders` describes.
    virtual QVector<sync::config::FolderConfiguration> GetAll() = 0;

    /// Writes all columns of the record's row, and refreshes the folder in the shell if the record's status was set.
    /// Does not clear the cached listings.
    virtual bool Update(sync::config::FolderConfiguration folderConfiguration) = 0;

    /// Inserts a row, sets the record's id, and refreshes the folder in the shell if the record's status was set. A
    /// root whose root id is -1 gets its own id as root id, by a second statement.
    ///
    /// Also returns false, without accessing the store, for a parent id of -1 and for a sub-folder whose root id is -1.
    /// If it returns false the record is unchanged. Does not check for duplicates. If the insertion is rolled back, a
    /// later row gets the same id.
    virtual bool Add(sync::config::FolderConfiguration& folderConfiguration) = 0;

    /// Returns the folder with this path; adds it below the root if it is missing, and its missing ancestors before it.
    ///
    /// The nearest ancestor on record becomes the parent. Unlike `IsInExistingClientFolder`, this compares paths
    /// exactly, without a trailing slash, so it does not find a root whose path has one. Added folders get the root's
    /// account and product, a server path derived from the root's, and the status 3, and are refreshed in the shell.
    /// The caller checks that the path lies in the root: below another root on record the folders are added there, with
    /// `rootConfig`'s ids and with their local path as server path. A folder of another account with exactly this path
    /// is returned as it is.
    ///
    /// The record's id is -1 if the path is empty or below no folder on record, or if the store fails. Ancestors that
    /// were added before a failure stay. A look-up that fails counts as a miss, so a folder may be added twice. Runs a
    /// look-up for each level up to the first folder on record, and an insertion for each folder that it adds.
    virtual sync::config::FolderConfiguration
    AddFolderAndParent(QString const& absolutePath, sync::config::FolderConfiguration const& rootConfig) = 0;

    /// Removes one row, which it looks up first, and refreshes the folder in the shell. Sub-folders, files and
    /// schedules stay.
    virtual bool Remove(int folderConfigurationId) = 0;

    /// Removes a folder with all folders below it, deepest first, and the rows of their files. The id 0 removes the
    /// trees of all roots. Rows of generated files and base files stay, as do schedules; nothing is deleted on disk.
    ///
    /// Stops at the first failure, and what was removed stays removed: use a client transaction for all or nothing. If
    /// the sub-folders cannot be listed, the folder is removed without them. Runs four statements for each folder.
    ///
    /// Calls itself for each level. Parents that form a ring count as a failure: the walk ends where it meets a folder
    /// again that it is removing, and no folder of the ring is removed. `Remove` of one of them breaks the ring.
    virtual bool RemoveFolderAndChildren(int folderConfigurationId) = 0;

    /// Returns whether a local path is a root's path or lies in a root of this account, or of any account if the id is
    /// negative. Case does not matter. The path may be relative to the working directory and need not exist.
    ///
    /// With `honourFolderOption`, a root whose folder option is 1, as in a new record, contains only itself and the
    /// files directly in it; sub-folders, recognised on disk, and what lies in them do not count. If such a root
    /// contains another such root and is listed first, the inner one's own path does not count either.
    ///
    /// A root whose path ends in a slash contains everything below it, whatever its option, but not its own path
    /// without the slash. A path that contains ".{SyncTemp}" lies in no root. Runs no statement of its own.
    virtual bool IsInExistingClientFolder(QString const& path, int authenticationId, bool honourFolderOption) = 0;

    /// Returns whether the server path of a root of exactly this account is this path, lies in it or contains it, and
    /// sets `matchingServerFolder` to the server path of the first such root, or clears it. Case does not matter; the
    /// id -1 is no wildcard. An empty path overlaps nothing, but a root with an empty server path contains every path
    /// that starts with a slash.
    virtual bool AncestorOrDescendantOfServerFolderExists(QString const& serverPath,
                                                          int authenticationId,
                                                          QString& matchingServerFolder) = 0;

    /// Returns all roots from the cache, in no particular order. See `GetAll`.
    virtual QVector<sync::config::FolderConfiguration> GetAllRootFolders() = 0;

    /// Returns the direct sub-folders, ordered by name; for the id 0 the roots.
    virtual QVector<sync::config::FolderConfiguration> GetFolderConfigurationByParentId(int folderConfigurationId) = 0;

    /// Returns whether a folder has this account; true if the store fails.
    virtual bool IsInExistingAuthentication(int authenticationId) = 0;

    /// Returns whether a folder has the status 2; true if the store fails.
    virtual bool IsAnyFolderConfigOutOfSync() = 0;

    /// Returns the number of roots in the store, or -1 if the store fails. Not cached.
    virtual int GetRootFolderConfigurationCount() = 0;

    /// Clears both cached listings, so that the next ones read the store. Runs no statement.
    virtual void ClearCaches() = 0;

    /// Removes a root, the rows of its files and all folders below it in one scope, and refreshes them in the shell.
    /// Rows of generated files and base files stay, as do schedules; nothing is deleted on disk.
    ///
    /// For a sub-folder it removes that folder's row alone, and what lies below stays without a parent. Stops at the
    /// first failure, and what was removed stays removed. Runs five statements.
    virtual bool CleanRootFolder(int folderConfigurationId) = 0;

    /// Refreshes one path in the shell; does nothing without a refresh object. The argument is not changed.
    virtual void RefreshNativeFileViewer(QString& clientPath) = 0;

    /// Refreshes every root in the shell. Reads the roots from the store, not from the cache.
    virtual void RefreshNativeFileViewer() = 0;
};

} // namespace sync::interf
