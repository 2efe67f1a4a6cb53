#pragma once

#include "database/SqliteConnection.h"
#include "database/StatementDetails.h"
#include "interf/IQSqlQueryWrapper.h"

#include <memory>
#include <utility>
#include <vector>

namespace sync::database {

/// One run of a statement on a thread's connection.
class SqliteQuery : public sync::interf::IQSqlQueryWrapper, public StatementDetails
{
    Q_OBJECT
    Q_INTERFACES(sync::database::StatementDetails)

public:
    /// Without a connection every operation fails.
    explicit SqliteQuery(std::shared_ptr<SqliteConnection> connection);
    ~SqliteQuery() override;

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

    bool isReading() const override;
    QStringList columnNames() const override;
    SqliteValue storedValue(int column) const override;

private:
    enum class Position
    {
        AtEnd,
        /// `exec` has already fetched the first row, so that it can report a failure; `next` moves to that row.
        BeforeFirst,
        OnRow,
    };

    bool Fail(StoreError const& error);

    std::shared_ptr<SqliteConnection> _connection;
    StatementLease _statement; // goes before the connection
    Position _position = Position::AtEnd;
    RunResult _result;
    Failure _prepareFailure;
    /// By placeholder. Binding an acceptable value removes the failure.
    std::vector<std::pair<QString, StoreError>> _bindFailures;
    QString _lastError;
};

} // namespace sync::database
