#include "support/RecordingStore.h"

#include "database/TransactionalScope.h"
#include "database/store/StoredValues.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDebug>

#include <ostream>

namespace tandry::test {

bool operator==(Binding const& left, Binding const& right)
{
    if (left.placeholder != right.placeholder || left.value.userType() != right.value.userType() ||
        sync::database::IsNull(left.value) != sync::database::IsNull(right.value))
        return false;
    if (left.value.userType() == QMetaType::QDateTime)
        return left.value.toDateTime() == right.value.toDateTime() &&
               left.value.toDateTime().timeSpec() == right.value.toDateTime().timeSpec();
    return left.value == right.value;
}

void PrintTo(Binding const& binding, std::ostream* out)
{
    QString text;
    QDebug(&text) << binding.placeholder << binding.value;
    *out << text.toStdString();
}

class RecordingQuery : public sync::interf::IQSqlQueryWrapper
{
public:
    explicit RecordingQuery(RecordingStore& store)
        : _store(store)
    {
        ++_store._liveObjects;
        ++_store._queriesCreated;
    }

    ~RecordingQuery() override { --_store._liveObjects; }

    QVariant value(int column) override { return isValid() ? _rows[_row].value(column) : QVariant(); }

    bool next() override
    {
        _row = _row == BeforeFirst ? 0 : _row + 1;
        return isValid();
    }

    bool isValid() override { return _row < _rows.size(); }

    bool prepare(QString const& statement) override
    {
        _execution.statement = statement;
        return true;
    }

    void bindValue(QString const& placeholder, QVariant const& value) override
    {
        _execution.bindings.push_back({placeholder, value});
    }

    bool exec() override
    {
        _execution.scopeDepth = sync::database::TransactionalScope::Depth();
        _execution.succeeded = _store._failures.erase(++_store._execCount) == 0 && !_store._failAll;
        _store._executions.push_back(_execution);
        if (!_execution.succeeded)
            return false;

        if (_execution.statement.startsWith(QStringLiteral("SELECT")) && !_store._results.empty()) {
            _rows = _store._results.front();
            _store._results.pop_front();
        }
        if (_execution.statement.startsWith(QStringLiteral("INSERT"))) {
            if (_store._insertIds.empty()) {
                _insertId = ++_store._lastInsertId;
            }
            else {
                _insertId = _store._insertIds.front();
                _store._insertIds.pop_front();
            }
        }
        return true;
    }

    QVariant lastInsertId() override { return _insertId; }
    int numRowsAffected() override { return _store._rowsAffected; }

private:
    static constexpr std::size_t BeforeFirst = static_cast<std::size_t>(-1);

    RecordingStore& _store;
    Execution _execution;
    std::vector<Row> _rows;
    std::size_t _row = BeforeFirst;
    QVariant _insertId;
};

class RecordingDatabase : public sync::interf::IQSqlDatabaseWrapper
{
public:
    explicit RecordingDatabase(RecordingStore& store)
        : _store(store)
    {
        ++_store._liveObjects;
    }

    ~RecordingDatabase() override { --_store._liveObjects; }

    bool transaction() override { return Record(QStringLiteral("transaction")); }
    bool commit() override { return Record(QStringLiteral("commit")); }
    bool rollback() override { return Record(QStringLiteral("rollback")); }

private:
    bool Record(QString const& operation)
    {
        _store._transactionCalls.push_back(operation);
        return _store._transactionResult;
    }

    RecordingStore& _store;
};

RecordingStore::RecordingStore() = default;

RecordingStore::~RecordingStore()
{
    EXPECT_TRUE(_failures.empty()) << "a planned failure was not reached";
    EXPECT_TRUE(_results.empty()) << "prepared rows were not read";
    EXPECT_EQ(_liveObjects, 0) << "an operation kept a query or a database object";
}

std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> RecordingStore::CreateDatabase()
{
    return std::make_shared<RecordingDatabase>(*this);
}

std::shared_ptr<sync::interf::IQSqlQueryWrapper> RecordingStore::CreateQuery()
{
    return std::make_shared<RecordingQuery>(*this);
}

std::vector<QString> RecordingStore::Statements() const
{
    std::vector<QString> statements;
    for (Execution const& execution : _executions)
        statements.push_back(execution.statement);
    return statements;
}

} // namespace tandry::test
