#pragma once

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ServerConfiguration.h"

#include <QString>
#include <QVector>
#include <QtGlobal>

#include <array>
#include <memory>

namespace sync::benchmarks {

/// The implementations under comparison. All work on stores made by the library, with the same rows, and fill the same
/// records.
enum class BackendKind
{
    Managers,
    /// The database's C interface at its fastest: statements stay prepared, text is read as UTF-8, columns by number.
    ByHand,
    /// Qt SQL with one query object per statement, prepared once.
    QtSqlReused,
    /// Qt SQL with a query object constructed and prepared for each call.
    QtSqlPerCall,
    /// The managers on SQLite, beside those on a server.
    ManagersOnFile,
};

/// The name in results and file names.
inline QString NameOf(BackendKind kind)
{
    constexpr std::array names{"managers", "by hand", "Qt SQL reused", "Qt SQL per call", "managers on SQLite"};
    return QLatin1String(names.at(std::size_t(kind)));
}

/// The operations that workloads consist of. An operation that fails ends the program.
///
/// Writes outside `Begin` and `Commit` are durable when they return. An object serves one thread; `ForThread` returns
/// another one for the same store, for use on the calling thread.
class Backend
{
public:
    Backend() = default;
    virtual ~Backend() = default;

    virtual std::unique_ptr<Backend> ForThread() = 0;

    /// Closes the store and opens it again.
    virtual void Reopen() = 0;

    virtual void Begin() = 0;
    virtual void Commit() = 0;

    virtual void AddFile(config::FileConfiguration& file) = 0;
    virtual void UpdateFile(config::FileConfiguration const& file) = 0;
    virtual config::FileConfiguration FileById(int id) = 0;
    virtual config::FileConfiguration FileByPath(QString const& clientPath) = 0;
    virtual config::FileConfiguration FileByServerId(QString const& serverFileId) = 0;
    virtual QVector<config::FileConfiguration> FilesOfFolder(int folderId) = 0;
    virtual QVector<config::FileConfiguration> AllFiles() = 0;
    virtual void SyncingToNotSynced(int folderId) = 0;

    virtual void AddFolder(config::FolderConfiguration& folder) = 0;
    virtual void UpdateFolder(config::FolderConfiguration const& folder) = 0;
    virtual config::FolderConfiguration FolderById(int id) = 0;
    virtual config::FolderConfiguration FolderByPath(QString const& clientPath) = 0;
    virtual config::FolderConfiguration FolderByServerId(QString const& serverFolderId) = 0;
    virtual QVector<config::FolderConfiguration> SubFolders(int folderId) = 0;
    /// Reads the store and bypasses caches.
    virtual QVector<config::FolderConfiguration> AllFolders() = 0;
    virtual void RemoveFolderAndChildren(int folderId) = 0;
    virtual void CleanRoot(int rootId) = 0;
    /// Compares with the roots in memory; reads them when there are none.
    virtual bool IsInRoot(QString const& path) = 0;

    virtual config::ServerConfiguration ServerById(int id) = 0;
    virtual config::ServerConfiguration ServerByUrls(QString const& davUrl, QString const& webServiceUrl) = 0;
    virtual config::ServerConfiguration ServerOfFile(int fileId) = 0;
    virtual config::AuthenticationConfiguration AccountById(int id) = 0;
    virtual config::AuthenticationConfiguration AccountByUser(QString const& domain, QString const& userName) = 0;
    virtual config::ProductConfiguration ProductById(int id) = 0;
    virtual config::ProductConfiguration ProductByKey(int serverId, QString const& consumerKey) = 0;

private:
    Q_DISABLE_COPY_MOVE(Backend)
};

} // namespace sync::benchmarks
