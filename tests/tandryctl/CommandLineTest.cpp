#include "ToolFixture.h"

#include "support/RawStore.h"
#include "tools/tandryctl/CommandLine.h"
#include "tools/tandryctl/FailureCode.h"
#include "tools/tandryctl/Program.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

using namespace tandryctl::test;
using tandry::test::RawStore;
using tandryctl::CommandLine;
using tandryctl::ExitStatus;

namespace {

class CommandLineTest : public ToolTest
{
protected:
    CommandLineTest() { tandryctl::DeclareCommands(commandLine); }

    /// Returns the manual page without its markup.
    static QString Manual()
    {
        QFile file(QStringLiteral(TANDRYCTL_MANUAL));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(file.readAll());
        text.remove(QRegularExpression("\\\\f[BIRP]"_q));
        text.replace("\\-"_q, "-"_q);
        text.remove(QLatin1Char('"'));
        return text;
    }

    /// Returns the commands that are not groups.
    QStringList LeafCommands() const
    {
        QStringList leaves;
        QStringList const all = commandLine.Commands();
        for (QString const& command : all) {
            bool const isGroup = std::any_of(
                all.begin(), all.end(), [&](QString const& other) { return other.startsWith(command + " "_q); });
            if (!isGroup)
                leaves.append(command);
        }
        return leaves;
    }

    CommandLine commandLine;
};

} // namespace

TEST_F(CommandLineTest, ManualNamesEveryCommand)
{
    QStringList const commands = LeafCommands();
    EXPECT_GT(commands.size(), 30);
    QString const manual = Manual();
    for (QString const& command : commands)
        EXPECT_TRUE(QRegularExpression("^\\.BI? +%1( |$)"_q.arg(QRegularExpression::escape(command)),
                                       QRegularExpression::MultilineOption)
                        .match(manual)
                        .hasMatch())
            << command.toStdString();
}

TEST_F(CommandLineTest, ManualNamesEveryOption)
{
    QStringList const options = commandLine.Options();
    EXPECT_GT(options.size(), 30);
    QString const manual = Manual();
    for (QString const& option : options)
        EXPECT_TRUE(manual.contains(option.section(QLatin1Char(' '), -1))) << option.toStdString();
}

TEST_F(CommandLineTest, ManualNamesNoUnknownOption)
{
    QSet<QString> known;
    for (QString const& option : commandLine.Options())
        known.insert(option.section(QLatin1Char(' '), -1));
    auto named = QRegularExpression("--[a-z]+(-[a-z]+)*"_q).globalMatch(Manual());
    EXPECT_TRUE(named.hasNext());
    while (named.hasNext()) {
        QString const option = named.next().captured();
        EXPECT_TRUE(known.contains(option)) << option.toStdString();
    }
}

TEST_F(CommandLineTest, EveryCommandHasHelpWithAnExample)
{
    for (QString const& command : LeafCommands()) {
        RunResult const ran = RunWithoutStore(command.split(QLatin1Char(' ')) + QStringList{"--help"_q});
        EXPECT_EQ(ran.status, 0) << command.toStdString();
        EXPECT_TRUE(ran.out.contains("Examples:\n  tandryctl "_q)) << command.toStdString();
        EXPECT_TRUE(ran.out.contains("tandryctl "_q + command)) << command.toStdString();
        EXPECT_EQ(ran.err, QString());
    }
}

TEST_F(CommandLineTest, ProgramHelpListsEveryGroupAndTheExitStatus)
{
    RunResult const ran = RunWithoutStore({"--help"_q});
    EXPECT_EQ(ran.status, 0);
    for (QString const& command : commandLine.Commands()) {
        if (!command.contains(QLatin1Char(' '))) {
            EXPECT_TRUE(ran.out.contains("\n  "_q + command + " "_q)) << command.toStdString();
        }
    }
    EXPECT_TRUE(ran.out.contains("Exit status"_q));
    EXPECT_TRUE(ran.out.contains("TANDRY_STORE"_q));
}

