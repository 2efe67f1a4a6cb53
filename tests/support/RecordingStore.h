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

/// One placeholder as it was bound.
struct Binding
{
    QString placeholder;
    QVariant value;
};

/// Equal when the placeholder, the value's type, its nullness and the value agree.
bool operator==(Binding const& left, Binding const& right);
void PrintTo(Binding const& binding, std::ostream* out);

/// One statement that reached `exec`.
struct Execution
{
    QString statement;
    std::vector<Binding> bindings;
    int scopeDepth = 0;
    bool succeeded = true;
};

/// A store without a database: it keeps what managers say to it, plays rows back and fails when told to.
///
/// Executions are counted from 1. A planned failure that is never reached fails the test at the store's end, and so
/// does a result that is never asked for.
class RecordingStore : public sync::interf::factory::IDatabaseFactory
{
public:
    RecordingStore();
    ~RecordingStore() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// The nth `exec` from the store's beginning answers false and changes nothing.
    void FailExec(int n) { _failures.insert(n); }
    /// Every `exec` from now on answers false, until `Recover`.
    void FailAll() { _failAll = true; }
    void Recover() { _failAll = false; }
    /// Rows for the next SELECT that has none yet; SELECTs without rows find nothing.
    void PlayRows(std::vector<Row> rows) { _results.push_back(std::move(rows)); }
    /// Id for the next INSERT; without one they count up from 1.
    void PlayInsertId(QVariant id) { _insertIds.push_back(std::move(id)); }
    void SetRowsAffected(int rows) { _rowsAffected = rows; }
    /// What the brackets of `CreateDatabase` answer.
    void SetBracketAnswer(bool answer) { _bracketAnswer = answer; }

    std::vector<Execution> const& Executions() const { return _executions; }
    /// The statements that reached `exec`, in order.
    std::vector<QString> Statements() const;
    /// "transaction", "commit" and "rollback" as the bracket object received them.
    std::vector<QString> const& Brackets() const { return _brackets; }
    void Forget() { _executions.clear(); }

    /// Queries and database objects that are alive, to show that an operation keeps none.
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
    bool _bracketAnswer = true;
    int _execCount = 0;
    int _liveObjects = 0;
    int _queriesCreated = 0;
    std::vector<Execution> _executions;
    std::vector<QString> _brackets;
};

} // namespace tandry::test
