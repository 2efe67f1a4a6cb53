#include "config/FolderConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "database/StoreError.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "postgres/support/StoreFixture.h"
#include "support/Queries.h"

#include <QStringList>

#include <random>
#include <thread>
#include <vector>

namespace postgres_connections_test {
namespace {

using namespace sync::database;
using namespace tandry::test;

class PostgresConnections : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        QObject::connect(
            store.get(), &StoreFactory::CommitFailed, [this](StoreError const& error) { lost.push_back(error); });
    }

    void TearDown() override
    {
        PostgresDatabaseFactory::SetConnectionLimit(32);
        store.reset();
    }

    bool Add(char const* alias) { return AddServer(*store, QString::fromUtf8(alias)); }

    /// The aliases that are on the server.
    QStringList OnServer() const
    {
        QStringList aliases;
        for (auto const& row :
             ServerRawStore(StorePath()).Rows(QStringLiteral("SELECT alias FROM ServerConfiguration ORDER BY id")))
            aliases.append(row[0].toString());
        return aliases;
    }

    /// Ends the connections of the store as a failing network would.
    void CutConnections() const
    {
        ServerRawStore(StorePath())
            .Run(QStringLiteral(
                "SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE application_name = 'tandry'"));
    }

    StoreErrorKind LastKind() const
    {
        auto const error = store->LastError();
        EXPECT_TRUE(error);
        return error ? error->kind : StoreErrorKind::Other;
    }

    static QStringList Letters(char const* letters) { return QString::fromUtf8(letters).split(QLatin1Char(' ')); }

    std::vector<StoreError> lost;
};

// Threads.

TEST_F(PostgresConnections, ThreadsHaveConnectionsAndErrorsOfTheirOwn)
{
    ASSERT_TRUE(Add("a"));
    auto const query = Prepared(*store, QStringLiteral("SELECT id, alias FROM ServerConfiguration"));
    std::thread([&] {
        EXPECT_TRUE(Add("b"));
        EXPECT_FALSE(query->exec()) << "a query of another thread";
        EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT * FROM Missing")));
        EXPECT_TRUE(store->LastError());
    }).join();
    EXPECT_EQ(OnServer(), Letters("a b"));
}

TEST_F(PostgresConnections, ThreadsWriteOneAfterTheOther)
{
    constexpr int Threads = 4;
    constexpr int Rounds = 25;
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < Rounds; ++round) {
                TransactionalScope const scope;
                EXPECT_TRUE(Add("a"));
                EXPECT_TRUE(Add("b"));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    QStringList const all = OnServer();
    ASSERT_EQ(all.size(), 2 * Threads * Rounds);
    for (int i = 0; i < all.size(); i += 2) // no writer's rows stand amid those of another one's scope
        EXPECT_EQ(all.mid(i, 2), Letters("a b"));
}

TEST_F(PostgresConnections, ThreadBeyondTheLimitIsToldSo)
{
    ASSERT_TRUE(Add("a"));
    PostgresDatabaseFactory::SetConnectionLimit(1);
    std::thread([&] {
        EXPECT_FALSE(Add("b"));
        EXPECT_EQ(LastKind(), StoreErrorKind::Locked);
        EXPECT_TRUE(store->LastError()->text.contains(QStringLiteral("its limit")));
        PostgresDatabaseFactory::SetConnectionLimit(2);
        EXPECT_TRUE(Add("c"));
    }).join();
    std::thread([&] { EXPECT_TRUE(Add("d")) << "the connection of a thread that has ended is free"; }).join();
    EXPECT_EQ(OnServer(), Letters("a c d"));
}

// One writer per profile.

