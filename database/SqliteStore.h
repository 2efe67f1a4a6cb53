#pragma once

#include "database/OpenOptions.h"
#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"

#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace sync::database {

class SqliteConnection;
class SqliteDatabaseFactory;

/// What the connections of a factory have in common, and the list of them.
class SqliteStore : public std::enable_shared_from_this<SqliteStore>
{
public:
    SqliteStore(StoreFile file, OpenOptions const& options);

    /// Makes or opens the file, brought up to date where it may be written, and remembers which one it is.
    Failure Open();

    /// As the factory's operations of these names, for the calling thread and its connection.
    Failure Backup(SqliteConnection& connection, StoreFile const& target) const;
    Failure FindDamage(SqliteConnection& connection, QStringList& damage) const;

    /// Whom `TellLost` has send the signal. Called once, before other threads know the store.
    void SetFactory(std::weak_ptr<SqliteDatabaseFactory> factory) { _factory = std::move(factory); }

    StoreFile const& file() const { return _file; }
    OpenOptions const& options() const { return _options; }
    bool isReadOnly() const { return _options.mode == OpenMode::ReadOnly; }
    JournalMode journalMode() const { return _journalMode; }
    bool isClosed() const noexcept { return _closed.load(std::memory_order_acquire); }

    /// Why the file at the path is not the one that was opened, or nothing when it is.
    Failure CheckUnmoved() const;

    /// The calling thread's connection, which may not have been opened yet. Null while the thread's own data go.
    std::shared_ptr<SqliteConnection> Connection();
    /// The failure of an operation on a thread that has no connection any more.
    static Failure NoConnection();

    /// From here on every operation fails. Connections that nothing uses any more are closed.
    void Close();

    /// Whether some connection may have removed secrets that are still to be overwritten.
    std::atomic<bool>& removedSecrets() noexcept { return _removedSecrets; }

    /// Lets go of a connection whose thread ends; called on that thread.
    void Forget(SqliteConnection const* connection);

    /// Sends the factory's signal from the calling thread.
    void TellLost(StoreError const& error) const;

private:
    StoreFile const _file;
    OpenOptions const _options;
    FileIdentity _identity;
    JournalMode _journalMode = JournalMode::WriteAheadLog;
    std::weak_ptr<SqliteDatabaseFactory> _factory;
    std::atomic<bool> _closed{false};
    std::atomic<bool> _removedSecrets{false};

    std::mutex _mutex; // guards the list, not the connections
    std::vector<std::shared_ptr<SqliteConnection>> _connections;
};

} // namespace sync::database
