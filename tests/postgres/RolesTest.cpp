#include "database/StoreError.h"
#include "postgres/support/StoreFixture.h"
#include "support/FolderContents.h"
#include "support/Queries.h"

#include <libpq-fe.h>

#include <QProcess>

#include <memory>

namespace roles_test {
namespace {

using namespace sync::database;
using namespace tandry::test;

/// A server with roles of its own, each of which opens profiles under its name.
class PostgresRoles : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        Admin().Run(QString::fromUtf8(ReadFile(QStringLiteral(TANDRY_ADMIN_SQL))));
        Admin().Run(QStringLiteral("CREATE ROLE ada LOGIN; CREATE ROLE bob LOGIN; CREATE ROLE auditor LOGIN"));
        Admin().Run(QStringLiteral("SELECT tandryadmin.create_profile('ada', 'ada', 'auditor'), "
                                   "tandryadmin.create_profile('bob', 'bob', 'auditor')"));
        for (char const* user : {"ada", "bob"}) {
            auto const store = PostgresDatabaseFactory::Open(Uri(user, user));
            ASSERT_NE(store, nullptr);
            EXPECT_TRUE(AddServer(*store, QString::fromUtf8(user)));
        }
    }

    /// The connection of an administrator.
    static ServerRawStore Admin()
    {
        return ServerRawStore(PostgresServer::Shared().Uri(QStringLiteral("administrator")));
    }

    static QString Uri(char const* user, char const* profile)
    {
        return PostgresServer::Shared()
            .Uri(QString::fromUtf8(profile))
            .replace(QStringLiteral("//tandry@"), QStringLiteral("//%1@").arg(QString::fromUtf8(user)));
    }

    /// The SQLSTATE of a statement that a role runs; empty if it works.
    static QByteArray StateOf(char const* user, QString const& statement)
    {
        QString const uri = Uri(user, "").remove(QStringLiteral("&tandry_profile="));
        std::unique_ptr<PGconn, decltype(&PQfinish)> const connection(PQconnectdb(uri.toUtf8().constData()), PQfinish);
        EXPECT_EQ(PQstatus(connection.get()), CONNECTION_OK) << PQerrorMessage(connection.get());
        std::unique_ptr<PGresult, decltype(&PQclear)> const result(
            PQexec(connection.get(), statement.toUtf8().constData()), PQclear);
        return PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
    }

    static constexpr char const* NoRight = "42501";
};

TEST_F(PostgresRoles, AnotherUsersProfileDoesNotOpen)
{
    for (OpenMode const mode : {OpenMode::OpenOrCreate, OpenMode::OpenExisting, OpenMode::ReadOnly}) {
        OpenOptions options;
        options.mode = mode;
        StoreError error;
        EXPECT_EQ(PostgresDatabaseFactory::Open(Uri("bob", "ada"), error, options), nullptr);
        EXPECT_EQ(error.kind, StoreErrorKind::Refused);
        EXPECT_TRUE(error.text.contains(QStringLiteral("no right"))) << error.text.toStdString();
    }
}

TEST_F(PostgresRoles, AnotherUsersRecordsCanNeitherBeReadNorWritten)
{
    auto const tables = Admin().Rows(QStringLiteral("SELECT tablename FROM pg_tables WHERE schemaname = 'tandry_ada'"));
    ASSERT_EQ(tables.size(), 9U);
    for (auto const& row : tables) {
        QString const table = QStringLiteral("tandry_ada.") + row.front().toString();
        for (char const* statement : {"SELECT * FROM %1",
                                      "SELECT count(*) FROM %1",
                                      "INSERT INTO %1 DEFAULT VALUES",
                                      "DELETE FROM %1",
                                      "TRUNCATE %1",
                                      "DROP TABLE %1",
                                      "ALTER TABLE %1 ADD more integer",
                                      "BEGIN; LOCK TABLE %1",
                                      "COPY %1 TO STDOUT",
                                      "GRANT SELECT ON %1 TO bob"})
            EXPECT_EQ(StateOf("bob", QString::fromUtf8(statement).arg(table)), NoRight)
                << statement << ' ' << table.toStdString();
    }
    for (char const* statement : {"CREATE TABLE tandry_ada.more (id integer)",
                                  "DROP SCHEMA tandry_ada CASCADE",
                                  "ALTER SCHEMA tandry_ada OWNER TO bob",
                                  "GRANT USAGE ON SCHEMA tandry_ada TO bob",
                                  "SET ROLE ada",
                                  "SELECT nextval('tandry_ada.serverconfiguration_id_seq')",
                                  "CREATE SCHEMA tandry_more",
                                  "SELECT tandryadmin.profiles()"})
        EXPECT_EQ(StateOf("bob", QString::fromUtf8(statement)), NoRight) << statement;
}

