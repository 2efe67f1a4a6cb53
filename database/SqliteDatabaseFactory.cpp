#include "database/SqliteDatabaseFactory.h"

#include "database/AbsolutePath.h"
#include "database/SqliteConnection.h"
#include "database/SqliteQuery.h"
#include "database/SqliteStore.h"
#include "database/file/StoreRestore.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/store/OpenStore.h"
#include "database/store/StoreDatabase.h"

#include <sqlite3.h>

#include <utility>

namespace sync::database {

namespace {

/// Fails if no file can have the path.
Failure FindFile(QString const& path, std::optional<StoreFile>& file)
{
    QString reason;
    QString const absolute = AbsolutePath(path, &reason);
    if (absolute.isNull())
        return MakeError(SQLITE_CANTOPEN, reason);
    if (path.endsWith(QLatin1Char('/')))
        return MakeError(path, SQLITE_CANTOPEN, QStringLiteral("this is a folder's name"));
    file.emplace(absolute);
    return {};
}

/// Runs a restore by one of its operations, and returns the path of the earlier store.
std::optional<QString>
RunRestore(QString const& backup, QString const& path, StoreError& error, Failure (StoreRestore::*run)())
{
    std::optional<StoreFile> source;
    std::optional<StoreFile> target;
    Failure failure = FindFile(backup, source);
    if (!failure)
        failure = FindFile(path, target);
    if (!failure) {
        StoreRestore restore(*source, *target);
        failure = (restore.*run)();
        if (!failure)
            return restore.kept() ? restore.kept()->path() : QStringLiteral("");
    }
    ReportWithoutStore(*failure, error);
    return std::nullopt;
}

} // namespace

SqliteDatabaseFactory::SqliteDatabaseFactory(std::shared_ptr<SqliteStore> store)
    : _store(std::move(store))
{}

SqliteDatabaseFactory::~SqliteDatabaseFactory()
{
    _store->Close();
}

std::shared_ptr<SqliteDatabaseFactory>
SqliteDatabaseFactory::Open(QString const& path, QString* error, OpenOptions const& options)
{
    return OpenWithWords(error, [&](StoreError& reason) { return Open(path, reason, options); });
}

std::shared_ptr<SqliteDatabaseFactory>
SqliteDatabaseFactory::Open(QString const& path, StoreError& error, OpenOptions const& options)
{
    return OpenStore<SqliteDatabaseFactory>(error, [&](std::shared_ptr<SqliteDatabaseFactory>& factory) {
        std::optional<StoreFile> file;
        if (Failure failure = FindFile(path, file))
            return failure;
        factory.reset(new SqliteDatabaseFactory(std::make_shared<SqliteStore>(*file, options)));
        factory->_store->SetFactory(factory);
        return factory->_store->Open();
    });
}

std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> SqliteDatabaseFactory::CreateDatabase()
{
    return std::make_shared<StoreDatabase>(_store);
}

std::shared_ptr<sync::interf::IQSqlQueryWrapper> SqliteDatabaseFactory::CreateQuery()
{
    return std::make_shared<SqliteQuery>(_store->Connection());
}

QString SqliteDatabaseFactory::path() const
{
    return _store->file().path();
}

JournalMode SqliteDatabaseFactory::journalMode() const
{
    return _store->journalMode();
}

QStringList SqliteDatabaseFactory::openingWarnings() const
{
    return _store->openingWarnings();
}

template <class Operation>
bool SqliteDatabaseFactory::Answer(QString* error, Operation const& operation)
{
    std::shared_ptr<SqliteConnection> const connection = _store->Connection();
    Failure const failure = connection != nullptr ? operation(*connection) : _store->NoConnection();
    if (failure && connection != nullptr)
        connection->errors().Record(*failure);
    if (failure && error != nullptr)
        *error = failure->text;
    return !failure;
}

bool SqliteDatabaseFactory::Backup(QString const& path, QString* error)
{
    return Answer(error, [&](SqliteConnection& connection) {
        std::optional<StoreFile> target;
        Failure failure = FindFile(path, target);
        return failure ? failure : _store->Backup(connection, *target);
    });
}

bool SqliteDatabaseFactory::DryRunBackup(QString const& path, QString* error)
{
    return Answer(error, [&](SqliteConnection& connection) {
        std::optional<StoreFile> target;
        Failure failure = FindFile(path, target);
        return failure ? failure : _store->DryRunBackup(connection, *target);
    });
}

std::optional<QString> SqliteDatabaseFactory::Restore(QString const& backup, QString const& path, StoreError& error)
{
    return RunRestore(backup, path, error, &StoreRestore::Run);
}

std::optional<QString>
SqliteDatabaseFactory::DryRunRestore(QString const& backup, QString const& path, StoreError& error)
{
    return RunRestore(backup, path, error, &StoreRestore::DryRun);
}

std::optional<Compaction> SqliteDatabaseFactory::Compact(CompactionProgress const& progress, QString* error)
{
    Compaction compaction;
    auto const compact = [&](SqliteConnection& connection) {
        return _store->Compact(connection, progress, compaction);
    };
    if (!Answer(error, compact))
        return std::nullopt;
    return compaction;
}

std::optional<QStringList> SqliteDatabaseFactory::FindDamage(QString* error)
{
    QStringList damage;
    if (!Answer(error, [&](SqliteConnection& connection) { return _store->FindDamage(connection, damage); }))
        return std::nullopt;
    return damage;
}

std::optional<StoreError> SqliteDatabaseFactory::LastError() const
{
    return _store->LastError();
}

void SqliteDatabaseFactory::ClearError()
{
    _store->ClearError();
}

std::unique_ptr<StoreChanges> SqliteDatabaseFactory::WatchChanges()
{
    std::unique_ptr<StoreChanges> changes;
    static_cast<void>(
        Answer(nullptr, [&](SqliteConnection& connection) { return _store->WatchChanges(connection, changes); }));
    return changes;
}

} // namespace sync::database
