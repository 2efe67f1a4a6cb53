#pragma once

#include <QtGlobal>

#include <memory>
#include <vector>

namespace sync::database {

class StoreConnection;
class Store;

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
    StoreConnection* Find(Store const* store) const;
    void Add(std::shared_ptr<Store> const& store, StoreConnection* connection);

private:
    struct Entry
    {
        std::weak_ptr<Store> store;
        /// The store's address, which no other store can have as long as the weak pointer keeps its memory: stores are
        /// made by `make_shared`.
        Store const* key;
        StoreConnection* connection;
    };

    std::vector<Entry> _entries;
};

} // namespace sync::database