TEST_F(PostgresConnections, SecondWriterWaitsAndThenIsToldThatTheStoreIsLocked)
{
    OpenOptions options;
    options.busyTimeoutMsec = 50;
    auto const other = PostgresDatabaseFactory::Open(StorePath(), nullptr, options);
    ASSERT_NE(other, nullptr);
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(Add("a"));
    EXPECT_FALSE(AddServer(*other, QStringLiteral("b")));
    ASSERT_TRUE(other->LastError());
    EXPECT_EQ(other->LastError()->kind, StoreErrorKind::Locked);
    EXPECT_FALSE(other->CreateDatabase()->transaction());
    EXPECT_EQ(CountServers(*other), 0) << "reads never wait";
    EXPECT_TRUE(database->commit());
    EXPECT_TRUE(AddServer(*other, QStringLiteral("c")));
    EXPECT_EQ(OnServer(), Letters("a c"));
}

// Failing statements.

TEST_F(PostgresConnections, FailedReadInATransactionUndoesNothing)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(Add("a"));
    EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT 1 / (id - id) FROM ServerConfiguration")));
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_FALSE(Execute(
        *store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (:id)"), {{":id", 3'000'000'000LL}}));
    ASSERT_TRUE(Add("b"));
    EXPECT_TRUE(database->commit());
    EXPECT_EQ(OnServer(), Letters("a b"));
    EXPECT_TRUE(lost.empty());
}

TEST_F(PostgresConnections, FirstWriteOfAScopeThatFailsKeepsNoOtherWriterWaiting)
{
    OpenOptions options;
    options.busyTimeoutMsec = 50;
    auto const other = PostgresDatabaseFactory::Open(StorePath(), nullptr, options);
    ASSERT_NE(other, nullptr);
    {
        TransactionalScope const scope;
        EXPECT_FALSE(Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = 1 / (id - id)")));
        std::thread([&] { EXPECT_TRUE(AddServer(*other, QStringLiteral("a"))); }).join();
        EXPECT_TRUE(Add("b"));
        EXPECT_FALSE(Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = 1 / (id - id)")));
        EXPECT_TRUE(Add("c"));
    }
    EXPECT_TRUE(lost.empty());
    EXPECT_EQ(OnServer(), Letters("a b c"));
}

/// Runs statements at random, of which many fail, in transactions and scopes, and remembers what must be there.
TEST_F(PostgresConnections, StatementsThatFailUndoThemselvesOnlyInAnyOrder)
{
    ServerRawStore raw(StorePath());
    raw.Run(QStringLiteral("CREATE SCHEMA elsewhere; CREATE FUNCTION elsewhere.add(alias text) RETURNS bigint "
                           "LANGUAGE sql AS 'INSERT INTO tandry_%1.ServerConfiguration (alias) VALUES ($1) "
                           "RETURNING id'")
                .arg(profile()));
    unsigned const seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    QStringList expected;
    auto const runSome = [&] {
        for (unsigned statement = random() % 8; statement > 0; --statement) {
            QString const alias = QString::number(random());
            switch (random() % 6) {
            case 0:
            case 1:
                EXPECT_TRUE(AddServer(*store, alias));
                expected.append(alias);
                break;
            case 2:
                EXPECT_TRUE(
                    Execute(*store, QStringLiteral("SELECT elsewhere.add(CAST(:alias AS text))"), {{":alias", alias}}));
                expected.append(alias);
                break;
            case 3:
                EXPECT_EQ(CountServers(*store), expected.size());
                break;
            case 4:
                EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT 1 / (id - id) FROM Schedules")));
                break;
            default:
                EXPECT_FALSE(Execute(*store,
                                     QStringLiteral("INSERT INTO ServerConfiguration (id, alias) VALUES (:id, 'x')"),
                                     {{":id", 3'000'000'000LL}}));
            }
        }
    };
    auto const database = store->CreateDatabase();
    for (int round = 0; round < 60; ++round) {
        QStringList const before = expected;
        if (round % 3 == 0) {
            TransactionalScope const scope;
            runSome();
        }
        else {
            ASSERT_TRUE(database->transaction());
            runSome();
            bool const commits = round % 3 == 1;
            EXPECT_TRUE(commits ? database->commit() : database->rollback());
            if (!commits)
                expected = before;
        }
        ASSERT_EQ(OnServer(), expected) << "round " << round;
    }
    EXPECT_TRUE(lost.empty());
    raw.Run(QStringLiteral("DROP SCHEMA elsewhere CASCADE"));
}

TEST_F(PostgresConnections, NoErrorContainsABoundValue)
{
    QString const secret = QStringLiteral("top secret");
    for (char const* statement : {"INSERT INTO Schedules (syncInterval) VALUES (:value)",
                                  "SELECT id FROM Schedules WHERE id = :value",
                                  "SELECT CAST(:value AS integer)",
                                  "INSERT INTO ServerConfiguration (id) VALUES (:value)"}) {
        store->ClearError();
        EXPECT_FALSE(Execute(*store, QString::fromUtf8(statement), {{":value", secret}})) << statement;
        ASSERT_TRUE(store->LastError());
        EXPECT_FALSE(store->LastError()->text.contains(secret)) << store->LastError()->text.toStdString();
        EXPECT_EQ(store->LastError()->kind, StoreErrorKind::Refused);
        EXPECT_EQ(store->LastError()->statement, QString::fromUtf8(statement));
    }
}

TEST_F(PostgresConnections, ErrorHasTheServersSqlstateAsANumber)
{
    EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT * FROM Missing")));
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(QString::number(store->LastError()->code, 36).toUpper(), QStringLiteral("42P01"));
    EXPECT_TRUE(store->LastError()->text.contains(QStringLiteral("missing"))) << store->LastError()->text.toStdString();
}

// Values and rows.

TEST_F(PostgresConnections, LongPathIsKeptAndFound)
{
    QString path;
    for (quint32 random = 1; path.size() < 4000; random = random * 1664525U + 1013904223U)
        path += QChar(static_cast<ushort>('a' + (random >> 16) % 26));
    sync::config::FolderConfigManager folders(store, nullptr);
    sync::config::FolderConfiguration record;
    record.setClientPath(path);
    record.setParentId(0);
    ASSERT_TRUE(folders.Add(record));
    EXPECT_EQ(folders.GetFolderConfigurationByClientPath(path).getId(), record.getId());
}

TEST_F(PostgresConnections, ChangedRowKeepsItsPlaceInAListing)
{
    for (char const* alias : {"a", "b", "c"})
        ASSERT_TRUE(Add(alias));
    ASSERT_TRUE(Execute(*store, QStringLiteral("UPDATE ServerConfiguration SET alias = 'A' WHERE id = 1")));
    std::vector<QVariant> const ids = Column(*store, QStringLiteral("SELECT id, alias FROM ServerConfiguration;"));
    EXPECT_EQ(ids, (std::vector<QVariant>{1LL, 2LL, 3LL}));
}

/// The pairs of a text and a pattern that match. The patterns are "[" with up to four of the characters that sets give
/// a meaning to.
std::vector<QVariant> MatchesOfSets(StoreFactory& factory)
{
    QStringList patterns{QStringLiteral("[")};
    for (int pattern = 0; patterns.at(pattern).size() < 5; ++pattern) {
        for (char const character : {'a', '-', '[', ']', '^'})
            patterns.append(patterns.at(pattern) + QLatin1Char(character));
    }
    QStringList rows;
    for (QString const& pattern : qAsConst(patterns)) {
        for (char const text : {'a', '-', ']', '^'})
            rows.append(QStringLiteral("('%1', '%2')").arg(QLatin1Char(text)).arg(pattern));
    }
    return Column(factory,
                  QStringLiteral("SELECT column1 || ' ' || column2 FROM (VALUES %1) AS pairs "
                                 "WHERE column1 GLOB column2 ORDER BY column2, column1")
                      .arg(rows.join(QStringLiteral(", "))));
}

TEST_F(PostgresConnections, SetsOfGlobMatchAsInSqlite)
{
    auto const file = SqliteDatabaseFactory::Open(folder.filePath(QStringLiteral("store.db")));
    ASSERT_NE(file, nullptr);
    std::vector<QVariant> const matches = MatchesOfSets(*file);
    EXPECT_GT(matches.size(), 100U);
    EXPECT_EQ(MatchesOfSets(*store), matches);
}

TEST_F(PostgresConnections, GlobMatchesAsInSqlite)
{
    struct Row
    {
        char const* text;
        char const* glob;
        bool matches;
    };
    for (Row const& row : {
             Row{"report.txt", "*.txt", true},
             Row{"report_txt", "*.txt", false},
             Row{"Report.txt", "r*", false},
             Row{"a.b", "a?b", true},
             Row{"ab", "a?b", false},
             Row{"bat", "[abc]at", true},
             Row{"rat", "[abc]at", false},
             Row{"rat", "[^abc]at", true},
             Row{"f7", "f[0-9]", true},
             Row{".", "[*]", false},
             Row{"*", "[*]", true},
             Row{".", "[?]", false},
             Row{"x.y", "x[.]y", true},
             Row{"a", "[[:alpha:]]", false},
             Row{"p]", "[[:alpha:]]", true},
             Row{"\\", "[\\]", true},
             Row{"d", "[\\d]", true},
             Row{"7", "[\\d]", false},
             Row{"é", "[à-ü]", true},
             Row{"né", "?é", true},
             Row{"", "", true},
             Row{"a", "", false},
             Row{"a+b(c){d}|$^", "a+b(c){d}|$^", true},
             Row{"aab", "a+b", false},
             Row{"back\\slash", "back\\slash", true},
             Row{"two\nlines", "two*lines", true},
             Row{"line\n", "line", false},
         })
        EXPECT_EQ(Single(*store,
                         QStringLiteral("SELECT CAST('%1' GLOB '%2' AS integer)")
                             .arg(QString::fromUtf8(row.text), QString::fromUtf8(row.glob)))
                      .toBool(),
                  row.matches)
            << row.text << ' ' << row.glob;
}

TEST_F(PostgresConnections, ListingShowsOneStateWhateverIsWrittenMeanwhile)
{
    ASSERT_TRUE(Add("a") && Add("b"));
    auto const listing = Prepared(*store, QStringLiteral("SELECT id, alias FROM ServerConfiguration"));
    ASSERT_TRUE(listing->exec());
    ASSERT_TRUE(listing->next());
    ASSERT_TRUE(Execute(*store, QStringLiteral("DELETE FROM ServerConfiguration")));
    ASSERT_TRUE(listing->next());
    EXPECT_EQ(listing->value(1), QVariant(QStringLiteral("b")));
}

TEST_F(PostgresConnections, MoreStatementsThanAreKeptAllRun)
{
    ASSERT_TRUE(Add("a"));
    auto const database = store->CreateDatabase();
    for (bool const inTransaction : {false, true}) {
        EXPECT_TRUE(!inTransaction || database->transaction());
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(Single(*store, QStringLiteral("SELECT %1 + id FROM ServerConfiguration").arg(i)), i + 1);
        QString const longList = QStringLiteral("0,").repeated(3000) + QLatin1Char('1');
        EXPECT_EQ(
            Column(*store, QStringLiteral("SELECT id FROM ServerConfiguration WHERE id IN (%1)").arg(longList)).size(),
            1U);
        EXPECT_EQ(Column(*store, QStringLiteral("SELECT id FROM ServerConfiguration WHERE id IN (%1,2)").arg(longList))
                      .size(),
                  1U);
    }
    EXPECT_TRUE(database->commit());
    EXPECT_FALSE(store->LastError());
}

// Lost connections.

TEST_F(PostgresConnections, ReadOnALostConnectionIsRepeated)
{
    ASSERT_TRUE(Add("a"));
    auto const query = Prepared(*store, QStringLiteral("SELECT id, alias FROM ServerConfiguration"));
    CutConnections();
    EXPECT_TRUE(query->exec());
    EXPECT_TRUE(query->next());
    EXPECT_FALSE(store->LastError());
}

TEST_F(PostgresConnections, WriteOnALostConnectionFailsAndTheNextOneWorks)
{
    ASSERT_TRUE(Add("a"));
    CutConnections();
    EXPECT_FALSE(Add("b"));
    EXPECT_EQ(LastKind(), StoreErrorKind::ConnectionLost);
    EXPECT_TRUE(Add("c"));
    EXPECT_EQ(OnServer(), Letters("a c"));
    EXPECT_TRUE(lost.empty()) << "no write returned true";
}

TEST_F(PostgresConnections, ScopeWhoseConnectionIsLostReportsItsWrites)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        CutConnections();
        quint64 const rollbacks = TransactionalScope::Rollbacks();
        EXPECT_FALSE(Add("b"));
        ASSERT_EQ(lost.size(), 1U);
        EXPECT_EQ(lost.front().kind, StoreErrorKind::ConnectionLost);
        EXPECT_GT(TransactionalScope::Rollbacks(), rollbacks);
        EXPECT_TRUE(Add("c")) << "a new transaction of the same scope";
    }
    EXPECT_EQ(OnServer(), Letters("c"));
    EXPECT_EQ(lost.size(), 1U);
}

TEST_F(PostgresConnections, CommitOfAScopeOnALostConnectionIsFoundToBeLost)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        CutConnections();
    }
    ASSERT_EQ(lost.size(), 1U);
    EXPECT_EQ(lost.front().kind, StoreErrorKind::ConnectionLost);
    EXPECT_EQ(LastKind(), StoreErrorKind::ConnectionLost);
    EXPECT_TRUE(Add("b"));
    EXPECT_EQ(OnServer(), Letters("b"));
}

TEST_F(PostgresConnections, ClientTransactionWhoseConnectionIsLostWritesNothingUntilItEnds)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(Add("a"));
    CutConnections();
    EXPECT_FALSE(Add("b"));
    EXPECT_FALSE(Add("c"));
    EXPECT_EQ(CountServers(*store), 0) << "reads go on";
    EXPECT_FALSE(database->commit());
    EXPECT_TRUE(Add("d"));
    EXPECT_EQ(OnServer(), Letters("d"));
    EXPECT_TRUE(lost.empty()) << "the client's commit has told it";
}

TEST_F(PostgresConnections, RemovedProfileIsNotTakenForTheStore)
{
    ASSERT_TRUE(Add("a"));
    ServerRawStore(StorePath())
        .Run(QStringLiteral("DROP SCHEMA tandry_%1 CASCADE").arg(StorePath().section(QLatin1Char('='), -1)));
    ASSERT_NE(PostgresDatabaseFactory::Open(StorePath()), nullptr); // another one of the same name
    CutConnections();
    EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT id FROM ServerConfiguration")));
    EXPECT_EQ(LastKind(), StoreErrorKind::Moved);
}

TEST_F(PostgresConnections, StoreWorksAgainAfterACrashOfTheServerAndHasWhatWasAcknowledged)
{
    PostgresServer server;
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    auto const apart = PostgresDatabaseFactory::Open(server.Uri(QStringLiteral("a")));
    ASSERT_NE(apart, nullptr);
    ASSERT_TRUE(AddServer(*apart, QStringLiteral("a")));
    server.Crash();
    EXPECT_FALSE(AddServer(*apart, QStringLiteral("b")));
    ASSERT_TRUE(apart->LastError());
    EXPECT_EQ(apart->LastError()->kind, StoreErrorKind::ConnectionLost);
    EXPECT_FALSE(apart->CreateDatabase()->isOpen());
    server.Start();
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    EXPECT_EQ(CountServers(*apart), 1);
    EXPECT_TRUE(AddServer(*apart, QStringLiteral("c")));
}

} // namespace
} // namespace postgres_connections_test
