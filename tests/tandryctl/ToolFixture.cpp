#include "ToolFixture.h"

#include "Screen.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>

#include <filesystem>
#include <optional>
#include <vector>

#include <linux/capability.h>
#include <sys/prctl.h>

void PrintTo(QJsonObject const& object, std::ostream* out)
{
    *out << QJsonDocument(object).toJson(QJsonDocument::Compact).constData();
}

namespace tandryctl::test {

namespace {

QString const Program = QStringLiteral(TANDRYCTL_PROGRAM);

RunResult
RunProcess(QProcess& process, QStringList const& arguments, QByteArray const& input, QString const& program = Program)
{
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    RunResult ran;
    EXPECT_TRUE(process.waitForFinished(TimeoutMsec)) << process.errorString().toStdString();
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    ran.status = process.exitCode();
    ran.out = QString::fromUtf8(process.readAllStandardOutput());
    ran.err = QString::fromUtf8(process.readAllStandardError());
    return ran;
}

} // namespace

QProcessEnvironment HomeEnvironment(QString const& home, QStringList const& more)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (char const* name : {"TANDRY_STORE", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"})
        environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("HOME"), home);
    for (QString const& variable : more)
        environment.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
    return environment;
}

QJsonArray RunResult::json() const
{
    QJsonDocument const document = QJsonDocument::fromJson(out.toUtf8());
    EXPECT_TRUE(document.isArray()) << out.toStdString() << err.toStdString();
    return document.array();
}

void ToolTest::TearDown()
{
    std::filesystem::remove_all(folder.path().toStdString());
}

QStringList ToolTest::_OnStore(QStringList const& arguments) const
{
    return QStringList{"--store"_q, StorePath()} + arguments;
}

RunResult ToolTest::Run(QStringList const& arguments, QByteArray const& input)
{
    return RunWithoutStore(_OnStore(arguments), {}, input);
}

QString ToolTest::RunSuccessfully(QStringList const& arguments)
{
    RunResult const ran = Run(arguments);
    EXPECT_EQ(ran.status, 0) << arguments.join(QLatin1Char(' ')).toStdString() << ": " << ran.err.toStdString();
    EXPECT_EQ(ran.err, QString());
    return ran.out;
}

QJsonArray ToolTest::Json(QStringList const& arguments)
{
    RunResult const ran = Run(arguments + QStringList{"--json"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    return ran.json();
}

QJsonObject ToolTest::JsonObject(QStringList const& arguments)
{
    QJsonArray const array = Json(arguments);
    EXPECT_EQ(array.size(), 1);
    return array.first().toObject();
}

RunResult
ToolTest::RunWithoutStore(QStringList const& arguments, QStringList const& environment, QByteArray const& input)
{
    QProcess process;
    process.setProcessEnvironment(HomeEnvironment(folder.path(), environment));
    process.setWorkingDirectory(folder.path());
    return RunProcess(process, arguments, input);
}

std::unique_ptr<QProcess> ToolTest::Start(QStringList const& arguments, QStringList const& environment)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(HomeEnvironment(folder.path(), environment));
    process->start(Program, _OnStore(arguments));
    EXPECT_TRUE(process->waitForStarted(TimeoutMsec)) << process->errorString().toStdString();
    return process;
}

RunResult ToolTest::RunInShell(QString const& redirection, QStringList const& arguments, QString const& before)
{
    QProcess process;
    process.setProcessEnvironment(HomeEnvironment(folder.path()));
    QString const script = before + "exec \"$0\" \"$@\" "_q + redirection;
    return RunProcess(process, QStringList{"-c"_q, script, Program} + _OnStore(arguments), {}, "sh"_q);
}

std::optional<RunResult> ToolTest::RunWithoutPrivileges(QStringList const& arguments)
{
    if (::geteuid() != 0)
        return Run(arguments);
    if (::prctl(PR_CAPBSET_READ, CAP_SETPCAP) != 1)
        return std::nullopt;
    QProcess process;
    process.setProcessEnvironment(HomeEnvironment(folder.path()));
    // Without these capabilities, permissions apply to root as to the owner of a file.
    QStringList const without{"--bounding-set=-dac_override,-dac_read_search"_q, Program};
    return RunProcess(process, without + _OnStore(arguments), {}, "setpriv"_q);
}

RunResult
ToolTest::RunOnTerminal(QStringList const& arguments, QByteArray const& typed, std::vector<Reaction> const& reactions)
{
    auto reaction = reactions.begin();
    bool isFirst = true;
    RunResult const ran = RunOnScreen(_OnStore(arguments), {0, {"NO_COLOR=1"_q}}, [&](QByteArray const& shown, int) {
        QByteArray keys = isFirst ? typed : QByteArray();
        isFirst = false;
        while (reaction != reactions.end() && shown.contains(reaction->text)) {
            keys += reaction->act();
            ++reaction;
        }
        return keys;
    });
    EXPECT_TRUE(reaction == reactions.end()) << ran.out.toStdString();
    return ran;
}

std::optional<RunResult> ToolTest::RunWithMounts(char const* script)
{
    QStringList unshare{"--mount"_q, "--propagation"_q, "private"_q};
    if (::geteuid() != 0)
        unshare.prepend("--map-root-user"_q);
    auto const run = [&](QString const& commands) {
        QProcess process;
        process.setProcessEnvironment(
            HomeEnvironment(folder.path(), {"PROGRAM="_q + Program, "STORE="_q + StorePath()}));
        process.setWorkingDirectory(folder.path());
        return RunProcess(process, unshare + QStringList{"bash"_q, "-ec"_q, commands}, {}, "unshare"_q);
    };
    if (run("mount -t tmpfs tmpfs /mnt"_q).status != 0)
        return std::nullopt;
    return run("tandryctl() { \"$PROGRAM\" --store \"$STORE\" \"$@\"; }\n"_q + QString::fromUtf8(script));
}

void ToolTest::MakeDirectory(QString const& name) const
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(name));
}

void ToolTest::WriteFile(QString const& name, QByteArray const& content) const
{
    QFile file(At(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

void ToolTest::Link(char const* target, QString const& name) const
{
    ASSERT_EQ(::symlink(target, At(name).toUtf8().constData()), 0);
}

void ToolTest::SpoilIndex(char const* name) const
{
    qint64 offset = 0;
    {
        tandry::test::RawStore raw(StorePath());
        offset =
            raw.Value("SELECT (rootpage - 1) * page_size FROM sqlite_schema, pragma_page_size WHERE name = '%1'"_q.arg(
                          QLatin1String(name)))
                .toLongLong();
    }
    ASSERT_GT(offset, 0);
    tandry::test::Overwrite(StorePath(), offset, QByteArray(8, '\x5a'));
}

void ToolTest::UseUpIds(char const* table, int rowsLeft) const
{
    tandry::test::RawStore raw(StorePath());
    raw.Run("DELETE FROM sqlite_sequence WHERE name = '%1'; INSERT INTO sqlite_sequence VALUES ('%1', %2)"_q
                .arg(QLatin1String(table))
                .arg(2147483647 - rowsLeft));
}

void ToolTest::Init()
{
    RunSuccessfully({"init"_q});
}

void ToolTest::AddRoot(QString const& name, QString const& serverPath)
{
    MakeDirectory(name);
    RunSuccessfully({"root"_q, "add"_q, At(name), "--server-path"_q, serverPath});
}

} // namespace tandryctl::test