TEST_F(CommandLineTest, VersionIsTheProjectsVersion)
{
    for (char const* option : {"--version", "-V"}) {
        RunResult const ran = RunWithoutStore({QString::fromUtf8(option)});
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.out, "tandryctl " TANDRYCTL_VERSION "\n"_q);
    }
}

TEST_F(CommandLineTest, WrongUsageIsOneLineThatRefersToTheHelp)
{
    QVector<QStringList> const wrong{{},
                                     {"nonsense"_q},
                                     {"root"_q},
                                     {"root"_q, "nonsense"_q},
                                     {"root"_q, "add"_q},
                                     {"list"_q, "roots"_q, "extra"_q},
                                     {"list"_q, "roots"_q, "--nonsense"_q},
                                     {"--nonsense"_q},
                                     {"scan"_q, "x"_q},
                                     {"scan"_q, "0"_q},
                                     {"root"_q, "remove"_q, "1.5"_q},
                                     {"root"_q, "remove"_q, "2147483648"_q},
                                     {"--store"_q}};
    for (QStringList const& arguments : wrong) {
        RunResult const ran = RunWithoutStore(arguments);
        EXPECT_EQ(ran.status, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(ran.out, QString());
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.startsWith("tandryctl: "_q)) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains("--help'"_q)) << ran.err.toStdString();
    }
}

TEST_F(CommandLineTest, FaultsThatTheParserFindsAreToldInTheToolsWords)
{
    struct Row
    {
        char const* arguments;
        char const* line;
    };
    constexpr Row Rows[] = {
        {"", "a command is missing; see 'tandryctl --help'"},
        {"list",
         "'tandryctl list' needs one of the words roots, folders, files and schedules; see 'tandryctl list --help'"},
        {"--store", "--store needs a value; see 'tandryctl --help'"},
        {"list files --order=", "--order needs a value; see 'tandryctl list files --help'"},
        {"account add --user a --user b --server 1",
         "--user is given more than once; see 'tandryctl account add --help'"},
        {"--json=x status", "--json takes no value; see 'tandryctl status --help'"},
        {"list files --folder 1 --root 1", "--folder excludes --root; see 'tandryctl list files --help'"},
    };
    for (Row const& row : Rows) {
        RunResult const ran =
            RunWithoutStore(QString::fromUtf8(row.arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts));
        EXPECT_EQ(ran.err, "tandryctl: %1\n"_q.arg(QString::fromUtf8(row.line))) << row.arguments;
        EXPECT_EQ(ran.status, 2);
    }
}

TEST_F(CommandLineTest, UnknownWordIsNamed)
{
    EXPECT_TRUE(RunWithoutStore({"nonsense"_q}).err.contains("'nonsense'"_q));
    EXPECT_TRUE(RunWithoutStore({"list"_q, "gods\n"_q}).err.contains("$'gods\\n'"_q));
}

TEST_F(CommandLineTest, VerboseShowsWhatTheLibraryLogs)
{
    Init();
    UseUpIds("ServerConfiguration");
    QStringList const command{"server"_q, "add"_q, "--dav-url"_q, "https://a/"_q};
    EXPECT_FALSE(Run(command).err.contains("tandry.database"_q));
    RunResult const verbose = Run(command + QStringList{"-v"_q});
    EXPECT_TRUE(verbose.err.contains("tandry.database"_q)) << verbose.err.toStdString();
    EXPECT_EQ(Run(command + QStringList{"-v"_q, "-q"_q}).status, 2);
}

TEST_F(CommandLineTest, QuietPrintsNoNotes)
{
    Init();
    QStringList const command{"server"_q, "add"_q, "--dav-url"_q, "https://a/"_q, "--dry-run"_q};
    EXPECT_TRUE(Run(command).err.contains("dry run"_q));
    EXPECT_EQ(Run(command + QStringList{"-q"_q}).err, QString());
    EXPECT_FALSE(Run({"server"_q, "show"_q, "7"_q, "--quiet"_q}).err.isEmpty()) << "a failure is no note";
}

