#include "config/ServerConfigManager.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "postgres/support/AccountedWrites.h"
#include "postgres/support/PostgresServer.h"
#include "reliability/WritingLoop.h"
#include "support/ChildProcess.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/RawStore.h"

#include <gmock/gmock.h>

#include <QLoggingCategory>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <future>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <unistd.h>

namespace postgres_soak_test {
namespace {

using namespace sync::database;
using namespace tandry::test;

/// Long tests, each with a short form. Numbers in the environment choose the long one: see scripts/test-postgres.
class PostgresSoak : public testing::Test
{
protected:
    PostgresSoak() { QLoggingCategory::setFilterRules("tandry.*=false"_q); } // there are many errors
    ~PostgresSoak() override
    {
        PostgresDatabaseFactory::SetConnectionLimit(32);
        QLoggingCategory::setFilterRules(QString());
    }

    /// Waits a random time, so that an interruption is not tied to a step of the writer.
    void SpinAtRandom()
    {
        for (unsigned long volatile spins = random() % 2'000'000; spins > 0; spins = spins - 1) {
        }
    }

    /// Tells how far the long form of a test is, ten times.
    static void TellProgress(char const* what, int done, int all)
    {
        constexpr int Parts = 10;
        if (qEnvironmentVariableIsSet("TANDRY_SOAK_ROUNDS") && all >= Parts && done % (all / Parts) == 0)
            std::cerr << "    " << done << " of " << all << ' ' << what << std::endl;
    }

    static std::shared_ptr<PostgresDatabaseFactory> OpenStore(QString const& uri)
    {
        OpenOptions options;
        options.busyTimeoutMsec = 60'000;
        QString error;
        auto store = PostgresDatabaseFactory::Open(uri, &error, options);
        EXPECT_NE(store, nullptr) << error.toStdString();
        return store;
    }

    static QStringList ServersOf(QString const& uri)
    {
        QStringList aliases;
        for (auto const& row : RawStore(uri).Rows("SELECT alias FROM ServerConfiguration ORDER BY id"_q))
            aliases.append(row[0].toString());
        return aliases;
    }

    static void RemoveProfile(QString const& profile)
    {
        RawStore(PostgresServer::Shared().Uri(profile)).Run("DROP SCHEMA IF EXISTS tandry_%1 CASCADE"_q.arg(profile));
    }

    /// What became of the writes of a thread that was interrupted.
    struct Account
    {
        qsizetype kept = 0;
        qsizetype failed = 0;
        qsizetype unknown = 0;
        qsizetype lies = 0;
    };

    void WriteThroughOutage(std::shared_ptr<PostgresDatabaseFactory> const& store,
                            std::function<void()> const& outage,
                            std::function<QStringList()> const& onServer,
                            Account& account);
    /// Prints the figures of all outages.
    static void Print(char const* what, int outages, Account const& account)
    {
        std::cout << what << ": " << outages << " outages, " << account.kept << " writes acknowledged, "
                  << account.failed << " told as failed, " << account.unknown << " told as unknown, " << account.lies
                  << " told wrongly" << std::endl;
        EXPECT_GT(account.failed + account.unknown, 0) << "no outage was met";
    }

