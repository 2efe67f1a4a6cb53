#pragma once

#include "database/Compaction.h"
#include "database/OpenOptions.h"
#include "database/file/SecretErasure.h"
#include "database/file/StoreHandle.h"
#include "database/file/StorePresence.h"

#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace sync::database {

class SqliteConnection;
class StoreBackup;
class StoreFactory;

/// The state that the connections of a factory share, and the list of them. Any thread may call any operation.
class SqliteStore : public std::enable_shared_from_this<SqliteStore>
{
public:
    SqliteStore(StoreFile file, OpenOptions const& options);

    /// Creates or opens the file, upgrades it if it may be written, and remembers its identity.
    Failure Open();

    /// Sets the factory that emits `CommitFailed`. Called once, before other threads know the store.
    void SetFactory(std::weak_ptr<StoreFactory> factory) { _factory = std::move(factory); }

    StoreFile const& file() const { return _file; }
    OpenOptions const& options() const { return _options; }
    JournalMode journalMode() const { return _journalMode; }
    /// Warnings of `Open`, which are no failures.
    QStringList const& openingWarnings() const { return _openingWarnings; }
    bool isReadOnly() const { return _options.mode == OpenMode::ReadOnly; }
    StoreAccess access() const { return isReadOnly() ? StoreAccess::ReadOnly : StoreAccess::ReadWrite; }
    bool isClosed() const noexcept { return _isClosed.load(std::memory_order_acquire); }

    /// Fails if the handle was opened on another file than the store.
    Failure CheckIdentity(StoreHandle const& handle) const;

    /// The factory's operations of these names, for the calling thread's connection.
    Failure Backup(SqliteConnection& connection, StoreFile const& target) const;
    Failure DryRunBackup(SqliteConnection& connection, StoreFile const& target) const;
    Failure Compact(SqliteConnection& connection, CompactionProgress const& progress, Compaction& compaction) const;
    Failure FindDamage(SqliteConnection& connection, QStringList& damage) const;

    /// Returns the calling thread's connection, which need not be open; null while the thread's own data are being
    /// destroyed.
    std::shared_ptr<SqliteConnection> Connection();
    /// The failure of an operation on a thread that has no connection any more.
    static Failure NoConnection();

    /// Makes every later operation fail, and closes the connections that nothing uses any more.
    void Close();
    /// Removes the connection of a thread that ends; called on that thread.
    void Forget(SqliteConnection const* connection);

    /// Emits the factory's signal on the calling thread.
    void EmitCommitFailed(StoreError const& error) const;

    SecretErasure& secretErasure() noexcept { return _secretErasure; }

private:
    void WarnOfDroppedCommits();
    Failure RunBackup(SqliteConnection& connection,
                      StoreFile const& target,
                      Failure (StoreBackup::*run)(StoreFile const&) const) const;

    StoreFile const _file;
    OpenOptions const _options;
    std::optional<FileIdentity> _identity;
    JournalMode _journalMode = JournalMode::WriteAheadLog;
    QStringList _openingWarnings;
    std::weak_ptr<StoreFactory> _factory;
    std::atomic<bool> _isClosed{false};
    SecretErasure _secretErasure;
    std::optional<StorePresence> _presence;

    std::mutex _mutex; // guards the list, not the connections
    std::vector<std::shared_ptr<SqliteConnection>> _connections;
};

} // namespace sync::database
