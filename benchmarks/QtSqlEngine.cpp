#include "benchmarks/QtSqlEngine.h"

#include "benchmarks/ConnectionTerms.h"
#include "benchmarks/Failure.h"

#include <QSqlError>

#include <atomic>

namespace sync::benchmarks {

namespace {

/// A connection's name is known to the whole process.
QString NewConnectionName()
{
    static std::atomic<int> count{0};
    return QStringLiteral("contestant %1").arg(++count);
}

[[noreturn]] void FailWith(QSqlError const& error)
{
    Fail(QStringLiteral("Qt SQL: ") + error.text());
}

} // namespace

template <Preparing When>
QtSqlEngine<When>::QtSqlEngine(QString const& path)
    : _connection(NewConnectionName())
    , _database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), _connection))
{
    _database.setDatabaseName(path);
    if (!_database.open())
        FailWith(_database.lastError());
    for (QString const& pragma : ConnectionTerms()) {
        QSqlQuery query(_database);
        if (!query.exec(pragma))
            FailWith(query.lastError());
    }
}

template <Preparing When>
QtSqlEngine<When>::~QtSqlEngine()
{
    _prepared.clear();
    _database.close();
    _database = QSqlDatabase();
    QSqlDatabase::removeDatabase(_connection);
}

template <Preparing When>
void QtSqlEngine<When>::Statement::_Fail() const
{
    FailWith(_query->lastError());
}

template <Preparing When>
typename QtSqlEngine<When>::Statement QtSqlEngine<When>::Use(StatementText const& text)
{
    if constexpr (When == Preparing::PerCall) {
        return Statement(_Prepare(text.sql));
    }
    else {
        if (text.number >= _prepared.size())
            _prepared.resize(text.number + 1);
        auto& query = _prepared[text.number];
        if (!query)
            query = _Prepare(text.sql);
        return Statement(query);
    }
}

template <Preparing When>
void QtSqlEngine<When>::Begin()
{
    if (!_database.transaction())
        FailWith(_database.lastError());
}

template <Preparing When>
void QtSqlEngine<When>::Commit()
{
    if (!_database.commit())
        FailWith(_database.lastError());
}

template <Preparing When>
std::shared_ptr<QSqlQuery> QtSqlEngine<When>::_Prepare(QString const& sql)
{
    auto query = std::make_shared<QSqlQuery>(_database);
    query->setForwardOnly(true);
    if (!query->prepare(sql))
        FailWith(query->lastError());
    return query;
}

template class QtSqlEngine<Preparing::Once>;
template class QtSqlEngine<Preparing::PerCall>;

} // namespace sync::benchmarks