TEST_F(PostgresRoles, UserReadsAndWritesTheOwnProfile)
{
    auto const store = PostgresDatabaseFactory::Open(Uri("ada", "ada"));
    ASSERT_NE(store, nullptr);
    EXPECT_TRUE(Execute(*store, QStringLiteral("UPDATE ServerConfiguration SET alias = 'ada'")));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")), QStringLiteral("ada"));
}

TEST_F(PostgresRoles, AuditorReadsAllProfilesAndWritesNone)
{
    for (char const* profile : {"ada", "bob"}) {
        OpenOptions options;
        options.mode = OpenMode::ReadOnly;
        StoreError error;
        auto const store = PostgresDatabaseFactory::Open(Uri("auditor", profile), error, options);
        ASSERT_NE(store, nullptr) << error.text.toStdString();
        EXPECT_EQ(Single(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")), QString::fromUtf8(profile));
        QString const table = QStringLiteral("tandry_%1.ServerConfiguration").arg(QString::fromUtf8(profile));
        for (char const* statement :
             {"INSERT INTO %1 DEFAULT VALUES", "UPDATE %1 SET alias = ''", "DELETE FROM %1", "TRUNCATE %1"})
            EXPECT_EQ(StateOf("auditor", QString::fromUtf8(statement).arg(table)), NoRight) << statement;
    }
}

TEST_F(PostgresRoles, ProfilesAreListedWithOwnerVersionAndSize)
{
    Admin().Run(QStringLiteral("DROP SCHEMA IF EXISTS tandry_new; "
                               "SELECT tandryadmin.create_profile('new', 'bob')"));
    auto const rows = Admin().Rows(QStringLiteral(
        "SELECT profile, owner, version, bytes FROM tandryadmin.profiles() WHERE profile IN ('ada', 'new')"));
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].mid(0, 3), (QVector<QVariant>{QStringLiteral("ada"), QStringLiteral("ada"), 1}));
    EXPECT_GT(rows[0][3].toLongLong(), 100'000);
    EXPECT_EQ(rows[1], (QVector<QVariant>{QStringLiteral("new"), QStringLiteral("bob"), QVariant(), 0LL}));
    Admin().Run(QStringLiteral("DROP SCHEMA tandry_new"));
}

TEST_F(PostgresRoles, DumpOfOneProfileIsRestoredInAnotherDatabase)
{
    Admin().Run(QStringLiteral("CREATE DATABASE restored"));
    QString const program = PostgresServer::ProgramFolder() + QLatin1Char('/');
    QString const database = Uri("tandry", "").remove(QStringLiteral("&tandry_profile="));
    QString const restored = QString(database).replace(QStringLiteral("/postgres?"), QStringLiteral("/restored?"));
    QProcess dump;
    QProcess restore;
    dump.setStandardOutputProcess(&restore);
    dump.start(program + QStringLiteral("pg_dump"), {QStringLiteral("--schema=tandry_ada"), database});
    restore.start(program + QStringLiteral("psql"),
                  {QStringLiteral("-q"), QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"), restored});
    ASSERT_TRUE(dump.waitForFinished(60'000));
    ASSERT_TRUE(restore.waitForFinished(60'000));
    EXPECT_EQ(dump.exitCode(), 0) << dump.readAllStandardError().toStdString();
    EXPECT_EQ(restore.exitCode(), 0) << restore.readAllStandardError().toStdString();
    StoreError error;
    auto const store = PostgresDatabaseFactory::Open(
        Uri("ada", "ada").replace(QStringLiteral("/postgres?"), QStringLiteral("/restored?")), error);
    ASSERT_NE(store, nullptr) << error.text.toStdString();
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")), QStringLiteral("ada"));
    EXPECT_TRUE(AddServer(*store, QStringLiteral("more")));
}

} // namespace
} // namespace roles_test