TEST_F(CommandLineTest, NearestWordIsSuggested)
{
    struct Row
    {
        char const* arguments;
        char const* suggestion;
    };
    constexpr Row Rows[] = {
        {"lsit files", "'lsit' (did you mean 'list'?); see 'tandryctl --help'"},
        {"list flies", "'flies' (did you mean 'files'?); see 'tandryctl list --help'"},
        {"list files --foldr=3", "'--foldr=3' (did you mean '--folder'?); see 'tandryctl list files --help'"},
        {"list files --jsno", "'--jsno' (did you mean '--json'?); see 'tandryctl list files --help'"},
        {"help rot add", "'rot' (did you mean 'root'?); see 'tandryctl --help'"},
        {"help root ad", "'ad' (did you mean 'add'?); see 'tandryctl root --help'"},
        {"list servers", "'servers' (did you mean 'server list'?); see 'tandryctl list --help'"},
        {"help list servers", "'servers' (did you mean 'server list'?); see 'tandryctl list --help'"},
        {"list product", "'product' (did you mean 'product list'?); see 'tandryctl list --help'"},
        {"root list", "'list' (did you mean 'list roots'?); see 'tandryctl root --help'"},
        {"add root", "'add' (did you mean 'root add'?); see 'tandryctl root --help'"},
        {"help add root", "'add' (did you mean 'root add'?); see 'tandryctl --help'"},
        {"remove file 3", "'remove' (did you mean 'file remove'?); see 'tandryctl file --help'"},
        {"list nothing", "'nothing'; see 'tandryctl list --help'"},
        {"xyzzy", "'xyzzy'; see 'tandryctl --help'"},
        {"list files --status notsynced", "'notsynced' is not a valid STATUS (did you mean 'not-synced'?); see"},
        {"list files --status new",
         "'new' is not a valid STATUS, which is a number or one of syncing, not-synced and link-discovered; see"},
        {"explain --id 1 --type flder", "'flder' is not a valid KIND (did you mean 'folder'?); see"},
        {"file show 1 --type any", "'any' is not a valid KIND, which is one of file, generated and base; see"},
        {"doctor --fix paths-alikee", "'paths-alikee' is not a valid CODE (did you mean '"},
    };
    for (Row const& row : Rows) {
        RunResult const ran = RunWithoutStore(QString::fromUtf8(row.arguments).split(QLatin1Char(' ')));
        EXPECT_EQ(ran.status, 2);
        EXPECT_TRUE(ran.err.contains(QString::fromUtf8(row.suggestion))) << ran.err.toStdString();
    }
}

TEST_F(CommandLineTest, HelpOnACommandIsWhatItsOptionPrints)
{
    for (QString const& command : commandLine.Commands() + QStringList{QString()}) {
        QStringList const words = command.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        RunResult const byCommand = RunWithoutStore(QStringList{"help"_q} + words);
        EXPECT_EQ(byCommand.status, 0) << byCommand.err.toStdString();
        EXPECT_EQ(byCommand.out, RunWithoutStore(words + QStringList{"--help"_q}).out) << command.toStdString();
    }
}

TEST_F(CommandLineTest, NoHelpHasATitleWithoutExamples)
{
    for (QString const& command : commandLine.Commands()) {
        QString const help = RunWithoutStore(QStringList{"help"_q} + command.split(QLatin1Char(' '))).out;
        EXPECT_FALSE(help.trimmed().endsWith("Examples:"_q)) << command.toStdString();
    }
}

TEST_F(CommandLineTest, HelpSaysBehindAnOptionWhatItExcludes)
{
    QString const help = RunWithoutStore({"list"_q, "files"_q, "--help"_q}).out;
    EXPECT_TRUE(help.contains("\n  --root ID                       Only files in this root (not with --folder)\n"_q))
        << help.toStdString();
    EXPECT_FALSE(help.contains("Excludes"_q)) << help.toStdString();
}

