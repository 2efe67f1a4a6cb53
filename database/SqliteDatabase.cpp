#include "database/SqliteDatabase.h"

#include "database/SqliteStore.h"

#include <utility>

namespace sync::database {

SqliteDatabase::SqliteDatabase(std::shared_ptr<SqliteConnection> connection)
    : _connection(std::move(connection))
{}

SqliteDatabase::~SqliteDatabase() = default;

bool SqliteDatabase::isOpen()
{
    return Run(&SqliteConnection::Open);
}

QString SqliteDatabase::lastError()
{
    return _lastError;
}

bool SqliteDatabase::transaction()
{
    return Run(&SqliteConnection::BeginTransaction);
}

bool SqliteDatabase::commit()
{
    return Run(&SqliteConnection::CommitTransaction);
}

bool SqliteDatabase::rollback()
{
    return Run(&SqliteConnection::RollBackTransaction);
}

bool SqliteDatabase::Run(Failure (SqliteConnection::*operation)())
{
    Failure const failure = _connection != nullptr ? (_connection.get()->*operation)() : SqliteStore::NoConnection();
    _lastError = failure ? failure->text : QString();
    if (failure && _connection != nullptr)
        _connection->errors().Record(*failure);
    return !failure;
}

} // namespace sync::database
