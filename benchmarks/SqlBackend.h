#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/Documents.h"
#include "benchmarks/Failure.h"
#include "benchmarks/RecordId.h"
#include "benchmarks/StatementText.h"
#include "config/account/AuthenticationColumns.h"
#include "config/account/AuthenticationStatements.h"
#include "config/columns/ColumnList.h"
#include "config/file/FileColumns.h"
#include "config/file/FileStatements.h"
#include "config/folder/FolderColumns.h"
#include "config/folder/FolderStatements.h"
#include "config/product/ProductColumns.h"
#include "config/product/ProductStatements.h"
#include "config/server/ServerColumns.h"
#include "config/server/ServerStatements.h"

#include <QDir>
#include <QString>
#include <QVector>

#include <memory>
#include <optional>
#include <utility>

namespace sync::benchmarks {

/// The managers' statements.
namespace text {

namespace files = config::file_sql;
namespace folders = config::folders_sql;

inline const StatementText AddFile(files::Files.add);
inline const StatementText UpdateFile(files::Files.update);
inline const StatementText FileById(files::GetById);
inline const StatementText FileByPath(files::GetByClientPath);
inline const StatementText FileByServerId(files::GetByServerId);
inline const StatementText FilesOfFolder(files::GetByFolderId + QStringLiteral("ORDER BY Name"));
inline const StatementText AllFiles(files::Files.getAll);
inline const StatementText SyncingToNotSynced(files::UpdateSyncStatus);

inline const StatementText AddFolder(folders::Add);
inline const StatementText UpdateFolder(folders::Update);
inline const StatementText FolderById(folders::GetById);
inline const StatementText FolderByPath(folders::GetByClientPath);
inline const StatementText FolderByServerId(folders::GetByServerId);
inline const StatementText SubFolders(folders::GetByParentId);
inline const StatementText AllFolders(folders::GetAll);
inline const StatementText Roots(folders::GetAllRoots);
inline const StatementText RemoveFolder(folders::Remove);
inline const StatementText RemoveFoldersOfRoot(folders::RemoveByRootId);
inline const StatementText RemoveFilesOfRoot(folders::RemoveFilesByRootId);
inline const StatementText RemoveFilesOfFolder(folders::RemoveFilesByFolderId);
/// The ids suffice for the walk; the managers read whole records here.
inline const StatementText
    SubFolderIds(QStringLiteral("SELECT id FROM FolderConfiguration WHERE parentId = :parentId ORDER BY name"));

inline const StatementText ServerById(config::server_sql::GetById);
inline const StatementText ServerByUrls(config::server_sql::GetByServers);
inline const StatementText ServerOfFile(config::server_sql::GetByFileId);
inline const StatementText AccountById(config::authentication_sql::GetById);
inline const StatementText AccountByUser(config::authentication_sql::GetByDomainAndUser);
inline const StatementText ProductById(config::product_sql::GetById);
inline const StatementText ProductByKey(config::product_sql::GetByServerIdAndConsumerKey);

} // namespace text

/// Runs the managers' statements without the managers, through a database's C interface or Qt SQL. Records are bound
/// and filled by the library's lists of columns, which the compiler resolves.
///
/// `Api` is a connection: it opens the store at a path, its `Use` returns a statement that is ready to bind and run,
/// and it has `Begin` and `Commit`.
template <class Api>
class SqlBackend : public Backend
{
public:
    explicit SqlBackend(QString path)
        : _path(std::move(path))
        , _api(std::in_place, _path)
    {}

    Api& api() { return *_api; }

    std::unique_ptr<Backend> ForThread() override { return std::make_unique<SqlBackend>(_path); }
    void Reopen() override
    {
        _api.reset();
        _api.emplace(_path);
        _roots.clear();
    }

    void Begin() override { _api->Begin(); }
    void Commit() override { _api->Commit(); }

