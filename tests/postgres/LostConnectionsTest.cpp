#include "database/StoreError.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "postgres/support/AccountedWrites.h"
#include "postgres/support/CuttingProxy.h"
#include "postgres/support/StoreFixture.h"
#include "support/Queries.h"

#include <QStringList>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lost_connections_test {
namespace {

using namespace sync::database;
using namespace tandry::test;
using Cut = CuttingProxy::Cut;

/// A store whose requests go through a proxy.
class LostConnections : public testing::Test
{
protected:
    ~LostConnections() override
    {
        store.reset();
        Raw().Run(QStringLiteral("DROP SCHEMA IF EXISTS tandry_%1 CASCADE").arg(_profile));
    }

    void SetUp() override
    {
        OpenOptions options;
        options.busyTimeoutMsec = 20'000;
        StoreError error;
        store = PostgresDatabaseFactory::Open(proxy.Uri(_profile), error, options);
        ASSERT_NE(store, nullptr) << error.text.toStdString();
        QObject::connect(store.get(), &StoreFactory::CommitFailed, [this](StoreError const& lostWrites) {
            lost.push_back(lostWrites);
        });
    }

    ServerRawStore Raw() const { return ServerRawStore(PostgresServer::Shared().Uri(_profile)); }

    bool Add(QString const& alias) { return AddServer(*store, alias); }
    bool Add(char const* alias) { return Add(QString::fromUtf8(alias)); }

    /// The aliases that are on the server.
    QStringList OnServer() const
    {
        QStringList aliases;
        for (auto const& row : Raw().Rows(QStringLiteral("SELECT alias FROM ServerConfiguration ORDER BY id")))
            aliases.append(row[0].toString());
        return aliases;
    }

    static QStringList Letters(char const* letters) { return QString::fromUtf8(letters).split(QLatin1Char(' ')); }

    /// The requests of a scope with one write: prepare, begin and write, commit. The statement may be prepared already.
    int RequestsOfAScope()
    {
        int const before = proxy.requests();
        {
            TransactionalScope const scope;
            EXPECT_TRUE(Add("before"));
        }
        return proxy.requests() - before;
    }

    CuttingProxy proxy;
    std::shared_ptr<PostgresDatabaseFactory> store;
    std::vector<StoreError> lost;

private:
    QString const _profile = PostgresServer::NewProfile();
};

TEST_F(LostConnections, ScopeCostsOneRequestMoreThanItsStatements)
{
    ASSERT_TRUE(Add("prepared"));
    int const before = proxy.requests();
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        ASSERT_TRUE(Add("b"));
        ASSERT_EQ(CountServers(*store), 3);
        ASSERT_EQ(CountServers(*store), 3);
    }
    // The count is prepared with one more.
    EXPECT_EQ(proxy.requests() - before, 2 + 1 + 2 + 1);
}

TEST_F(LostConnections, ClientTransactionCostsTwoRequestsMoreThanItsStatements)
{
    ASSERT_TRUE(Add("prepared"));
    int const before = proxy.requests();
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(Add("a"));
    ASSERT_TRUE(Add("b"));
    ASSERT_TRUE(database->commit());
    EXPECT_EQ(proxy.requests() - before, 1 + 2 + 1);
}

TEST_F(LostConnections, CommitWhoseAnswerIsLostIsFoundToHaveHappened)
{
    ASSERT_TRUE(Add("prepared"));
    int const commit = RequestsOfAScope();
    proxy.CutAt(commit, Cut::BeforeAnswer);
    {
        TransactionalScope const scope;
        EXPECT_TRUE(Add("a"));
    }
    EXPECT_TRUE(proxy.hasCut());
    EXPECT_TRUE(lost.empty());
    EXPECT_FALSE(store->LastError());
    EXPECT_EQ(OnServer(), Letters("prepared before a"));
    EXPECT_TRUE(Add("b"));
}

TEST_F(LostConnections, CommitThatDoesNotReachTheServerIsFoundToBeLost)
{
    ASSERT_TRUE(Add("prepared"));
    int const commit = RequestsOfAScope();
    proxy.CutAt(commit, Cut::BeforeRequest);
    {
        TransactionalScope const scope;
        EXPECT_TRUE(Add("a"));
    }
    EXPECT_TRUE(proxy.hasCut());
    ASSERT_EQ(lost.size(), 1U);
    EXPECT_EQ(lost.front().kind, StoreErrorKind::ConnectionLost) << lost.front().text.toStdString();
    EXPECT_EQ(OnServer(), Letters("prepared before"));
    EXPECT_TRUE(Add("b"));
}

