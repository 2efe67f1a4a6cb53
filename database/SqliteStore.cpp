#include "database/SqliteStore.h"

#include "database/SqliteConnection.h"
#include "database/SqliteDatabaseFactory.h"
#include "database/TransactionalScope.h"
#include "database/file/StoreBackup.h"
#include "database/file/StoreLog.h"
#include "database/file/StoreSnapshot.h"
#include "database/file/StoreUpgrade.h"
#include "database/sqlite/ErrorTexts.h"

#include <algorithm>
#include <utility>

namespace sync::database {

namespace {

/// Set once a thread's connections have been closed for good; without a destructor, so that it can be asked later.
thread_local bool threadIsEnding = false;

/// The connections of a thread. The stores own them; the end of the thread takes them out.
class ThreadConnections
{
public:
    ThreadConnections()
    {
        // The thread's scopes must outlast its connections, and what is made first goes last.
        static_cast<void>(TransactionalScope::Depth());
    }

    ~ThreadConnections()
    {
        threadIsEnding = true;
        for (Entry const& entry : _entries) {
            if (std::shared_ptr<SqliteStore> const store = entry.store.lock())
                store->Forget(entry.connection);
        }
    }

    Q_DISABLE_COPY_MOVE(ThreadConnections)

    SqliteConnection* Find(SqliteStore const* store) const
    {
        for (Entry const& entry : _entries) {
            if (entry.key == store)
                return entry.connection;
        }
        return nullptr;
    }

    void Add(std::shared_ptr<SqliteStore> const& store, SqliteConnection* connection)
    {
        _entries.erase(
            std::remove_if(_entries.begin(), _entries.end(), [](Entry const& entry) { return entry.store.expired(); }),
            _entries.end());
        _entries.push_back({store, store.get(), connection});
    }

private:
    struct Entry
    {
        std::weak_ptr<SqliteStore> store;
        /// No other store can come to this address while the entry holds its weak share, as stores are made by
        /// `make_shared`.
        SqliteStore const* key;
        SqliteConnection* connection;
    };

    std::vector<Entry> _entries;
};

} // namespace

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
        if (Failure failure = _file.Make(_options.journalMode))
            return failure;
    }
    if (Failure failure = _file.CheckHeader())
        return failure;

    std::optional<FileIdentity> const identity = _file.Identity();
    if (!identity)
        return MakeError(_file.path(), SQLITE_CANTOPEN, QStringLiteral("the file went away while it was opened"));
    _identity = *identity;

    std::shared_ptr<SqliteConnection> const connection = Connection();
    if (connection == nullptr)
        return NoConnection();
    // Which version a store has is known once a log or a journal that was left behind has been looked at, too.
    Failure failure = connection->OpenAndCheck();
    if (failure && failure->code == SQLITE_SCHEMA && !isReadOnly()) {
        failure = StoreUpgrade(_file, _options.busyTimeoutMsec).Run();
        if (!failure)
            failure = connection->OpenAndCheck();
    }
    if (failure)
        return failure;
    _journalMode = connection->journalMode();
    return {};
}

Failure SqliteStore::Backup(SqliteConnection& connection, StoreFile const& target) const
{
    Failure failure = connection.OpenBeside();
    if (failure)
        return MakeError(target.path(), failure->code, QStringLiteral("no backup can be made: ") + failure->text);
    return StoreBackup(_file, isReadOnly(), _options.busyTimeoutMsec).Write(target);
}

Failure SqliteStore::FindDamage(SqliteConnection& connection, QStringList& damage) const
{
    if (Failure failure = connection.OpenBeside())
        return failure;
    StoreSnapshot snapshot(_file, _options.busyTimeoutMsec);
    if (Failure failure = snapshot.Open(isReadOnly()))
        return failure;
    return snapshot.FindDamage(damage);
}

Failure SqliteStore::NoConnection()
{
    return MakeError(SQLITE_MISUSE, QStringLiteral("the thread is ending and has closed its stores"));
}

Failure SqliteStore::CheckUnmoved() const
{
    if (std::optional<FileIdentity> const found = _file.Identity(); found && *found == _identity)
        return {};
    return DescribeError(nullptr, SQLITE_READONLY_DBMOVED, _file.path());
}

std::shared_ptr<SqliteConnection> SqliteStore::Connection()
{
    if (threadIsEnding)
        return nullptr;
    thread_local ThreadConnections connections;
    if (SqliteConnection* const found = connections.Find(this))
        return found->shared_from_this();

    auto connection = std::make_shared<SqliteConnection>(shared_from_this());
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _connections.push_back(connection);
    }
    connections.Add(shared_from_this(), connection.get());
    return connection;
}

void SqliteStore::Close()
{
    _closed.store(true, std::memory_order_release);
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
    forgotten->LeaveThread();
}

void SqliteStore::TellLost(StoreError const& error) const
{
    qCCritical(StoreLog).noquote() << error.text;
    if (std::shared_ptr<SqliteDatabaseFactory> const factory = _factory.lock())
        Q_EMIT factory->CommitFailed(error);
}

} // namespace sync::database