    void AddFile(config::FileConfiguration& file) override
    {
        for (config::FileConfiguration const& other :
             _All<config::FileConfiguration>(text::FileByPath, QStringLiteral(":clientPath"), file.clientPath))
            Require(other.folderConfigurationId != file.folderConfigurationId, "a sample file exists already");
        InsertFile(file);
    }
    /// Adds without looking for a duplicate.
    void InsertFile(config::FileConfiguration& file) { _Insert(text::AddFile, file); }
    void UpdateFile(config::FileConfiguration const& file) override { _Update(text::UpdateFile, file, file.id); }
    config::FileConfiguration FileById(int id) override
    {
        return _One<config::FileConfiguration>(text::FileById, QStringLiteral(":id"), id);
    }
    config::FileConfiguration FileByPath(QString const& clientPath) override
    {
        return _One<config::FileConfiguration>(text::FileByPath, QStringLiteral(":clientPath"), clientPath);
    }
    config::FileConfiguration FileByServerId(QString const& serverFileId) override
    {
        return _One<config::FileConfiguration>(text::FileByServerId, QStringLiteral(":serverFileId"), serverFileId);
    }
    QVector<config::FileConfiguration> FilesOfFolder(int folderId) override
    {
        return _All<config::FileConfiguration>(text::FilesOfFolder, QStringLiteral(":folderConfigurationId"), folderId);
    }
    QVector<config::FileConfiguration> AllFiles() override { return _All<config::FileConfiguration>(text::AllFiles); }
    void SyncingToNotSynced(int folderId) override
    {
        auto statement = _api->Use(text::SyncingToNotSynced);
        statement.Bind(QStringLiteral(":syncStatusNotSynced"), int(config::FileSyncStatusNotSynced));
        statement.Bind(QStringLiteral(":folderConfigurationId"), folderId);
        statement.Bind(QStringLiteral(":syncStatusSyncing"), int(config::FileSyncStatusSyncing));
        statement.Run();
    }

    void AddFolder(config::FolderConfiguration& folder) override { _Insert(text::AddFolder, folder); }
    void UpdateFolder(config::FolderConfiguration const& folder) override
    {
        _Update(text::UpdateFolder, folder, folder.getId());
    }
    config::FolderConfiguration FolderById(int id) override
    {
        return _One<config::FolderConfiguration>(text::FolderById, QStringLiteral(":id"), id);
    }
    config::FolderConfiguration FolderByPath(QString const& clientPath) override
    {
        return _One<config::FolderConfiguration>(text::FolderByPath, QStringLiteral(":clientPath"), clientPath);
    }
    config::FolderConfiguration FolderByServerId(QString const& serverFolderId) override
    {
        return _One<config::FolderConfiguration>(
            text::FolderByServerId, QStringLiteral(":serverFolderId"), serverFolderId);
    }
    QVector<config::FolderConfiguration> SubFolders(int folderId) override
    {
        return _All<config::FolderConfiguration>(text::SubFolders, QStringLiteral(":parentId"), folderId);
    }
    QVector<config::FolderConfiguration> AllFolders() override
    {
        return _All<config::FolderConfiguration>(text::AllFolders);
    }
    void RemoveFolderAndChildren(int folderId) override
    {
        for (int const child : _SubFolderIds(folderId))
            RemoveFolderAndChildren(child);
        _Run(text::RemoveFolder, QStringLiteral(":id"), folderId);
        _Run(text::RemoveFilesOfFolder, QStringLiteral(":folderConfigurationId"), folderId);
    }
    void CleanRoot(int rootId) override
    {
        _api->Begin();
        _Run(text::RemoveFolder, QStringLiteral(":id"), rootId);
        _Run(text::RemoveFilesOfRoot, QStringLiteral(":folderConfigurationId"), rootId);
        _Run(text::RemoveFoldersOfRoot, QStringLiteral(":folderConfigurationId"), rootId);
        _api->Commit();
    }
    bool IsInRoot(QString const& path) override
    {
        if (_roots.isEmpty())
            _roots = _All<config::FolderConfiguration>(text::Roots);
        QString const absolute = QDir(path).absolutePath();
        if (absolute.contains(QLatin1String(".{SyncTemp}"), Qt::CaseInsensitive))
            return false;
        for (config::FolderConfiguration const& root : std::as_const(_roots)) {
            QString const folder = root.getClientPath();
            if (absolute.startsWith(folder, Qt::CaseInsensitive) &&
                (absolute.size() == folder.size() || folder.endsWith(QLatin1Char('/')) ||
                 absolute.at(folder.size()) == QLatin1Char('/')))
                return true;
        }
        return false;
    }

