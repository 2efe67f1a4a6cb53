#include "database/store/ThreadConnections.h"

#include "database/TransactionalScope.h"
#include "database/store/Store.h"

#include <algorithm>

namespace sync::database {

namespace {

/// Has no destructor, so that it can be read until the thread has ended.
thread_local bool isThreadEnding = false;

} // namespace

ThreadConnections* ThreadConnections::OfThisThread()
{
    if (isThreadEnding)
        return nullptr;
    thread_local ThreadConnections connections;
    return &connections;
}

ThreadConnections::ThreadConnections()
{
    // The thread's scopes must outlast its connections. What is constructed first is destroyed last.
    static_cast<void>(TransactionalScope::Depth());
}

ThreadConnections::~ThreadConnections()
{
    isThreadEnding = true;
    for (Entry const& entry : _entries) {
        if (std::shared_ptr<Store> const store = entry.store.lock())
            store->Forget(entry.connection);
    }
}

StoreConnection* ThreadConnections::Find(Store const* store) const
{
    for (Entry const& entry : _entries) {
        if (entry.key == store)
            return entry.connection;
    }
    return nullptr;
}

void ThreadConnections::Add(std::shared_ptr<Store> const& store, StoreConnection* connection)
{
    _entries.erase(
        std::remove_if(_entries.begin(), _entries.end(), [](Entry const& entry) { return entry.store.expired(); }),
        _entries.end());
    _entries.push_back({store, store.get(), connection});
}

} // namespace sync::database
