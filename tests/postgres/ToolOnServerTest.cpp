#include "ToolFixture.h"

#include "database/SqliteDatabaseFactory.h"
#include "postgres/support/PostgresServer.h"
#include "postgres/support/ServerRawStore.h"
#include "support/Queries.h"

#include <QFile>
#include <QRegularExpression>

#include <utility>
#include <vector>

namespace tool_on_server_test {
namespace {

using namespace tandryctl::test;
using namespace tandry::test;

/// The built program on a profile of its own.
class ToolOnServer : public ToolTest
{
protected:
    void TearDown() override
    {
        ServerRawStore(uri).Run(QStringLiteral("DROP SCHEMA IF EXISTS tandry_%1 CASCADE").arg(profile));
        ToolTest::TearDown();
    }

    RunResult RunOn(QString const& store, QStringList const& arguments)
    {
        return RunWithoutStore(QStringList{"--store"_q, store} + arguments);
    }

    /// Expects success on the profile, and returns the output.
    QString OnServer(QStringList const& arguments)
    {
        RunResult const ran = RunOn(uri, arguments);
        EXPECT_EQ(ran.status, 0) << arguments.join(QLatin1Char(' ')).toStdString() << ": " << ran.err.toStdString();
        return ran.out;
    }

    QString const profile = PostgresServer::NewProfile();
    QString const uri = PostgresServer::Shared().Uri(profile);
    /// As messages show it.
    QString const name = QStringLiteral("postgresql://%1/postgres (profile %2)")
                             .arg(uri.section("host="_q, 1).section(QLatin1Char('&'), 0, 0), profile);
};

QStringList Words(char const* text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '));
}

TEST_F(ToolOnServer, InitCreatesTheProfileOnce)
{
    EXPECT_EQ(OnServer({"init"_q}), QStringLiteral("made the store '%1'\n").arg(name));
    EXPECT_EQ(OnServer({"init"_q}),
              QStringLiteral("the store '%1' is there already; no record was changed\n").arg(name));
}

TEST_F(ToolOnServer, MissingProfileIsNamedWithTheCommandThatCreatesIt)
{
    RunResult const ran = RunOn(uri, Words("list roots"));
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("no such profile"_q)) << ran.err.toStdString();
    EXPECT_TRUE(ran.err.contains("tandryctl init"_q)) << ran.err.toStdString();
}

TEST_F(ToolOnServer, CommandsPrintTheSameAsForAFile)
{
    MakeDirectory("docs/letters"_q);
    MakeDirectory("photos"_q);
    MakeDirectory("elsewhere"_q);
    WriteFile("docs/todo.txt"_q, "milk");
    WriteFile("docs/letters/bank.txt"_q, "dear");
    WriteFile("docs/letters/ada.md"_q, "hello");
    QString const docs = At("docs");
    QString const photos = At("photos");
    std::vector<QStringList> const commands{
        {"init"_q},
        Words("server add --dav-url https://dav.example --alias Office"),
        Words("server add --dav-url https://dav.example --alias Twice"),
        Words("server update 1 --alias Bureau"),
        Words("server list"),
        Words("server show 1 --json"),
        Words("server default"),
        Words("server show 77"),
        Words("account add --user ada --server 1"),
        Words("account list --json"),
        Words("product add --name Phone --key k --server 1"),
        Words("product update 1 --name Tablet"),
        Words("product list"),
        {"root"_q, "add"_q, docs, "--server-path"_q, "/documents"_q, "--account"_q, "1"_q},
        {"root"_q, "add"_q, photos, "--server-path"_q, "/photos"_q},
        {"scan"_q},
        {"scan"_q},
        Words("list roots --json"),
        Words("list folders"),
        Words("list files --sort name"),
        Words("list files --name *.txt --json"),
        Words("list files --name [ab]* --limit 1"),
        Words("list files --status not-synced"),
        Words("list schedules --json"),
        {"tree"_q},
        {"status"_q},
        {"where"_q, At("docs/letters/bank.txt")},
        Words("overlap /documents/letters --account 1"),
        {"where"_q, photos},
        {"explain"_q, At("docs/letters/bank.txt")},
        {"explain"_q, "--thorough"_q, At("docs/todo.txt")},
        {"diff"_q},
        {"file"_q, "show"_q, At("docs/todo.txt"), "--json"_q},
        {"file"_q, "links"_q, At("docs/todo.txt")},
        Words("schedule add --folder 1 --interval 15"),
        Words("schedule default"),
        Words("schedule update 2 --interval 20"),
        Words("schedule remove 2 --yes"),
        {"folder"_q, "add"_q, At("docs/new")},
        Words("folder remove 3 --recursive --yes"),
        Words("file remove 1 --yes"),
        {"root"_q, "move"_q, "2"_q, At("elsewhere"), "--yes"_q},
        {"diff"_q},
        {"export"_q},
        Words("account remove 1 --yes"),
        Words("product remove 1 --yes"),
        Words("server remove 1 --yes"),
        Words("root remove 1 --yes"),
        {"export"_q},
    };
    auto const shown = [this](QString text) {
        text.replace(name, "STORE"_q).replace(StorePath(), "STORE"_q);
        return text.replace(QRegularExpression("elapsed: .*|T\\d\\d:\\d\\d:\\d\\d[.0-9]*|\\d\\d:\\d\\d:\\d\\d"_q), {});
    };
    int worked = 0;
    for (QStringList const& command : commands) {
        RunResult const onFile = RunOn(StorePath(), command);
        RunResult const onServer = RunOn(uri, command);
        SCOPED_TRACE(command.join(QLatin1Char(' ')).toStdString());
        EXPECT_EQ(onServer.status, onFile.status);
        EXPECT_EQ(shown(onServer.out), shown(onFile.out));
        EXPECT_EQ(shown(onServer.err), shown(onFile.err));
        worked += onFile.status == 0 ? 1 : 0;
    }
    EXPECT_GE(worked, static_cast<int>(commands.size()) - 6) << "these say what is missing or differs";
}

TEST_F(ToolOnServer, CommandsForFilesSayWhatToUseInstead)
{
    OnServer({"init"_q});
    QString const backup = At("backup.db");
    std::vector<std::pair<QStringList, QString>> const commands{
        {{"backup"_q, backup}, "pg_dump"_q},
        {{"restore"_q, backup}, "pg_restore"_q},
        {{"check"_q}, "pg_amcheck"_q},
        {{"compact"_q}, "VACUUM"_q},
        {{"stat"_q}, "pg_total_relation_size"_q},
        {{"sql"_q, "SELECT 1"_q}, "psql"_q},
        {{"doctor"_q}, "tandryctl copy"_q},
        {{"bundle"_q, backup}, "tandryctl copy"_q},
        {{"diff"_q, "--with"_q, backup}, "tandryctl copy"_q},
        {Words("server add --alias a --dry-run"), "tandryctl copy"_q},
    };
    for (auto const& [command, instead] : commands) {
        RunResult const ran = RunOn(uri, command);
        EXPECT_EQ(ran.status, 2) << command.join(QLatin1Char(' ')).toStdString();
        EXPECT_TRUE(ran.err.contains("on a server"_q)) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains(instead)) << ran.err.toStdString();
        EXPECT_FALSE(QFile::exists(backup));
    }
    EXPECT_EQ(RunOn(uri, Words("server list --json")).out, "[]\n"_q);
}