TEST_F(CommandLineTest, EveryFailureSaysWhatHappenedAndWhatToDo)
{
    struct Row
    {
        char const* arguments;
        char const* line;
    };
    constexpr Row Rows[] = {
        {"server show 7", "there is no server 7; see 'tandryctl server list'"},
        {"account list", "no accounts on record; add one with 'tandryctl account add --user NAME --server ID'"},
        {"list files", "no files on record; 'tandryctl scan' records the files on disk"},
        {"scan", "no roots on record; add a root with 'tandryctl root add DIR --server-path PATH'"},
        {"file show 3", "there is no file 3 on record; see 'tandryctl list files --type file'"},
        {"where /a", "'/a' lies in no root; see 'tandryctl list roots'"},
        {"root add /etc/passwd --server-path /s",
         "'/etc/passwd' is not an existing directory; make it first, or give another one"},
        {"root add /etc --server-path ", "the server path is empty; give a path such as /docs"},
        {"server add", "a server needs a URL; give --dav-url, --web-service-url or both"},
        {"nonsense", "unexpected argument 'nonsense'; see 'tandryctl --help'"},
    };
    Init();
    for (Row const& row : Rows) {
        RunResult const ran = Run(QString::fromUtf8(row.arguments).split(QLatin1Char(' ')));
        EXPECT_EQ(ran.err, "tandryctl: %1\n"_q.arg(QString::fromUtf8(row.line))) << row.arguments;
        EXPECT_EQ(ran.out, QString());
    }
}

TEST_F(CommandLineTest, FailureInJsonIsOneObjectWithCodeMessageAndHint)
{
    struct Row
    {
        char const* arguments;
        int status;
        QJsonObject error;
    };
    auto const error = [](char const* code, char const* message, char const* hint) {
        return QJsonObject{
            {"code"_q, QLatin1String(code)}, {"message"_q, QLatin1String(message)}, {"hint"_q, QLatin1String(hint)}};
    };
    Row const rows[] = {
        {"server show 7", 1, error("not-found", "there is no server 7", "see 'tandryctl server list'")},
        {"root add /etc/passwd --server-path /s",
         1,
         error("unusable-file", "'/etc/passwd' is not an existing directory", "make it first, or give another one")},
        {"root add", 2, error("wrong-usage", "DIR is required", "see 'tandryctl root add --help'")},
        {"--store=/missing list roots",
         3,
         error("store-missing",
               "there is no store '/missing'",
               "create it with 'tandryctl --store FILE init' or give another one")},
    };
    Init();
    for (Row const& row : rows) {
        RunResult const ran =
            RunWithoutStore(QString::fromUtf8(row.arguments).split(QLatin1Char(' ')) + QStringList{"--json"_q},
                            {"TANDRY_STORE="_q + StorePath()});
        EXPECT_EQ(ran.status, row.status) << row.arguments;
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
        EXPECT_EQ(QJsonDocument::fromJson(ran.err.toUtf8()).object(), row.error) << row.arguments;
    }
}

TEST_F(CommandLineTest, WhatIsNotFoundIsAnEmptyArrayAndAnErrorWhateverTheCommand)
{
    Init();
    for (char const* arguments : {"server list",
                                  "server show 7",
                                  "list files",
                                  "file show 7",
                                  "where /a",
                                  "server remove 7",
                                  "scan",
                                  "tree 4"}) {
        RunResult const ran = Run(QString::fromUtf8(arguments).split(QLatin1Char(' ')) + QStringList{"--json"_q});
        EXPECT_EQ(ran.status, 1) << arguments;
        EXPECT_EQ(ran.out, "[]\n"_q) << arguments;
        EXPECT_EQ(QJsonDocument::fromJson(ran.err.toUtf8()).object().value("code"_q).toString(), "not-found"_q)
            << arguments;
    }
}

TEST_F(CommandLineTest, ManualNamesEveryErrorCode)
{
    QString const manual = Manual();
    for (QString const& word : tandryctl::FailureWords())
        EXPECT_TRUE(manual.contains("\n.B "_q + word + "\n"_q)) << word.toStdString();
}

