#include "database/SqliteStore.h"

#include "database/SqliteChanges.h"
#include "database/SqliteConnection.h"
#include "database/file/DroppedCommits.h"
#include "database/file/StoreBackup.h"
#include "database/file/StoreCompaction.h"
#include "database/file/StoreCreation.h"
#include "database/file/StoreDamage.h"
#include "database/file/StoreHeader.h"
#include "database/file/StoreSnapshot.h"
#include "database/file/StoreUpgrade.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/store/StoreLog.h"

#include <utility>

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
    _ownCommits = OwnCommits::Of(*_identity);

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
        return Refuse(Refusal::ReadOnly, QStringLiteral("the store has been opened for reading only"));
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

Failure SqliteStore::WatchChanges(SqliteConnection& connection, std::unique_ptr<StoreChanges>& changes)
{
    if (Failure failure = connection.Open())
        return failure;
    auto opened = std::make_unique<SqliteChanges>(std::static_pointer_cast<SqliteStore>(shared_from_this()));
    Failure failure = opened->Open();
    if (!failure)
        changes = std::move(opened);
    return failure;
}

std::shared_ptr<SqliteConnection> SqliteStore::Connection()
{
    return std::static_pointer_cast<SqliteConnection>(Store::Connection());
}

std::shared_ptr<StoreConnection> SqliteStore::MakeConnection()
{
    return std::make_shared<SqliteConnection>(std::static_pointer_cast<SqliteStore>(shared_from_this()));
}

StoreError SqliteStore::Refuse(Refusal refusal, QString const& words) const
{
    switch (refusal) {
    case Refusal::RolledBack:
        return MakeError(_file.path(), SQLITE_ABORT_ROLLBACK, words);
    case Refusal::ReadOnly:
        return MakeError(_file.path(), SQLITE_READONLY, words);
    case Refusal::Misuse:
        break;
    }
    return MakeError(_file.path(), SQLITE_MISUSE, words);
}

} // namespace sync::database