    config::ServerConfiguration ServerById(int id) override
    {
        return _One<config::ServerConfiguration>(text::ServerById, QStringLiteral(":id"), id);
    }
    config::ServerConfiguration ServerByUrls(QString const& davUrl, QString const& webServiceUrl) override
    {
        return _One<config::ServerConfiguration>(
            text::ServerByUrls, QStringLiteral(":davUrl"), davUrl, QStringLiteral(":webServiceUrl"), webServiceUrl);
    }
    config::ServerConfiguration ServerOfFile(int fileId) override
    {
        return _One<config::ServerConfiguration>(text::ServerOfFile, QStringLiteral(":id"), fileId);
    }
    config::AuthenticationConfiguration AccountById(int id) override
    {
        return _One<config::AuthenticationConfiguration>(text::AccountById, QStringLiteral(":id"), id);
    }
    config::AuthenticationConfiguration AccountByUser(QString const& domain, QString const& userName) override
    {
        return _One<config::AuthenticationConfiguration>(
            text::AccountByUser, QStringLiteral(":domain"), domain, QStringLiteral(":userName"), userName);
    }
    config::ProductConfiguration ProductById(int id) override
    {
        return _One<config::ProductConfiguration>(text::ProductById, QStringLiteral(":id"), id);
    }
    config::ProductConfiguration ProductByKey(int serverId, QString const& consumerKey) override
    {
        return _One<config::ProductConfiguration>(
            text::ProductByKey, QStringLiteral(":serverId"), serverId, QStringLiteral(":consumerKey"), consumerKey);
    }

private:
    /// Binds pairs of placeholder and value.
    template <class Statement>
    static void _Bind(Statement&)
    {}
    template <class Statement, class Value, class... More>
    static void _Bind(Statement& statement, QString const& placeholder, Value const& value, More const&... more)
    {
        statement.Bind(placeholder, value);
        _Bind(statement, more...);
    }

    template <class Record, class... Bound>
    Record _One(StatementText const& text, Bound const&... bound)
    {
        Record record;
        auto statement = _api->Use(text);
        _Bind(statement, bound...);
        if (statement.Next())
            config::column::ReadAll(record, statement, _documents);
        return record;
    }

    template <class Record, class... Bound>
    QVector<Record> _All(StatementText const& text, Bound const&... bound)
    {
        QVector<Record> records;
        auto statement = _api->Use(text);
        _Bind(statement, bound...);
        while (statement.Next()) {
            records.resize(records.size() + 1); // unlike append, copies no record
            config::column::ReadAll(records.last(), statement, _documents);
        }
        return records;
    }

    template <class Record>
    void _Insert(StatementText const& text, Record& record)
    {
        auto statement = _api->Use(text);
        config::column::BindAll<config::column::Writing::Insert>(statement, std::as_const(record), _documents);
        statement.Run();
        GiveId(record, statement.InsertedId());
    }

    /// By hand, values are bound by position: the columns first and then the id, as the statements name them.
    template <class Record>
    void _Update(StatementText const& text, Record const& record, int id)
    {
        auto statement = _api->Use(text);
        config::column::BindAll<config::column::Writing::Insert>(statement, record, _documents);
        statement.Bind(QStringLiteral(":id"), id);
        statement.Run();
    }

    void _Run(StatementText const& text, QString const& placeholder, int value)
    {
        auto statement = _api->Use(text);
        statement.Bind(placeholder, value);
        statement.Run();
    }

    QVector<int> _SubFolderIds(int folderId)
    {
        QVector<int> ids;
        auto statement = _api->Use(text::SubFolderIds);
        statement.Bind(QStringLiteral(":parentId"), folderId);
        while (statement.Next())
            ids.append(statement.Int(0));
        return ids;
    }

    QString const _path;
    std::optional<Api> _api;
    Documents _documents;
    QVector<config::FolderConfiguration> _roots;
};

} // namespace sync::benchmarks
