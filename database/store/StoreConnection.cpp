#include "database/store/StoreConnection.h"

#include "database/store/Store.h"

#include <utility>

namespace sync::database {

StoreConnection::StoreConnection(std::shared_ptr<Store> store)
    : _store(std::move(store))
    , _thread(std::this_thread::get_id())
    , _errors(*_store)
    , _transaction(*_store, _errors)
{}

StoreConnection::~StoreConnection() = default;

Failure StoreConnection::CheckThread() const
{
    if (_store->isClosed())
        return _store->Refuse(Refusal::Misuse, QStringLiteral("the store has been closed"));
    if (_thread != std::this_thread::get_id())
        return _store->Refuse(Refusal::Misuse,
                              QStringLiteral("a query or a transaction was used on another thread than its own"));
    return {};
}

Failure StoreConnection::CheckNotReadOnly() const
{
    if (!_store->isReadOnly())
        return {};
    return _store->Refuse(Refusal::ReadOnly, QStringLiteral("the store has been opened for reading only"));
}

Failure StoreConnection::BeginTransaction()
{
    if (Failure failure = Open())
        return failure;
    if (Failure failure = CheckNotReadOnly())
        return failure;
    return _transaction.BeginClient(transactionHandle());
}

Failure StoreConnection::CommitTransaction()
{
    Failure failure = CheckThread();
    return failure ? failure : _transaction.CommitClient();
}

Failure StoreConnection::RollBackTransaction()
{
    Failure failure = CheckThread();
    return failure ? failure : _transaction.RollBackClient();
}

} // namespace sync::database
