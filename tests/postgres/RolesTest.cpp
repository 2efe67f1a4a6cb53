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
                                  "SELECT tandryadmin.profiles()",
                                  "SELECT tandryadmin.upgrade_profiles()"})
        EXPECT_EQ(StateOf("bob", QString::fromUtf8(statement)), NoRight) << statement;
}

TEST_F(PostgresRoles, ProfileThatAnotherRoleHasMadeInTheUsersPlaceIsNotWrittenTo)
{
    Admin().Run(QStringLiteral("CREATE ROLE mallory LOGIN; CREATE ROLE team; GRANT team TO ada;"
                               "SELECT tandryadmin.create_profile('trap', 'mallory')"));
    ASSERT_NE(PostgresDatabaseFactory::Open(Uri("mallory", "trap")), nullptr);
    Admin().Run(QStringLiteral("GRANT ALL ON SCHEMA tandry_trap TO ada; GRANT ALL ON ALL TABLES IN SCHEMA tandry_trap "
                               "TO ada"));
    StoreError error;
    EXPECT_EQ(PostgresDatabaseFactory::Open(Uri("ada", "trap"), error), nullptr);
    EXPECT_TRUE(error.text.contains(QStringLiteral("belongs to the role mallory"))) << error.text.toStdString();
    OpenOptions options;
    options.mode = OpenMode::ReadOnly;
    EXPECT_NE(PostgresDatabaseFactory::Open(Uri("ada", "trap"), error, options), nullptr) << error.text.toStdString();
    Admin().Run(QStringLiteral("ALTER SCHEMA tandry_trap OWNER TO team; REASSIGN OWNED BY mallory TO team"));
    EXPECT_NE(PostgresDatabaseFactory::Open(Uri("ada", "trap"), error), nullptr)
        << "of a role that the user is a member of: " << error.text.toStdString();
    Admin().Run(QStringLiteral("DROP SCHEMA tandry_trap CASCADE; DROP ROLE mallory; DROP ROLE team"));
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

TEST_F(PostgresRoles, AllOlderProfilesAreUpgradedEachCompletelyOrNotAtAll)
{
    Admin().Run(QStringLiteral("CREATE DATABASE upgraded"));
    auto const inDatabase = [](QString uri) {
        return uri.replace(QStringLiteral("/postgres?"), QStringLiteral("/upgraded?"));
    };
    ServerRawStore admin(inDatabase(PostgresServer::Shared().Uri(QStringLiteral("administrator"))));
    admin.Run(QString::fromUtf8(ReadFile(QStringLiteral(TANDRY_ADMIN_SQL))));
    for (char const* profile : {"older", "damaged", "newer", "unopened"}) {
        QString const name = QString::fromUtf8(profile);
        admin.Run(QStringLiteral("SELECT tandryadmin.create_profile('%1', 'ada')").arg(name));
        if (name == QStringLiteral("unopened"))
            continue;
        auto const store = PostgresDatabaseFactory::Open(inDatabase(Uri("ada", profile)));
        ASSERT_NE(store, nullptr);
        EXPECT_TRUE(AddServer(*store, name));
    }
    auto const outcomes = [&] {
        QStringList texts;
        for (auto const& row : admin.Rows(QStringLiteral(
                 "SELECT profile, version, bytes > 100000, outcome FROM tandryadmin.upgrade_profiles()")))
            texts.append(QStringLiteral("%1 %2 %3 %4")
                             .arg(row[0].toString(), row[1].toString(), row[2].toString(), row[3].toString()));
        return texts;
    };
    admin.Run(QStringLiteral("UPDATE tandry_newer.tandry_version SET version = 9"));
    EXPECT_EQ(outcomes(),
              (QStringList{QStringLiteral("damaged 1 t up to date"),
                           QStringLiteral("newer 9 t refused: a newer version than 1"),
                           QStringLiteral("older 1 t up to date"),
                           QStringLiteral("unopened  f not opened yet")}));

    // Two steps of which the second one fails in a profile that has its column already.
    admin.Run(QStringLiteral(
        "INSERT INTO tandryadmin.upgrades VALUES (1, 'ALTER TABLE ServerConfiguration ADD first text;"
        "UPDATE ServerConfiguration SET first = current_user'), (2, 'ALTER TABLE ServerConfiguration ADD second text');"
        "ALTER TABLE tandry_damaged.ServerConfiguration ADD second text"));
    QStringList const upgraded = outcomes();
    ASSERT_EQ(upgraded.size(), 4);
    EXPECT_TRUE(upgraded[0].startsWith(QStringLiteral("damaged 1 t failed: ")) &&
                upgraded[0].contains(QStringLiteral("already exists")))
        << upgraded[0].toStdString();
    EXPECT_EQ(upgraded[1], QStringLiteral("newer 9 t refused: a newer version than 3"));
    EXPECT_EQ(upgraded[2], QStringLiteral("older 3 t upgraded from version 1"));
    EXPECT_EQ(upgraded[3], QStringLiteral("unopened  f not opened yet"));
    EXPECT_EQ(admin.Value(QStringLiteral("SELECT alias || first FROM tandry_older.ServerConfiguration")),
              QStringLiteral("olderada"))
        << "steps have the rights of the profile's owner";
    EXPECT_EQ(admin.Value(QStringLiteral("SELECT version FROM tandry_damaged.tandry_version")), 1);
    EXPECT_EQ(admin.Value(QStringLiteral("SELECT count(*) FROM pg_attribute WHERE attname = 'first' AND attrelid = "
                                         "'tandry_damaged.ServerConfiguration'::regclass")),
              0);

    StoreError error;
    EXPECT_EQ(PostgresDatabaseFactory::Open(inDatabase(Uri("ada", "older")), error), nullptr);
    EXPECT_EQ(error.kind, StoreErrorKind::NewerVersion) << error.text.toStdString();
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
