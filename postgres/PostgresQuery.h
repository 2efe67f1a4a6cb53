#pragma once

#include "interf/IQSqlQueryWrapper.h"
#include "postgres/PostgresConnection.h"

#include <memory>
#include <utility>
#include <vector>

namespace sync::database {

/// One run of a statement on a thread's connection. All of its rows are fetched at `exec`, so that they belong to one
/// state of the store, and no query waits for another.
class PostgresQuery : public sync::interf::IQSqlQueryWrapper
{
    Q_OBJECT

public:
    /// Without a connection every operation fails.
    explicit PostgresQuery(std::shared_ptr<PostgresConnection> connection);
    ~PostgresQuery() override;

    QVariant value(int column) override;
    bool next() override;
    bool isValid() override;
    bool prepare(QString const& statement) override;
    void bindValue(QString const& placeholder, QVariant const& value) override;
    bool exec() override;
    QString lastError() override;
    void finish() override;
    QVariant lastInsertId() override;
    int numRowsAffected() override;

private:
    bool Fail(StoreError const& error);
    int RowCount() const { return _statement != nullptr && _statement->isReading() ? PQntuples(_result.get()) : 0; }

    std::shared_ptr<PostgresConnection> _connection;
    std::shared_ptr<StatementText const> _statement;
    BoundValues _values;
    /// The number of the placeholder that is probably bound next.
    std::size_t _nextBound = 0;
    Result _result;
    /// Before the first row at -1.
    int _row = -1;
    Failure _prepareFailure;
    /// By placeholder. Binding an acceptable value removes the failure.
    std::vector<std::pair<QString, StoreError>> _bindFailures;
    QString _lastError;
};

} // namespace sync::database
