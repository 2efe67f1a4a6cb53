#include "benchmarks/QtSqlApi.h"

#include "benchmarks/ConnectionPragmas.h"
#include "benchmarks/Failure.h"

#include <QSqlError>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>

#include <atomic>

namespace sync::benchmarks {

namespace {

/// Connection names are global to the process.
QString NewConnectionName()
{
    static std::atomic<int> count{0};
    return QStringLiteral("benchmark %1").arg(++count);
}

[[noreturn]] void FailWith(QSqlError const& error)
{
    Fail(QStringLiteral("Qt SQL: ") + error.text());
}

QSqlDatabase Connect(QString const& store, QString const& connection)
{
    QUrl const uri(store);
    bool const isProfile = uri.scheme() == QLatin1String("postgresql");
    QSqlDatabase database =
        QSqlDatabase::addDatabase(isProfile ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE"), connection);
    QStringList settings = ConnectionPragmas();
    if (isProfile) {
        database.setHostName(uri.host());
        database.setPort(uri.port());
        database.setUserName(uri.userName());
        database.setDatabaseName(uri.path().mid(1));
        settings = QStringList{QStringLiteral("SET search_path TO tandry_") +
                               QUrlQuery(uri).queryItemValue(QStringLiteral("tandry_profile"))};
    }
    else {
        database.setDatabaseName(store);
    }
    if (!database.open())
        FailWith(database.lastError());
    for (QString const& setting : settings) {
        QSqlQuery query(database);
        if (!query.exec(setting))
            FailWith(query.lastError());
    }
    return database;
}

} // namespace

template <Prepare When>
QtSqlApi<When>::QtSqlApi(QString const& store)
    : _connection(NewConnectionName())
    , _database(Connect(store, _connection))
{}

template <Prepare When>
QtSqlApi<When>::~QtSqlApi()
{
    _prepared.clear();
    _database.close();
    _database = QSqlDatabase();
    QSqlDatabase::removeDatabase(_connection);
}

template <Prepare When>
void QtSqlApi<When>::Statement::_Fail() const
{
    FailWith(_query->lastError());
}

template <Prepare When>
typename QtSqlApi<When>::Statement QtSqlApi<When>::Use(StatementText const& text)
{
    if constexpr (When == Prepare::PerCall) {
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

template <Prepare When>
void QtSqlApi<When>::Begin()
{
    if (!_database.transaction())
        FailWith(_database.lastError());
}

template <Prepare When>
void QtSqlApi<When>::Commit()
{
    if (!_database.commit())
        FailWith(_database.lastError());
}

template <Prepare When>
std::shared_ptr<QSqlQuery> QtSqlApi<When>::_Prepare(QString const& sql)
{
    auto query = std::make_shared<QSqlQuery>(_database);
    query->setForwardOnly(true);
    if (!query->prepare(sql))
        FailWith(query->lastError());
    return query;
}

template class QtSqlApi<Prepare::Once>;
template class QtSqlApi<Prepare::PerCall>;

} // namespace sync::benchmarks
