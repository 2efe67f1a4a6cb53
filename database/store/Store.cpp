#include "database/store/Store.h"

#include "database/StoreFactory.h"
#include "database/store/StoreConnection.h"
#include "database/store/ThreadConnections.h"

#include <algorithm>

namespace sync::database {

Store::Store() = default;
Store::~Store() = default;

std::shared_ptr<StoreConnection> Store::Connection()
{
    ThreadConnections* const connections = ThreadConnections::OfThisThread();
    if (connections == nullptr)
        return nullptr;
    if (StoreConnection* const found = connections->Find(this))
        return found->shared_from_this();

    std::shared_ptr<StoreConnection> connection = MakeConnection();
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _connections.push_back(connection);
    }
    connections->Add(shared_from_this(), connection.get());
    return connection;
}

Failure Store::NoConnection() const
{
    return Refuse(Refusal::Misuse, NoConnectionWords());
}

QString Store::NoConnectionWords()
{
    return QStringLiteral("the thread is ending and has closed its stores");
}

std::optional<StoreError> Store::LastError()
{
    std::shared_ptr<StoreConnection> const connection = Connection();
    return connection != nullptr ? connection->errors().first() : std::nullopt;
}

void Store::ClearError()
{
    if (std::shared_ptr<StoreConnection> const connection = Connection())
        connection->errors().Clear();
}

void Store::Close()
{
    _isClosed.store(true, std::memory_order_release);
    std::vector<std::shared_ptr<StoreConnection>> connections;
    std::lock_guard<std::mutex> const lock(_mutex);
    connections.swap(_connections);
}

void Store::Forget(StoreConnection const* connection)
{
    std::shared_ptr<StoreConnection> forgotten;
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

void Store::EmitCommitFailed(StoreError const& error) const
{
    if (std::shared_ptr<StoreFactory> const factory = _factory.lock())
        Q_EMIT factory->CommitFailed(error);
}

} // namespace sync::database