    unsigned const seed = std::random_device()();
    std::mt19937 random{seed};
};

TEST_F(PostgresSoak, KilledClientLosesNoAcknowledgedWriteAndLeavesNoPartialOne)
{
    int const rounds = Rounds(8);
    int acknowledged = 0;
    int lost = 0;
    QTemporaryDir const place;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE("seed %1, round %2"_q.arg(seed).arg(round).toStdString());
        QString const profile = PostgresServer::NewProfile();
        QString const uri = PostgresServer::Shared().Uri(profile);
        ASSERT_NE(OpenStore(uri), nullptr);
        // A generated file's parent is a file or a generated file, so their ids must differ.
        RawStore(uri).Run("ALTER TABLE GeneratedFileConfiguration ALTER COLUMN id RESTART WITH 1000001"_q);
        RowStates const before = ReadRows(uri);

        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        auto const writerSeed = static_cast<unsigned>(random());
        ChildProcess writer([&] {
            close(ends[0]);
            return WriteUntilFailure(OpenStore(uri), place.path(), writerSeed, fdopen(ends[1], "w"));
        });
        close(ends[1]);
        std::FILE* const pipeEnd = fdopen(ends[0], "r");
        WriterReport report(pipeEnd, before);
        ASSERT_TRUE(report.ReadAcknowledgements(1 + int(random() % 40))) << "the writer failed before it was killed";
        SpinAtRandom();
        ASSERT_EQ(kill(writer.id(), SIGKILL), 0);
        ASSERT_EQ(writer.Wait(), -SIGKILL);
        report.ReadRest();
        std::fclose(pipeEnd);

        // The lock of the killed writer is free as soon as the server notices, and so is what it had begun undone.
        EXPECT_TRUE(AddServer(*OpenStore(uri), "next client"_q));
        RowStates rows = ReadRows(uri);
        EXPECT_EQ(rows.erase({"ServerConfiguration", "next client"}), 1U);
        EXPECT_EQ(RawStore(uri).Value("SELECT count(*) FROM FolderConfiguration WHERE rootId = -1"_q).toInt(), 0);
        std::vector<QByteArray> const lostNow = report.Lost(rows);
        EXPECT_THAT(lostNow, testing::IsEmpty());
        acknowledged += report.acknowledged();
        lost += int(lostNow.size());
        RemoveProfile(profile);
        TellProgress("kills of a client", round + 1, rounds);
    }
    std::cout << "client: " << rounds << " kills, " << acknowledged << " writes acknowledged, " << lost << " lost"
              << std::endl;
    EXPECT_GT(acknowledged, 0);
}

/// Interrupts a thread that writes, and lets it go on after the outage, with a new account. `onServer` reads the
/// aliases.
void PostgresSoak::WriteThroughOutage(std::shared_ptr<PostgresDatabaseFactory> const& store,
                                      std::function<void()> const& outage,
                                      std::function<QStringList()> const& onServer,
                                      Account& account)
{
    AccountedWrites interrupted(store);
    std::promise<void> begun;
    std::promise<void> over;
    QSet<QString> afterwards;
    std::thread writer([&, scripts = 1 + int(random() % 10)] {
        int script = 0;
        while (interrupted.allKept()) {
            interrupted.RunScript("before%1 "_q.arg(script));
            if (++script == scripts)
                begun.set_value();
        }
        if (script < scripts)
            begun.set_value();
        over.get_future().wait();
        AccountedWrites writes(store);
        writes.RunScript("afterwards "_q);
        afterwards = writes.kept();
    });
    begun.get_future().wait();
    SpinAtRandom();
    outage();
    over.set_value();
    writer.join();

    EXPECT_EQ(afterwards.size(), AccountedWrites::Writes) << "the store works after the outage";
    QStringList before = onServer();
    for (QString const& alias : afterwards)
        EXPECT_EQ(before.removeAll(alias), 1) << alias.toStdString();
    QStringList const lies = interrupted.Lies(before);
    EXPECT_EQ(lies, QStringList());
    account.kept += interrupted.kept().size() + afterwards.size();
    account.failed += interrupted.failed().size();
    account.unknown += interrupted.unknown().size();
    account.lies += lies.size();
}

TEST_F(PostgresSoak, KilledServerLosesNoAcknowledgedWriteAndItsClientGoesOn)
{
    int const kills = Rounds(8) / 4; // a server takes longer to start than a client
    PostgresServer server;
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    QString const uri = server.Uri("killed"_q);
    auto const store = OpenStore(uri);
    ASSERT_NE(store, nullptr);
    Account account;
    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE("seed %1, kill %2"_q.arg(seed).arg(kill).toStdString());
        auto const killAndStart = [&] {
            server.Crash();
            server.Start();
        };
        WriteThroughOutage(
            store, killAndStart, [&] { return ServersOf(uri); }, account);
        ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
        RawStore(uri).Run("DELETE FROM ServerConfiguration"_q);
        TellProgress("kills of a server", kill + 1, kills);
    }
    Print("server", kills, account);
}

