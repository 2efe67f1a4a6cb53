#pragma once

#include "database/Compaction.h"
#include "database/OpenOptions.h"
#include "database/file/OwnCommits.h"
#include "database/file/SecretErasure.h"
#include "database/file/StoreHandle.h"
#include "database/file/StorePresence.h"
#include "database/store/Store.h"

#include <QStringList>

#include <memory>
#include <optional>

namespace sync::database {

class SqliteConnection;
class StoreBackup;
class StoreChanges;

/// A store in a file, with its connections. Any thread may call any operation.
class SqliteStore : public Store
{
public:
    SqliteStore(StoreFile file, OpenOptions const& options);

    /// Creates or opens the file, upgrades it if it may be written, and remembers its identity.
    Failure Open();

    StoreFile const& file() const { return _file; }
    OpenOptions const& options() const { return _options; }
    JournalMode journalMode() const { return _journalMode; }
    /// Warnings of `Open`, which are no failures.
    QStringList const& openingWarnings() const { return _openingWarnings; }
    bool isReadOnly() const override { return _options.mode == OpenMode::ReadOnly; }
    StoreAccess access() const { return isReadOnly() ? StoreAccess::ReadOnly : StoreAccess::ReadWrite; }
    StoreError Refuse(Refusal refusal, QString const& words) const override;

    /// Fails if the handle was opened on another file than the store.
    Failure CheckIdentity(StoreHandle const& handle) const;

    /// The factory's operations of these names, for the calling thread's connection.
    Failure Backup(SqliteConnection& connection, StoreFile const& target) const;
    Failure DryRunBackup(SqliteConnection& connection, StoreFile const& target) const;
    Failure Compact(SqliteConnection& connection, CompactionProgress const& progress, Compaction& compaction) const;
    Failure FindDamage(SqliteConnection& connection, QStringList& damage) const;

    /// As in the base.
    std::shared_ptr<SqliteConnection> Connection();

    SecretErasure& secretErasure() noexcept { return _secretErasure; }
    /// REQUIRES: the file has been found.
    std::shared_ptr<OwnCommits> const& ownCommits() const noexcept { return _ownCommits; }

    /// The factory's operation of this name; sets `changes` unless it fails.
    Failure WatchChanges(SqliteConnection& connection, std::unique_ptr<StoreChanges>& changes);

private:
    std::shared_ptr<StoreConnection> MakeConnection() override;
    void WarnOfDroppedCommits();
    Failure RunBackup(SqliteConnection& connection,
                      StoreFile const& target,
                      Failure (StoreBackup::*run)(StoreFile const&) const) const;

    StoreFile const _file;
    OpenOptions const _options;
    std::optional<FileIdentity> _identity;
    JournalMode _journalMode = JournalMode::WriteAheadLog;
    QStringList _openingWarnings;
    SecretErasure _secretErasure;
    std::shared_ptr<OwnCommits> _ownCommits;
    std::optional<StorePresence> _presence;
};

} // namespace sync::database
