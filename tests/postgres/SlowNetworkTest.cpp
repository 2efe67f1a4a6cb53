#include "database/StoreError.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "postgres/support/AccountedWrites.h"
#include "postgres/support/CuttingProxy.h"
#include "postgres/support/PostgresServer.h"
#include "reliability/WritingLoop.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QLoggingCategory>

#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace slow_network_test {
namespace {

using namespace sync::database;
using namespace tandry::test;
using Cut = CuttingProxy::Cut;

/// A store whose requests go through a proxy that may not pass them on.
class SlowNetwork : public testing::Test
{
protected:
    SlowNetwork() { QLoggingCategory::setFilterRules("tandry.*=false"_q); } // there are many errors
    ~SlowNetwork() override
    {
        QLoggingCategory::setFilterRules(QString());
        store.reset();
        Raw().Run("DROP SCHEMA IF EXISTS tandry_%1 CASCADE"_q.arg(_profile));
    }

    void SetUp() override
    {
        OpenOptions options;
        options.busyTimeoutMsec = 20'000;
        StoreError error;
        store =
            PostgresDatabaseFactory::Open(proxy.Uri(_profile, "options=-cstatement_timeout%3D400"_q), error, options);
        ASSERT_NE(store, nullptr) << error.text.toStdString();
    }

    RawStore Raw() const { return RawStore(PostgresServer::Shared().Uri(_profile)); }

    QStringList OnServer() const
    {
        QStringList aliases;
        for (auto const& row : Raw().Rows("SELECT alias FROM ServerConfiguration ORDER BY id"_q))
            aliases.append(row[0].toString());
        return aliases;
    }

    CuttingProxy proxy;
    std::shared_ptr<PostgresDatabaseFactory> store;
    QString const _profile = PostgresServer::NewProfile();
};

TEST_F(SlowNetwork, WriteThatIsSwallowedIsToldAsLostAfterTwiceTheStatementTimeout)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    proxy.CutAt(1, Cut::RequestSwallowed);
    EXPECT_FALSE(AddServer(*store, "b"_q));
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->kind, StoreErrorKind::ConnectionLost);
    EXPECT_TRUE(store->LastError()->text.contains("no answer within 800 ms"_q))
        << store->LastError()->text.toStdString();
    EXPECT_TRUE(AddServer(*store, "c"_q));
    EXPECT_EQ(OnServer(), (QStringList{"a"_q, "c"_q}));
}

TEST_F(SlowNetwork, LockOfATransactionThatIsGivenUpIsFreeAtOnce)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(AddServer(*store, "a"_q));
    proxy.CutAt(1, Cut::RequestSwallowed);
    EXPECT_FALSE(AddServer(*store, "b"_q));
    auto const other = PostgresDatabaseFactory::Open(PostgresServer::Shared().Uri(_profile));
    ASSERT_NE(other, nullptr);
    EXPECT_TRUE(AddServer(*other, "c"_q)) << "the first store has done nothing since";
    EXPECT_FALSE(database->commit());
    EXPECT_EQ(OnServer(), QStringList{"c"_q});
}

TEST_F(SlowNetwork, ReadWhoseAnswerIsSwallowedIsRepeated)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_EQ(CountServers(*store), 1); // prepares the statement
    proxy.CutAt(1, Cut::AnswerSwallowed);
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_TRUE(proxy.hasCut());
    EXPECT_FALSE(store->LastError());
}

TEST_F(SlowNetwork, RequestThatHangsAtAnyPointOfAScriptIsToldAsItHappened)
{
    int const step = SoakNumber("TANDRY_SOAK_ROUNDS", 0) > 0 ? 1 : 6;
    int hung = 0;
    int lies = 0;
    for (Cut const cut : {Cut::RequestSwallowed, Cut::AnswerSwallowed, Cut::RequestLate}) {
        int request = 1;
        for (bool isCut = true; isCut; request += step) {
            SCOPED_TRACE(std::to_string(request) + ", " + std::to_string(static_cast<int>(cut)));
            Raw().Run("DELETE FROM ServerConfiguration"_q);
            AccountedWrites writes(store);
            proxy.CutAt(request, cut);
            writes.RunScript();
            isCut = proxy.hasCut();
            proxy.CutNoMore();
            QStringList const found = writes.Lies(OnServer());
            EXPECT_EQ(found, QStringList());
            EXPECT_TRUE(AddServer(*store, "afterwards"_q));
            hung += isCut ? 1 : 0;
            lies += found.size();
        }
        EXPECT_GT(request, 12);
    }
    std::cout << "slow network: " << hung << " requests swallowed or late, " << lies << " writes told wrongly"
              << std::endl;
}

/// Switches the loopback device of the calling thread's network on or off. Without it every packet is lost.
bool SetLoopback(bool on)
{
    int const socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq device{};
    device.ifr_name[0] = 'l';
    device.ifr_name[1] = 'o';
    bool done = ::ioctl(socket, SIOCGIFFLAGS, &device) == 0;
    device.ifr_flags = static_cast<short>(on ? device.ifr_flags | IFF_UP : device.ifr_flags & ~IFF_UP);
    done = done && ::ioctl(socket, SIOCSIFFLAGS, &device) == 0;
    ::close(socket);
    return done;
}

/// Of a thread with a network of its own.
void LoseNetworkAmidATransaction()
{
    PostgresServer server({"listen_addresses=127.0.0.1"_q});
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    OpenOptions options;
    options.busyTimeoutMsec = 60'000;
    QString error;
    auto const store = PostgresDatabaseFactory::Open(
        "postgresql://tandry@127.0.0.1/postgres?tandry_profile=network&connect_timeout=2&tcp_user_timeout=1000"
        "&keepalives_idle=1&keepalives_interval=1&keepalives_count=2"_q,
        &error,
        options);
    ASSERT_NE(store, nullptr) << error.toStdString();
    auto const other = PostgresDatabaseFactory::Open(server.Uri("network"_q), &error, options);
    ASSERT_NE(other, nullptr) << error.toStdString();
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(AddServer(*store, "lost"_q));

    ASSERT_TRUE(SetLoopback(false));
    EXPECT_FALSE(AddServer(*store, "not sent"_q));
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->kind, StoreErrorKind::ConnectionLost) << store->LastError()->text.toStdString();
    EXPECT_TRUE(AddServer(*other, "other"_q)) << "the server frees the lock of a client that is gone";
    ASSERT_TRUE(SetLoopback(true));
    EXPECT_FALSE(database->commit());
    EXPECT_TRUE(AddServer(*store, "again"_q));
    EXPECT_EQ(CountServers(*other), 2);
}

TEST(LostNetwork, IsNoticedByTheClientAndByTheServer)
{
    bool hasNetwork = false;
    std::thread([&] {
        hasNetwork = ::unshare(CLONE_NEWNET) == 0 && SetLoopback(true);
        if (hasNetwork)
            LoseNetworkAmidATransaction();
    }).join();
    if (!hasNetwork)
        GTEST_SKIP() << "a network of its own takes root";
}

} // namespace
} // namespace slow_network_test