/// A primary and a standby, and a profile on whichever of them can be written. Commits wait for the standby.
class ServerPair
{
public:
    QString Problem() const { return primary.problem().isNull() ? standby.problem() : primary.problem(); }

    QString Uri(QString const& parameters = {}) const
    {
        QString uri = primary.Uri(_profile, "target_session_attrs=read-write"_q + parameters);
        return uri.replace(primary.host(), primary.host() + ","_q + standby.host());
    }

    /// Ends the primary as a crash would, and lets the standby take its place.
    void SwitchOver()
    {
        primary.Crash();
        EXPECT_EQ(RawStore(standby.Uri(_profile)).Value("SELECT CAST(pg_promote() AS text)"_q).toString(), "true"_q);
    }

    QString StandbyUri() const { return standby.Uri(_profile); }

    PostgresServer primary{{"synchronous_standby_names=*"_q}};
    PostgresServer standby{{}, &primary};

private:
    QString const _profile = "switched"_q;
};

TEST_F(PostgresSoak, SwitchOverToASynchronousStandbyLosesNoAcknowledgedWrite)
{
    int const rounds = std::max(Rounds(8) / 20, 1); // each makes two servers
    Account account;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE("seed %1, round %2"_q.arg(seed).arg(round).toStdString());
        ServerPair servers;
        ASSERT_EQ(servers.Problem(), QString());
        auto const store = OpenStore(servers.Uri());
        ASSERT_NE(store, nullptr);
        WriteThroughOutage(
            store, [&] { servers.SwitchOver(); }, [&] { return ServersOf(servers.StandbyUri()); }, account);
    }
    Print("switch-over", rounds, account);
}

TEST_F(PostgresSoak, SwitchOverLosesWhatTheStandbyHasNotReceivedIfCommitsDoNotWaitForIt)
{
    ServerPair servers;
    ASSERT_EQ(servers.Problem(), QString());
    ASSERT_TRUE(AddServer(*OpenStore(servers.Uri()), "waits"_q));
    servers.standby.Crash();
    auto const store = OpenStore(servers.Uri("&options=-csynchronous_commit%3Dlocal"_q));
    ASSERT_NE(store, nullptr);
    ASSERT_TRUE(AddServer(*store, "does not wait"_q));
    EXPECT_EQ(CountServers(*store), 2);
    // The standby starts only when the primary can send it nothing any more.
    servers.primary.Crash();
    servers.standby.Start();
    ASSERT_EQ(servers.Problem(), QString());
    servers.SwitchOver();
    EXPECT_EQ(ServersOf(servers.StandbyUri()), QStringList{"waits"_q});
    EXPECT_EQ(CountServers(*store), 1) << "the store goes on with the standby";
}

