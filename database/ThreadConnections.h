#pragma once

#include <QtGlobal>

#include <memory>
#include <vector>

namespace sync::database {

class SqliteConnection;
class SqliteStore;

/// The calling thread's connections, found by their stores. The stores own them; the end of the thread removes them.
class ThreadConnections
{
public:
    /// Returns null while the thread's own data are being destroyed, when its connections have been closed for good.
    static ThreadConnections* OfThisThread();

    ThreadConnections();
    ~ThreadConnections();
    Q_DISABLE_COPY_MOVE(ThreadConnections)

    /// Returns null if the thread has no connection to the store yet.
    SqliteConnection* Find(SqliteStore const* store) const;
    void Add(std::shared_ptr<SqliteStore> const& store, SqliteConnection* connection);

private:
    struct Entry
    {
        std::weak_ptr<SqliteStore> store;
        /// The store's address, which no other store can have as long as the weak pointer keeps its memory: stores are
        /// made by `make_shared`.
        SqliteStore const* key;
        SqliteConnection* connection;
    };

    std::vector<Entry> _entries;
};

} // namespace sync::database
