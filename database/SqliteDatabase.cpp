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
    return Answer(&SqliteConnection::Open);
}

QString SqliteDatabase::lastError()
{
    return _lastError;
}

bool SqliteDatabase::transaction()
{
    return Answer(&SqliteConnection::BeginBracket);
}

bool SqliteDatabase::commit()
{
    return Answer(&SqliteConnection::CommitBracket);
}

bool SqliteDatabase::rollback()
{
    return Answer(&SqliteConnection::RollbackBracket);
}

bool SqliteDatabase::Answer(Failure (SqliteConnection::*operation)())
{
    Failure const failure = _connection != nullptr ? (_connection.get()->*operation)() : SqliteStore::NoConnection();
    _lastError = failure ? failure->text : QString();
    if (failure && _connection != nullptr)
        _connection->Record(*failure);
    return !failure;
}

} // namespace sync::database
