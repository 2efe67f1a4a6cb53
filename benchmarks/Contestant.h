#pragma once

#include "benchmarks/Entrant.h"
#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ServerConfiguration.h"

#include <QString>
#include <QVector>
#include <QtGlobal>

#include <memory>

namespace sync::benchmarks {

/// What the workloads ask for. Each operation ends the program when it fails, so that nobody is fast by failing.
///
/// Writes outside `Begin` and `Commit` are durable when they return. For one thread; `ForThread` makes another for the
/// same store, to be used on the calling thread.
class Contestant
{
public:
    Contestant() = default;
    virtual ~Contestant() = default;

    virtual std::unique_ptr<Contestant> ForThread() = 0;

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
    /// From the store, whatever is cached.
    virtual QVector<config::FolderConfiguration> AllFolders() = 0;
    virtual void RemoveFolderAndChildren(int folderId) = 0;
    virtual void CleanRoot(int rootId) = 0;
    /// By the roots that are in memory already.
    virtual bool IsInRoot(QString const& path) = 0;

    virtual config::ServerConfiguration ServerById(int id) = 0;
    virtual config::ServerConfiguration ServerByUrls(QString const& davUrl, QString const& webServiceUrl) = 0;
    virtual config::ServerConfiguration ServerOfFile(int fileId) = 0;
    virtual config::AuthenticationConfiguration AccountById(int id) = 0;
    virtual config::AuthenticationConfiguration AccountByUser(QString const& domain, QString const& userName) = 0;
    virtual config::ProductConfiguration ProductById(int id) = 0;
    virtual config::ProductConfiguration ProductByKey(int serverId, QString const& consumerKey) = 0;

private:
    Q_DISABLE_COPY_MOVE(Contestant)
};

/// Opens the store at this path.
std::unique_ptr<Contestant> Enter(Entrant entrant, QString const& path);

} // namespace sync::benchmarks