TEST_F(LostConnections, CommitOfWhichTheServerCannotBeAskedHasAnUnknownOutcome)
{
    ASSERT_TRUE(Add("prepared"));
    int const commit = RequestsOfAScope();
    proxy.CutAt(commit, Cut::BeforeAnswer);
    proxy.SetRefusing(true);
    {
        TransactionalScope const scope;
        EXPECT_TRUE(Add("a"));
    }
    ASSERT_EQ(lost.size(), 1U);
    EXPECT_EQ(lost.front().kind, StoreErrorKind::OutcomeUnknown);
    EXPECT_FALSE(Add("b"));
    proxy.SetRefusing(false);
    EXPECT_TRUE(Add("c"));
    EXPECT_EQ(OnServer(), Letters("prepared before a c"));
}

TEST_F(LostConnections, ClientTransactionWhoseCommitIsAnsweredByNobodyTellsWhatHasHappened)
{
    for (Cut const cut : {Cut::BeforeAnswer, Cut::BeforeRequest}) {
        auto const database = store->CreateDatabase();
        ASSERT_TRUE(database->transaction());
        ASSERT_TRUE(Add("a"));
        proxy.CutAt(1, cut);
        EXPECT_EQ(database->commit(), cut == Cut::BeforeAnswer);
    }
    EXPECT_EQ(OnServer(), Letters("a"));
}

/// A server whose commits wait for a standby that is not there.
class CommitsThatNoStandbyHas : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
        ASSERT_NE(PostgresDatabaseFactory::Open(Uri("synchronous_commit%3Dlocal")), nullptr);
    }

    QString Uri(char const* option) const
    {
        return server.Uri(_profile, QStringLiteral("options=-c") + QString::fromUtf8(option));
    }

    /// Adds a server, and has the server stop waiting for the standby by one of its functions. Returns the error.
    std::optional<StoreError> AddAndInterrupt(char const* function)
    {
        OpenOptions options;
        options.busyTimeoutMsec = 20'000;
        auto const store = PostgresDatabaseFactory::Open(Uri("statement_timeout%3D1000"), nullptr, options);
        EXPECT_NE(store, nullptr);
        std::optional<StoreError> lost;
        QObject::connect(store.get(), &StoreFactory::CommitFailed, [&](StoreError const& error) { lost = error; });
        std::thread interruption([&] {
            ServerRawStore raw(server.Uri(_profile));
            QString const interrupt =
                QStringLiteral("SELECT %1(pid) FROM pg_stat_activity WHERE wait_event = 'SyncRep'")
                    .arg(QString::fromUtf8(function));
            while (raw.Rows(interrupt).empty()) {
            }
        });
        {
            TransactionalScope const scope;
            EXPECT_TRUE(AddServer(*store, QStringLiteral("a")));
        }
        interruption.join();
        return lost;
    }

    PostgresServer server{{QStringLiteral("synchronous_standby_names=*")}};

private:
    QString const _profile = QStringLiteral("waiting");
};

TEST_F(CommitsThatNoStandbyHas, AreUnknownIfTheServerIsToldToStopWaiting)
{
    auto const lost = AddAndInterrupt("pg_cancel_backend");
    ASSERT_TRUE(lost);
    EXPECT_EQ(lost->kind, StoreErrorKind::OutcomeUnknown) << lost->text.toStdString();
}

TEST_F(CommitsThatNoStandbyHas, AreUnknownIfTheirConnectionIsEnded)
{
    auto const lost = AddAndInterrupt("pg_terminate_backend");
    ASSERT_TRUE(lost);
    EXPECT_EQ(lost->kind, StoreErrorKind::OutcomeUnknown) << lost->text.toStdString();
}

using EveryRequest = LostConnections;

TEST_F(EveryRequest, LostAtAnyPointOfAScriptLosesNothingThatWasAcknowledged)
{
    for (Cut const cut : {Cut::BeforeRequest, Cut::BeforeAnswer}) {
        int request = 0;
        for (bool isCut = true; isCut;) {
            ++request;
            SCOPED_TRACE(std::to_string(request) + (cut == Cut::BeforeAnswer ? " before the answer" : ""));
            Raw().Run(QStringLiteral("DELETE FROM ServerConfiguration"));
            AccountedWrites writes(store);
            proxy.CutAt(request, cut);
            writes.RunScript();
            isCut = proxy.hasCut();
            proxy.CutNoMore();
            EXPECT_TRUE(writes.unknown().isEmpty()) << "the server could be asked";
            EXPECT_EQ(writes.Lies(OnServer()), QStringList());
            EXPECT_TRUE(isCut || writes.kept().size() == AccountedWrites::Writes);
            EXPECT_TRUE(Add("afterwards"));
        }
        EXPECT_GT(request, 12);
    }
}

} // namespace
} // namespace lost_connections_test
