#include "database/SqliteQuery.h"

#include "database/SqliteStore.h"
#include "database/sqlite/ErrorTexts.h"

#include <algorithm>

namespace sync::database {

SqliteQuery::SqliteQuery(std::shared_ptr<SqliteConnection> connection)
    : _connection(std::move(connection))
{}

SqliteQuery::~SqliteQuery() = default;

bool SqliteQuery::prepare(QString const& statement)
{
    _position = Position::AtEnd;
    _result = {};
    _bindFailures.clear();
    _prepareFailure = {};
    _lastError.clear();
    if (_connection == nullptr)
        _prepareFailure = MakeError(SQLITE_MISUSE, Store::NoConnectionWords());
    else
        _prepareFailure = _connection->Prepare(statement, _statement);
    if (_prepareFailure)
        _lastError = _prepareFailure->text;
    return !_prepareFailure;
}

void SqliteQuery::bindValue(QString const& placeholder, QVariant const& value)
{
    if (_statement == nullptr)
        return;
    finish();
    std::optional<StatementError> const error = _statement->Bind(placeholder, value);
    if (!_bindFailures.empty()) {
        _bindFailures.erase(std::remove_if(_bindFailures.begin(),
                                           _bindFailures.end(),
                                           [&](auto const& failure) { return failure.first == placeholder; }),
                            _bindFailures.end());
    }
    if (error)
        _bindFailures.emplace_back(placeholder, _connection->Describe(*error, *_statement));
}

bool SqliteQuery::exec()
{
    finish();
    _result = {};
    _lastError.clear();
    if (_prepareFailure)
        return Fail(*_prepareFailure);
    if (_statement == nullptr)
        return Fail(MakeError(SQLITE_MISUSE, QStringLiteral("no statement was prepared")));
    if (!_bindFailures.empty())
        return Fail(_bindFailures.front().second);
    if (Failure const failure = _connection->Run(*_statement, _result))
        return Fail(*failure);
    _position = _result.hasRow ? Position::BeforeFirst : Position::AtEnd;
    return true;
}

bool SqliteQuery::next()
{
    if (_position == Position::BeforeFirst) {
        _position = Position::OnRow;
        return true;
    }
    if (_position == Position::AtEnd)
        return false;
    bool hasRow = false;
    Failure const failure = _connection->Advance(*_statement, hasRow);
    if (failure)
        return Fail(*failure);
    if (!hasRow)
        _position = Position::AtEnd;
    return hasRow;
}

bool SqliteQuery::isValid()
{
    return _position == Position::OnRow;
}

QVariant SqliteQuery::value(int column)
{
    return _position == Position::OnRow ? _statement->Value(column) : QVariant();
}

QString SqliteQuery::lastError()
{
    return _lastError;
}

void SqliteQuery::finish()
{
    if (_position != Position::AtEnd)
        _statement->Reset();
    _position = Position::AtEnd;
}

QVariant SqliteQuery::lastInsertId()
{
    return _result.insertId != 0 ? QVariant(static_cast<qlonglong>(_result.insertId)) : QVariant();
}

int SqliteQuery::numRowsAffected()
{
    return _result.rowsAffected;
}

bool SqliteQuery::isReading() const
{
    return _statement != nullptr && _statement->isReading();
}

QStringList SqliteQuery::columnNames() const
{
    return _statement != nullptr ? _statement->ColumnNames() : QStringList();
}

SqliteValue SqliteQuery::storedValue(int column) const
{
    return _position == Position::OnRow ? _statement->Stored(column) : SqliteValue();
}

bool SqliteQuery::Fail(StoreError const& error)
{
    finish();
    _lastError = error.text;
    if (_connection != nullptr)
        _connection->errors().Record(error);
    return false;
}

} // namespace sync::database
