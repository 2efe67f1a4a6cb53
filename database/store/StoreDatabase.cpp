#include "database/store/StoreDatabase.h"

#include "database/store/Store.h"

#include <utility>

namespace sync::database {

StoreDatabase::StoreDatabase(std::shared_ptr<Store> store)
    : _store(std::move(store))
    , _connection(_store->Connection())
{}

StoreDatabase::~StoreDatabase() = default;

bool StoreDatabase::isOpen()
{
    return Run(&StoreConnection::Open);
}

QString StoreDatabase::lastError()
{
    return _lastError;
}

bool StoreDatabase::transaction()
{
    return Run(&StoreConnection::BeginTransaction);
}

bool StoreDatabase::commit()
{
    return Run(&StoreConnection::CommitTransaction);
}

bool StoreDatabase::rollback()
{
    return Run(&StoreConnection::RollBackTransaction);
}

bool StoreDatabase::Run(Failure (StoreConnection::*operation)())
{
    Failure const failure = _connection != nullptr ? (_connection.get()->*operation)() : _store->NoConnection();
    _lastError = failure ? failure->text : QString();
    if (failure && _connection != nullptr)
        _connection->errors().Record(*failure);
    return !failure;
}

} // namespace sync::database