TEST_F(CommandLineTest, ArgumentThatIsNotUtf8IsWrongUsage)
{
    char const* const arguments[] = {"tandryctl", "where", "caf\xe9"};
    testing::internal::CaptureStderr();
    EXPECT_EQ(commandLine.Run(3, arguments), ExitStatus::WrongUsage);
    std::string const message = testing::internal::GetCapturedStderr();
    EXPECT_NE(message.find("UTF-8"), std::string::npos) << message;
}

TEST_F(CommandLineTest, CommonOptionsMayPrecedeOrFollowTheCommand)
{
    EXPECT_EQ(RunWithoutStore({"init"_q, "--store"_q, StorePath()}).status, 0);
    for (QStringList const& arguments : {QStringList{"--store"_q, StorePath(), "--json"_q, "list"_q, "schedules"_q},
                                         QStringList{"list"_q, "--json"_q, "schedules"_q, "--store"_q, StorePath()},
                                         QStringList{"list"_q, "schedules"_q, "--json"_q, "--store="_q + StorePath()}})
        EXPECT_EQ(RunWithoutStore(arguments).json().size(), 1);
}

TEST_F(CommandLineTest, OutputThatCannotBeWrittenExitsWithThree)
{
    Init();
    for (char const* redirection : {">/dev/full", ">&-"}) {
        for (QStringList const& arguments : {QStringList{"list"_q, "schedules"_q},
                                             QStringList{"list"_q, "schedules"_q, "--json"_q},
                                             QStringList{"--help"_q},
                                             QStringList{"root"_q, "add"_q, "--help"_q},
                                             QStringList{"--version"_q}}) {
            RunResult const ran = RunInShell(QString::fromUtf8(redirection), arguments);
            EXPECT_EQ(ran.status, 3) << redirection << arguments.join(QLatin1Char(' ')).toStdString();
            EXPECT_TRUE(ran.err.contains("cannot be written"_q)) << ran.err.toStdString();
            EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        }
    }
}

TEST_F(CommandLineTest, OutputWhoseLastPartCannotBeWrittenExitsWithThree)
{
    Init();
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 700) "
             "INSERT INTO FileConfiguration (clientPath) SELECT printf('%0100d', i) FROM n;"_q);
    QStringList const arguments{"list"_q, "files"_q};
    int const size = RunSuccessfully(arguments).toUtf8().size();
    constexpr int Block = 512;
    ASSERT_GT(size, 65536 + Block); // more than one write
    QString const limited = ">'%1'; "_q.arg(At("out"));
    RunResult const whole = RunInShell(limited, arguments, "ulimit -f %1;"_q.arg(size / Block + 1));
    EXPECT_EQ(whole.status, 0) << whole.err.toStdString();
    RunResult const cut = RunInShell(limited, arguments, "trap '' XFSZ; ulimit -f %1;"_q.arg((size - 1) / Block));
    EXPECT_EQ(cut.status, 3);
    EXPECT_TRUE(cut.err.contains("File too large"_q)) << cut.err.toStdString();
}

TEST_F(CommandLineTest, OutputThatIsRefusedWhenItIsClosedExitsWithThree)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer must be loaded before anything else";
#endif
    Init();
    QString const preload = "export LD_PRELOAD='" FAILING_CLOSE "';"_q;
    for (QStringList const& arguments : {QStringList{"list"_q, "schedules"_q}, QStringList{"--help"_q}}) {
        RunResult const ran = RunInShell(">'%1'"_q.arg(At("out")), arguments, preload);
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains("quota"_q)) << ran.err.toStdString();
    }
}

TEST_F(CommandLineTest, CommandWithoutStandardStreamsLeavesTheStoreWhole)
{
    EXPECT_EQ(RunInShell("<&- >&- 2>&-"_q, {"init"_q}).status, 3);
    RunSuccessfully({"check"_q});
}
