#include "database/SqliteDatabase.h"

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
    _lastError.clear();
    if (_connection == nullptr)
        return false;
    Failure const failure = (_connection.get()->*operation)();
    if (failure) {
        _lastError = failure->text;
        _connection->Record(*failure);
    }
    return !failure;
}

} // namespace sync::database
