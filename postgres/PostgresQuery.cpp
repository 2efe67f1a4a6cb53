#include "postgres/PostgresQuery.h"

#include "database/store/Store.h"
#include "postgres/PostgresStore.h"
#include "postgres/ServerErrors.h"
#include "postgres/ServerValues.h"

#include <algorithm>

namespace sync::database {

PostgresQuery::PostgresQuery(std::shared_ptr<PostgresConnection> connection)
    : _connection(std::move(connection))
{}

PostgresQuery::~PostgresQuery() = default;

bool PostgresQuery::prepare(QString const& statement)
{
    finish();
    _result.reset();
    _values.clear();
    _nextBound = 0;
    _bindFailures.clear();
    _prepareFailure = {};
    _lastError.clear();
    if (_connection == nullptr)
        _prepareFailure = MakeServerError(ServerState::Misuse, Store::NoConnectionWords());
    else
        _prepareFailure = _connection->Prepare(statement, _statement);
    if (_prepareFailure)
        _lastError = _prepareFailure->text;
    else
        _values.resize(_statement->placeholders().size());
    return !_prepareFailure;
}

void PostgresQuery::bindValue(QString const& placeholder, QVariant const& value)
{
    if (_statement == nullptr)
        return;
    finish();
    _bindFailures.erase(std::remove_if(_bindFailures.begin(),
                                       _bindFailures.end(),
                                       [&](auto const& failure) { return failure.first == placeholder; }),
                        _bindFailures.end());
    auto const& names = _statement->placeholders();
    // Most values are bound in the order of their placeholders.
    if (_nextBound >= names.size() || names[_nextBound] != placeholder)
        _nextBound = static_cast<std::size_t>(std::find(names.begin(), names.end(), placeholder) - names.begin());
    QString words;
    if (_nextBound == names.size())
        words = QStringLiteral("the statement has no placeholder %1");
    else
        _values[_nextBound++] = ToServer(value, words);
    if (!words.isEmpty()) {
        QString const text =
            _connection->postgresStore().address().name + QStringLiteral(": ") + words.arg(placeholder);
        _bindFailures.emplace_back(placeholder, MakeServerError(ServerState::InvalidValue, text, _statement->text()));
    }
}

bool PostgresQuery::exec()
{
    finish();
    _lastError.clear();
    if (_prepareFailure)
        return Fail(*_prepareFailure);
    if (_statement == nullptr)
        return Fail(MakeServerError(ServerState::Misuse, QStringLiteral("no statement was prepared")));
    if (!_bindFailures.empty())
        return Fail(_bindFailures.front().second);
    if (Failure const failure = _connection->Run(*_statement, _values, _result))
        return Fail(*failure);
    return true;
}

bool PostgresQuery::next()
{
    if (_row >= RowCount())
        return false;
    if (Failure const failure = _connection->CheckUse(*_statement))
        return Fail(*failure);
    return ++_row < RowCount();
}

bool PostgresQuery::isValid()
{
    return _row >= 0 && _row < RowCount();
}

QVariant PostgresQuery::value(int column)
{
    if (!isValid() || column < 0 || column >= PQnfields(_result.get()))
        return {};
    bool const isClockReading =
        _connection->postgresStore().HoldsDateTime(PQftable(_result.get(), column), PQftablecol(_result.get(), column));
    return FromServer(_result.get(), _row, column, isClockReading);
}

QString PostgresQuery::lastError()
{
    return _lastError;
}

void PostgresQuery::finish()
{
    // What a write has returned stays until the next run.
    if (_statement == nullptr || _statement->isReading())
        _result.reset();
    _row = -1;
}

QVariant PostgresQuery::lastInsertId()
{
    int const rows = _statement != nullptr && _statement->returnsId() ? PQntuples(_result.get()) : 0;
    return rows > 0 ? FromServer(_result.get(), rows - 1, 0, false) : QVariant();
}

int PostgresQuery::numRowsAffected()
{
    if (_statement == nullptr || _statement->isReading() || _result == nullptr)
        return 0;
    return QByteArray(PQcmdTuples(_result.get())).toInt();
}

bool PostgresQuery::Fail(StoreError const& error)
{
    finish();
    _result.reset();
    _lastError = error.text;
    if (_connection != nullptr)
        _connection->errors().Record(error);
    return false;
}

} // namespace sync::database