TEST_F(ToolOnServer, WatchPrintsTheChangesOfAProfile)
{
    OnServer({"init"_q});
    QProcess watching;
    watching.setProcessEnvironment(HomeEnvironment(folder.path()));
    watching.start(QStringLiteral(TANDRYCTL_PROGRAM), {"--store"_q, uri, "watch"_q});
    auto const waitFor = [&watching](QByteArray const& text, QProcess::ProcessChannel channel) {
        watching.setReadChannel(channel);
        QByteArray read;
        while (!read.contains(text) && watching.waitForReadyRead(TimeoutMsec))
            read += watching.readAll();
        return read.contains(text);
    };
    ASSERT_TRUE(waitFor("watching", QProcess::StandardError));
    MakeDirectory("docs"_q);
    OnServer({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/documents"_q});
    EXPECT_TRUE(waitFor("docs", QProcess::StandardOutput));
    watching.terminate();
    EXPECT_TRUE(watching.waitForFinished(TimeoutMsec));
}

TEST_F(ToolOnServer, NoticesAreSwitchedAndShown)
{
    OnServer({"init"_q});
    auto const shown = [this](char const* state) {
        return QStringLiteral("notices of commits to '%1' are %2\n").arg(name, QString::fromUtf8(state));
    };
    auto const triggers = [this] {
        return ServerRawStore(uri)
            .Value(QStringLiteral("SELECT count(*) FROM pg_trigger t JOIN pg_class c ON c.oid = tgrelid WHERE NOT "
                                  "tgisinternal AND relnamespace = 'tandry_%1'::regnamespace")
                       .arg(profile))
            .toInt();
    };
    EXPECT_EQ(OnServer(Words("notices show")), shown("off"));
    EXPECT_EQ(OnServer(Words("notices on")), shown("on"));
    EXPECT_EQ(OnServer(Words("notices on")), shown("on"));
    EXPECT_EQ(OnServer(Words("notices show")), shown("on"));
    EXPECT_GT(triggers(), 0);
    EXPECT_TRUE(OnServer(Words("notices show --json")).contains("\"notices\":true"_q));
    EXPECT_EQ(OnServer(Words("notices off")), shown("off"));
    EXPECT_EQ(OnServer(Words("notices show")), shown("off"));
    EXPECT_EQ(triggers(), 0);
}

TEST_F(ToolOnServer, NoticesAreNotForFiles)
{
    Init();
    for (char const* command : {"notices on", "notices off", "notices show"}) {
        RunResult const ran = RunOn(StorePath(), Words(command));
        EXPECT_EQ(ran.status, 2) << command;
        EXPECT_TRUE(ran.err.contains("files need no notices"_q)) << ran.err.toStdString();
    }
}

// Passwords.

TEST_F(ToolOnServer, PasswordOnTheCommandLineIsRefusedAndOneInTheEnvironmentIsTakenAndNeverShown)
{
    QString withPassword = uri;
    withPassword.replace("tandry@"_q, "tandry:hunter2@"_q);
    std::vector<RunResult> runs{
        RunOn(withPassword, {"init"_q}),
        RunOn(withPassword, {"backup"_q, At("b.db")}),
        RunWithoutStore({"copy"_q, "--from"_q, withPassword, "--to"_q, StorePath()}),
        RunWithoutStore({"copy"_q, "--from"_q, StorePath(), "--to"_q, withPassword}),
        RunWithoutStore({"list"_q, "roots"_q, withPassword}),
        RunOn(QString(withPassword).replace("postgresql"_q, "POSTGRESQL"_q), {"init"_q}),
        RunOn("host=/nowhere password=hunter2"_q, {"init"_q}),
        RunOn(uri + "&sslpassword=hunter2"_q, {"init"_q}),
    };
    for (RunResult const& ran : runs)
        EXPECT_EQ(ran.status, 2) << ran.err.toStdString();
    QString const variable = "TANDRY_STORE="_q + withPassword;
    runs.push_back(RunWithoutStore({"-v"_q, "init"_q}, {variable}));
    EXPECT_EQ(runs.back().status, 0) << runs.back().err.toStdString();
    runs.push_back(RunWithoutStore({"-v"_q, "list"_q, "schedules"_q}, {variable}));
    EXPECT_EQ(runs.back().status, 0) << runs.back().err.toStdString();
    runs.push_back(RunWithoutStore({"-v"_q, "compact"_q}, {variable}));
    runs.push_back(
        RunWithoutStore({"-v"_q, "list"_q, "roots"_q}, {"TANDRY_STORE=postgresql://u:hunter2@/db?host=/nowhere"_q}));
    EXPECT_EQ(runs.back().status, 3) << runs.back().err.toStdString();
    EXPECT_TRUE(runs.back().err.contains("no connection"_q)) << runs.back().err.toStdString();
    for (char const* store : {"host=/nowhere password=hunter2", "POSTGRESQL://u:hunter2@/db"}) {
        runs.push_back(RunWithoutStore({"-v"_q, "list"_q, "roots"_q}, {"TANDRY_STORE="_q + QString::fromUtf8(store)}));
        EXPECT_EQ(runs.back().status, 3) << runs.back().err.toStdString();
    }
    for (RunResult const& ran : runs) {
        EXPECT_FALSE(ran.err.contains("hunter2"_q)) << ran.err.toStdString();
        EXPECT_FALSE(ran.out.contains("hunter2"_q)) << ran.out.toStdString();
    }
}

// Copies.

TEST_F(ToolOnServer, CopyToAServerAndBackKeepsAllRecords)
{
    MakeDirectory("docs/letters"_q);
    WriteFile("docs/letters/ada.md"_q, "hello");
    Init();
    RunSuccessfully(Words("server add --dav-url https://dav.example --alias Office"));
    RunSuccessfully(Words("account add --user ada --server 1"));
    WriteFile("secret"_q, "hunter2");
    RunSuccessfully(Words("product add --name Phone --key k --server 1 --secret-file") + QStringList{At("secret")});
    RunSuccessfully({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/documents"_q, "--account"_q, "1"_q});
    RunSuccessfully({"scan"_q});
    RunSuccessfully(Words("schedule add --folder 1 --interval 15"));
    QStringList const exporting = Words("export --with-secrets");
    QString const before = RunSuccessfully(exporting);
    QString const back = At("back.db");

    RunResult const there = RunWithoutStore({"copy"_q, "--from"_q, StorePath(), "--to"_q, uri});
    EXPECT_EQ(there.status, 0) << there.err.toStdString();
    EXPECT_TRUE(there.out.contains(name)) << there.out.toStdString();
    EXPECT_EQ(OnServer(exporting), before);
    RunResult const again = RunWithoutStore({"copy"_q, "--from"_q, uri, "--to"_q, back});
    EXPECT_EQ(again.status, 0) << again.err.toStdString();
    EXPECT_EQ(RunOn(back, exporting).out, before);

    EXPECT_EQ(OnServer(Words("server add --dav-url https://other.example --alias Home")), "added server 2 'Home'\n"_q)
        << "no id of a copied record is given again";
}

TEST_F(ToolOnServer, CopyIntoAStoreWithRecordsIsRefused)
{
    Init();
    RunSuccessfully(Words("server add --dav-url https://dav.example --alias Office"));
    OnServer({"init"_q});
    OnServer(Words("server add --dav-url https://other.example --alias Home"));
    QString const before = OnServer({"export"_q});
    RunResult const ran = RunWithoutStore({"copy"_q, "--from"_q, StorePath(), "--to"_q, uri});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("has records already: servers"_q)) << ran.err.toStdString();
    EXPECT_EQ(OnServer({"export"_q}), before);
}

TEST_F(ToolOnServer, CopyOfARecordThatTheServerRefusesCopiesNothing)
{
    Init();
    RunSuccessfully(Words("server add --dav-url https://dav.example --alias Office"));
    {
        auto const store = sync::database::SqliteDatabaseFactory::Open(StorePath());
        ASSERT_NE(store, nullptr);
        ASSERT_TRUE(AddServer(*store, QStringLiteral("a") + QChar(0) + QStringLiteral("b")));
    }
    RunResult const ran = RunWithoutStore({"copy"_q, "--from"_q, StorePath(), "--to"_q, uri});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("null character"_q)) << ran.err.toStdString();
    EXPECT_EQ(RunOn(uri, Words("server list --json")).out, "[]\n"_q);
}

TEST_F(ToolOnServer, DryRunOfACopyToAFileCopiesNothing)
{
    OnServer({"init"_q});
    OnServer(Words("server add --dav-url https://dav.example --alias Office"));
    RunResult const ran = RunWithoutStore({"copy"_q, "--dry-run"_q, "--from"_q, uri, "--to"_q, StorePath()});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_TRUE(ran.out.contains("copied 2 records"_q)) << ran.out.toStdString();
    EXPECT_FALSE(QFile::exists(StorePath()));
}

} // namespace
} // namespace tool_on_server_test