TEST_F(PostgresSoak, WritingProcessesLoseNothingAndAreToldNoError)
{
    constexpr int Processes = 4;
    int const writes = SoakNumber("TANDRY_SOAK_WRITES", 100);
    QString const profile = PostgresServer::NewProfile();
    QString const uri = PostgresServer::Shared().Uri(profile);
    ASSERT_NE(OpenStore(uri), nullptr);

    // Adds servers alone, in a scope and in a client transaction in turn, and reports each with its id.
    auto const write = [&](int number, std::FILE* report) {
        auto const store = OpenStore(uri);
        sync::config::ServerConfigManager servers(store);
        for (int row = 0; row < writes; ++row) {
            sync::config::ServerConfiguration server;
            server.setAlias("process %1 row %2"_q.arg(number).arg(row));
            bool done = false;
            if (row % 3 == 0) {
                done = servers.Add(server);
            }
            else if (row % 3 == 1) {
                TransactionalScope const scope;
                done = servers.Add(server);
            }
            else {
                auto const database = store->CreateDatabase();
                done = database->transaction() && servers.Add(server) && database->commit();
            }
            if (auto const error = store->LastError(); !done || error) {
                std::cerr << (error ? error->text : "no error"_q).toStdString() << std::endl;
                return 1;
            }
            std::fprintf(report, "%d %s\n", server.getId(), server.getAlias().toUtf8().constData());
            if (number == 0)
                TellProgress("writes of the first of four processes", row + 1, writes);
        }
        return std::fflush(report);
    };
    struct Writer
    {
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> report{std::tmpfile(), &std::fclose};
        std::unique_ptr<ChildProcess> process;
    };
    std::array<Writer, Processes> writers;
    for (int number = 0; number < Processes; ++number)
        writers[number].process =
            std::make_unique<ChildProcess>([&] { return write(number, writers[number].report.get()); });

    std::map<int, QString> acknowledged;
    for (Writer const& writer : writers) {
        EXPECT_EQ(writer.process->Wait(), 0);
        std::rewind(writer.report.get());
        int id = 0;
        std::array<char, 64> alias{};
        while (std::fscanf(writer.report.get(), "%d %63[^\n]", &id, alias.data()) == 2)
            EXPECT_TRUE(acknowledged.emplace(id, QString::fromUtf8(alias.data())).second) << "the id was given twice";
    }
    std::map<int, QString> found;
    for (auto const& row : RawStore(uri).Rows("SELECT id, alias FROM ServerConfiguration"_q))
        found.emplace(row[0].toInt(), row[1].toString());
    EXPECT_EQ(found.size(), std::size_t(Processes * writes));
    EXPECT_TRUE(found == acknowledged);
    std::cout << Processes << " processes: " << acknowledged.size() << " writes acknowledged, " << found.size()
              << " found" << std::endl;
    RemoveProfile(profile);
}

/// Threads wait here for each other and then for the one that lets them go on.
class Gate
{
public:
    void ArriveAndWait()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        ++_arrived;
        _changed.notify_all();
        _changed.wait(lock, [this] { return _isOpen; });
    }
    void WaitForAll(int threads)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait(lock, [&] { return _arrived == threads; });
    }
    void Open()
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _isOpen = true;
        _changed.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    int _arrived = 0;
    bool _isOpen = false;
};

TEST_F(PostgresSoak, ProfilesAtOnceKeepTheirRecordsApart)
{
    constexpr int Rows = 20;
    constexpr int ServersOwnConnections = 10;
    int const profiles = SoakNumber("TANDRY_SOAK_PROFILES", 20);
    PostgresServer server({"max_connections=%1"_q.arg(profiles + ServersOwnConnections)});
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    PostgresDatabaseFactory::SetConnectionLimit(profiles);
    Gate gate;
    auto const write = [&](QString const& profile) {
        QStringList own;
        auto const store = OpenStore(server.Uri(profile));
        for (int row = 0; store != nullptr && row < Rows; ++row) {
            own.append("%1 %2"_q.arg(profile).arg(row));
            EXPECT_TRUE(AddServer(*store, own.back()));
        }
        gate.ArriveAndWait();
        if (store == nullptr)
            return;
        QStringList found;
        for (QVariant const& alias : Column(*store, "SELECT alias FROM ServerConfiguration ORDER BY id"_q))
            found.append(alias.toString());
        EXPECT_EQ(found, own);
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < profiles; ++number)
        threads.emplace_back(write, "profile%1"_q.arg(number));
    gate.WaitForAll(profiles);

    RawStore raw(server.Uri("profile0"_q));
    int const connections =
        raw.Value("SELECT count(*) FROM pg_stat_activity WHERE application_name = 'tandry'"_q).toInt();
    EXPECT_EQ(connections, profiles);
    StoreError error;
    EXPECT_EQ(PostgresDatabaseFactory::Open(server.Uri("profile0"_q), error), nullptr);
    EXPECT_EQ(error.kind, StoreErrorKind::Locked) << error.text.toStdString();
    gate.Open();
    for (std::thread& thread : threads)
        thread.join();
    std::cout << profiles << " profiles at once: " << connections << " connections, "
              << raw.Value("SELECT count(*) FROM pg_namespace WHERE nspname LIKE 'tandry!_%' ESCAPE '!'"_q).toInt()
              << " schemas, " << profiles * Rows << " writes acknowledged" << std::endl;
}

} // namespace
} // namespace postgres_soak_test
