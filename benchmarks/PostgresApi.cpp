#include "benchmarks/PostgresApi.h"

#include "benchmarks/Failure.h"
#include "postgres/StatementText.h"

namespace sync::benchmarks {

namespace {

constexpr char const* ProfileKey = "&tandry_profile=";

[[noreturn]] void FailWith(PGconn* connection)
{
    Fail(QStringLiteral("libpq by hand: ") + QString::fromUtf8(PQerrorMessage(connection)));
}

void RequireResult(PGconn* connection, PGresult const* result)
{
    ExecStatusType const status = PQresultStatus(result);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK)
        FailWith(connection);
}

} // namespace

PostgresApi::PostgresApi(QString const& uri)
    : _connection(PQconnectdb(uri.section(QLatin1String(ProfileKey), 0, 0).toUtf8().constData()))
{
    if (PQstatus(_connection) != CONNECTION_OK)
        FailWith(_connection);
    Execute(QStringLiteral("SET client_min_messages TO warning;SET search_path TO ") + SchemaOf(uri));
}

PostgresApi::~PostgresApi()
{
    PQfinish(_connection);
}

QString PostgresApi::SchemaOf(QString const& uri)
{
    return QStringLiteral("tandry_") + uri.section(QLatin1String(ProfileKey), 1);
}

void PostgresApi::Statement::Run()
{
    constexpr int binary = 1;
    _result.reset(
        PQexecPrepared(_connection, _prepared.name.constData(), _bound, _values.data(), nullptr, nullptr, binary));
    RequireResult(_connection, _result.get());
}

QString PostgresApi::Execute(QString const& sql)
{
    Result const result(PQexec(_connection, sql.toUtf8().constData()));
    RequireResult(_connection, result.get());
    return PQntuples(result.get()) > 0 ? QString::fromUtf8(PQgetvalue(result.get(), 0, 0)) : QString();
}

void PostgresApi::Begin()
{
    Execute(QStringLiteral("BEGIN"));
}

void PostgresApi::Commit()
{
    Execute(QStringLiteral("COMMIT"));
}

void PostgresApi::_Prepare(StatementText const& text)
{
    QString words;
    auto const numbered = database::StatementText::Make(text.sql, words);
    if (numbered == nullptr)
        Fail(words);
    if (text.number >= _prepared.size())
        _prepared.resize(text.number + 1);
    auto prepared = std::make_unique<Prepared>();
    prepared->name = "s" + QByteArray::number(qulonglong(text.number));
    Result const result(
        PQprepare(_connection, prepared->name.constData(), numbered->serverText().constData(), 0, nullptr));
    RequireResult(_connection, result.get());
    _prepared[text.number] = std::move(prepared);
}

} // namespace sync::benchmarks
