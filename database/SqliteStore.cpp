#include "database/SqliteStore.h"

#include "database/SqliteConnection.h"
#include "database/StoreFactory.h"
#include "database/ThreadConnections.h"
#include "database/file/DroppedCommits.h"
#include "database/file/StoreBackup.h"
#include "database/file/StoreCompaction.h"
#include "database/file/StoreCreation.h"
#include "database/file/StoreDamage.h"
#include "database/file/StoreHeader.h"
#include "database/file/StoreLog.h"
#include "database/file/StoreSnapshot.h"
#include "database/file/StoreUpgrade.h"
#include "database/sqlite/ErrorTexts.h"

#include <algorithm>

namespace sync::database {

SqliteStore::SqliteStore(StoreFile file, OpenOptions const& options)
    : _file(std::move(file))
    , _options(options)
{}

Failure SqliteStore::Open()
{
    if (Failure failure = _file.CheckName())
        return failure;
    if (_file.IsMissing()) {
        if (_options.mode != OpenMode::OpenOrCreate)
            return MakeError(_file.path(), SQLITE_CANTOPEN, QStringLiteral("there is no such file"));
        if (Failure failure = CreateStore(_file, _options.journalMode))
            return failure;
    }
    if (Failure failure = StoreHeader::Check(_file))
        return failure;
    _presence.emplace(_file);
    _identity = _file.Identity();
    if (!_identity)
        return MakeError(_file.path(), SQLITE_CANTOPEN, QStringLiteral("the file went away while it was opened"));

    std::shared_ptr<SqliteConnection> const connection = Connection();
    if (connection == nullptr)
        return NoConnection();
    if (!isReadOnly())
        WarnOfDroppedCommits();
    // A log or a journal that was left behind may hold another version than the header, so SQLite has to read it first.
    Failure failure = connection->OpenFirst();
    if (failure && failure->code == SQLITE_SCHEMA && !isReadOnly()) {
        failure = StoreUpgrade(_file, _options.busyTimeoutMsec).Run();
        if (!failure)
            failure = connection->OpenFirst();
    }
    if (!failure)
        _journalMode = connection->journalMode();
    return failure;
}

void SqliteStore::WarnOfDroppedCommits()
{
    int const commits = CountDroppedCommits(_file);
    if (commits == 0)
        return;
    QString const words =
        QStringLiteral("%1-wal: this log was left behind when a program ended without closing the store, and it is "
                       "spoilt. What stands "
                       "behind the spoilt place is lost: %2 commits, of which the last may not have been finished");
    _openingWarnings.append(words.arg(_file.path()).arg(commits));
    qCWarning(StoreLog).noquote() << _openingWarnings.last();
}

Failure SqliteStore::CheckIdentity(StoreHandle const& handle) const
{
    if (handle.identity() && handle.identity() == _identity)
        return {};
    return DescribeError(nullptr, SQLITE_READONLY_DBMOVED, _file.path());
}

Failure SqliteStore::Backup(SqliteConnection& connection, StoreFile const& target) const
{
    return RunBackup(connection, target, &StoreBackup::Write);
}

Failure SqliteStore::DryRunBackup(SqliteConnection& connection, StoreFile const& target) const
{
    return RunBackup(connection, target, &StoreBackup::DryRun);
}

Failure SqliteStore::RunBackup(SqliteConnection& connection,
                               StoreFile const& target,
                               Failure (StoreBackup::*run)(StoreFile const&) const) const
{
    if (Failure failure = connection.OpenForSnapshot())
        return MakeError(target.path(), failure->code, QStringLiteral("no backup can be made: ") + failure->text);
    return (StoreBackup(_file, access(), _options.busyTimeoutMsec).*run)(target);
}

Failure
SqliteStore::Compact(SqliteConnection& connection, CompactionProgress const& progress, Compaction& compaction) const
{
    if (isReadOnly())
        return MakeError(_file.path(), SQLITE_READONLY, QStringLiteral("the store has been opened for reading only"));
    if (Failure failure = connection.OpenForSnapshot())
        return failure;
    return StoreCompaction(_file, _options.busyTimeoutMsec).Run(progress, compaction);
}

Failure SqliteStore::FindDamage(SqliteConnection& connection, QStringList& damage) const
{
    if (Failure failure = connection.OpenForSnapshot())
        return failure;
    StoreSnapshot snapshot(_file, _options.busyTimeoutMsec);
    if (Failure failure = snapshot.Open(access()))
        return failure;
    return database::FindDamage(snapshot.store(), damage);
}

std::shared_ptr<SqliteConnection> SqliteStore::Connection()
{
    ThreadConnections* const connections = ThreadConnections::OfThisThread();
    if (connections == nullptr)
        return nullptr;
    if (SqliteConnection* const found = connections->Find(this))
        return found->shared_from_this();

    auto connection = std::make_shared<SqliteConnection>(shared_from_this());
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _connections.push_back(connection);
    }
    connections->Add(shared_from_this(), connection.get());
    return connection;
}

Failure SqliteStore::NoConnection()
{
    return MakeError(SQLITE_MISUSE, QStringLiteral("the thread is ending and has closed its stores"));
}

void SqliteStore::Close()
{
    _isClosed.store(true, std::memory_order_release);
    std::vector<std::shared_ptr<SqliteConnection>> connections;
    std::lock_guard<std::mutex> const lock(_mutex);
    connections.swap(_connections);
}

void SqliteStore::Forget(SqliteConnection const* connection)
{
    std::shared_ptr<SqliteConnection> forgotten;
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        auto const found = std::find_if(
            _connections.begin(), _connections.end(), [&](auto const& own) { return own.get() == connection; });
        if (found == _connections.end())
            return;
        forgotten = std::move(*found);
        _connections.erase(found);
    }
    forgotten->CommitAbandonedScope();
}

void SqliteStore::EmitCommitFailed(StoreError const& error) const
{
    if (std::shared_ptr<StoreFactory> const factory = _factory.lock())
        Q_EMIT factory->CommitFailed(error);
}

} // namespace sync::database
