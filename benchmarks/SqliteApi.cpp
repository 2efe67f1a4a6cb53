#include "benchmarks/SqliteApi.h"

#include "benchmarks/ConnectionPragmas.h"
#include "benchmarks/Failure.h"

namespace sync::benchmarks {

namespace {

const StatementText BeginText(QStringLiteral("BEGIN IMMEDIATE"));
const StatementText CommitText(QStringLiteral("COMMIT"));

[[noreturn]] void FailWith(sqlite3* database)
{
    Fail(QStringLiteral("SQLite by hand: ") + QString::fromUtf8(sqlite3_errmsg(database)));
}

} // namespace

SqliteApi::SqliteApi(QString const& path)
{
    int const flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(path.toUtf8().constData(), &_database, flags, nullptr) != SQLITE_OK)
        FailWith(_database);
    for (QString const& pragma : ConnectionPragmas())
        Execute(pragma);
}

SqliteApi::~SqliteApi()
{
    _prepared.clear();
    sqlite3_close(_database);
}

void SqliteApi::Statement::_Fail() const
{
    FailWith(_database);
}

void SqliteApi::Execute(QString const& sql)
{
    if (sqlite3_exec(_database, sql.toUtf8().constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        FailWith(_database);
}

void SqliteApi::Begin()
{
    Use(BeginText).Run();
}

void SqliteApi::Commit()
{
    Use(CommitText).Run();
}

void SqliteApi::_Prepare(StatementText const& text)
{
    if (text.number >= _prepared.size())
        _prepared.resize(text.number + 1);
    auto prepared = std::make_unique<Prepared>();
    QByteArray const sql = text.sql.toUtf8();
    if (sqlite3_prepare_v3(
            _database, sql.constData(), sql.size(), SQLITE_PREPARE_PERSISTENT, &prepared->statement, nullptr) !=
        SQLITE_OK)
        FailWith(_database);
    _prepared[text.number] = std::move(prepared);
}

} // namespace sync::benchmarks
