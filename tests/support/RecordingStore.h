#pragma once

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/QtPrinters.h"

#include <QString>
#include <QVariant>
#include <QVector>

#include <deque>
#include <iosfwd>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tandry::test {

using Row = QVector<QVariant>;

/// A placeholder with the value that was bound.
struct Binding
{
    QString placeholder;
    QVariant value;
};

/// Equal if the placeholders, the types of the values, their nullness and the values are equal.
bool operator==(Binding const& left, Binding const& right);
void PrintTo(Binding const& binding, std::ostream* out);

/// A statement that was run by `exec`.
struct Execution
{
    QString statement;
    std::vector<Binding> bindings;
    int scopeDepth = 0;
    bool succeeded = true;
};

/// A store without a database. It records the managers' statements, returns prepared rows and fails on demand.
///
/// Executions are counted from 1. The destructor fails the test if a planned failure or a prepared result was not used.
class RecordingStore : public sync::interf::factory::IDatabaseFactory
{
public:
    RecordingStore();
    ~RecordingStore() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// Makes the nth `exec` of the store return false.
    void FailExec(int n) { _failures.insert(n); }
    /// Makes every `exec` return false until `Recover`.
    void FailAll() { _failAll = true; }
    void Recover() { _failAll = false; }
    /// Sets the rows of the next SELECT without rows. A SELECT without rows finds nothing.
    void PlayRows(std::vector<Row> rows) { _results.push_back(std::move(rows)); }
    /// Sets the id of the next INSERT. By default the ids count up from 1.
    void PlayInsertId(QVariant id) { _insertIds.push_back(std::move(id)); }
    void SetRowsAffected(int rows) { _rowsAffected = rows; }
    /// Sets the result of `transaction`, `commit` and `rollback`.
    void SetTransactionResult(bool result) { _transactionResult = result; }

    std::vector<Execution> const& Executions() const { return _executions; }
    /// Returns the statements that `exec` has run, in order.
    std::vector<QString> Statements() const;
    /// Returns the calls of "transaction", "commit" and "rollback", in order.
    std::vector<QString> const& TransactionCalls() const { return _transactionCalls; }
    void Forget() { _executions.clear(); }

    /// Returns the number of queries and database objects that exist now.
    int LiveObjects() const { return _liveObjects; }
    int QueriesCreated() const { return _queriesCreated; }

private:
    friend class RecordingQuery;
    friend class RecordingDatabase;

    std::set<int> _failures;
    bool _failAll = false;
    std::deque<std::vector<Row>> _results;
    std::deque<QVariant> _insertIds;
    int _lastInsertId = 0;
    int _rowsAffected = 1;
    bool _transactionResult = true;
    int _execCount = 0;
    int _liveObjects = 0;
    int _queriesCreated = 0;
    std::vector<Execution> _executions;
    std::vector<QString> _transactionCalls;
};

} // namespace tandry::test
