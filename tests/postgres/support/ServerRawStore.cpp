#include "postgres/support/ServerRawStore.h"

#include <gtest/gtest.h>
#include <libpq-fe.h>

namespace tandry::test {

ServerRawStore::ServerRawStore(QString const& uri)
{
    QString const key = QStringLiteral("&tandry_profile=");
    QString const profile = uri.section(key, 1).section(QLatin1Char('&'), 0, 0);
    _connection = PQconnectdb(uri.section(key, 0, 0).toUtf8().constData());
    EXPECT_EQ(PQstatus(_connection), CONNECTION_OK) << PQerrorMessage(_connection);
    Run(QStringLiteral("SET client_min_messages TO warning; SET search_path TO tandry_%1").arg(profile));
}

ServerRawStore::~ServerRawStore()
{
    PQfinish(_connection);
}

void ServerRawStore::Run(QString const& statements)
{
    static_cast<void>(Rows(statements));
}

std::vector<QVector<QVariant>> ServerRawStore::Rows(QString const& statement)
{
    PGresult* const result = PQexec(_connection, statement.toUtf8().constData());
    ExecStatusType const status = PQresultStatus(result);
    EXPECT_TRUE(status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK)
        << statement.toStdString() << ": " << PQerrorMessage(_connection);
    std::vector<QVector<QVariant>> rows;
    for (int row = 0; row < PQntuples(result); ++row) {
        QVector<QVariant> values;
        for (int column = 0; column < PQnfields(result); ++column) {
            constexpr Oid bigintType = 20;
            constexpr Oid integerType = 23;
            Oid const type = PQftype(result, column);
            QString const text = QString::fromUtf8(PQgetvalue(result, row, column));
            if (PQgetisnull(result, row, column) != 0)
                values.append(QVariant());
            else if (type == bigintType || type == integerType)
                values.append(text.toLongLong());
            else
                values.append(text);
        }
        rows.push_back(values);
    }
    PQclear(result);
    return rows;
}

QVariant ServerRawStore::Value(QString const& statement)
{
    auto const rows = Rows(statement);
    return rows.empty() || rows.front().isEmpty() ? QVariant() : rows.front().front();
}

qlonglong ServerRawStore::Count(QString const& table)
{
    return Value(QStringLiteral("SELECT count(*) FROM ") + table).toLongLong();
}

void ServerRawStore::RefuseToDelete(QString const& table, QString const& condition)
{
    Run(QStringLiteral("CREATE FUNCTION refusal() RETURNS trigger LANGUAGE plpgsql AS $$BEGIN "
                       "RAISE EXCEPTION 'refused'; END$$;"
                       "CREATE TRIGGER refusal BEFORE DELETE ON %1 FOR EACH ROW WHEN (%2) EXECUTE FUNCTION refusal()")
            .arg(table, condition));
}

void ServerRawStore::AllowToDelete()
{
    Run(QStringLiteral("DROP FUNCTION IF EXISTS refusal CASCADE"));
}

} // namespace tandry::test
