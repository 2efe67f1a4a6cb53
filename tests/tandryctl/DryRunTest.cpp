#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"
#include "tools/tandryctl/CommandLine.h"
#include "tools/tandryctl/Program.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class DryRunTest : public ToolTest
{
protected:
    /// Returns the contents of all files below the test's folder by path.
    QMap<QString, QByteArray> Everything() const
    {
        QMap<QString, QByteArray> files;
        QDirIterator file(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (file.hasNext()) {
            QString const path = file.next();
            files.insert(path, tandry::test::ReadFile(path));
        }
        return files;
    }

    /// Runs the command on a dry run, which must change no file, and then in earnest; expects the same output.
    void ExpectSameOutput(QStringList const& command)
    {
        SCOPED_TRACE(command.join(QLatin1Char(' ')).toStdString());
        QMap<QString, QByteArray> const before = Everything();
        RunResult const dry = Run(command + QStringList{"--dry-run"_q});
        EXPECT_TRUE(Everything() == before) << "a file has changed";
        EXPECT_EQ(dry.status, 0);
        EXPECT_EQ(dry.err, "tandryctl: this was a dry run; nothing was changed\n"_q);

        RunResult const real = Run(command + QStringList{"--yes"_q});
        EXPECT_EQ(real.status, 0) << real.err.toStdString();
        QRegularExpression const varying("elapsed: .*|copied the store to .*\n"_q);
        EXPECT_EQ(QString(dry.out).remove(varying), QString(real.out).remove(varying));
        EXPECT_FALSE(real.out.isEmpty());
        if (command.first() != "init"_q) {
            EXPECT_FALSE(Everything() == before) << "the command changes nothing";
        }
    }
};

} // namespace

TEST_F(DryRunTest, PrintsWhatEachCommandPrintsAndChangesNothing)
{
    MakeDirectory("docs/a/b"_q);
    MakeDirectory("more"_q);
    for (char const* name : {"docs/1", "docs/2", "docs/3", "docs/a/b/4", "made", "made too"})
        WriteFile(QString::fromUtf8(name));
    WriteFile("secret"_q, "s\n");
    QVector<QStringList> const commands{
        {"init"_q},
        {"server"_q, "add"_q, "--dav-url"_q, "https://a.example"_q},
        {"server"_q, "update"_q, "1"_q, "--alias"_q, "A"_q},
        {"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q},
        {"account"_q, "update"_q, "1"_q, "--domain"_q, "d"_q},
        {"product"_q,
         "add"_q,
         "--name"_q,
         "n"_q,
         "--key"_q,
         "k"_q,
         "--server"_q,
         "1"_q,
         "--secret-file"_q,
         At("secret")},
        {"product"_q, "update"_q, "1"_q, "--name"_q, "m"_q},
        {"root"_q, "add"_q, At("docs"), "--server-path"_q, "/d"_q, "--account"_q, "1"_q},
        {"scan"_q},
        {"root"_q, "add"_q, At("more"), "--server-path"_q, "/m"_q},
        {"folder"_q, "add"_q, At("docs/new/deep")},
        {"schedule"_q, "add"_q, "--folder"_q, "2"_q},
        {"schedule"_q, "update"_q, "2"_q, "--interval"_q, "5"_q},
        {"file"_q, "remove"_q, "1"_q},
        {"scan"_q, "--prune"_q},
        {"folder"_q, "remove"_q, "2"_q, "--recursive"_q},
        {"schedule"_q, "remove"_q, "2"_q},
        {"product"_q, "remove"_q, "1"_q},
        {"account"_q, "remove"_q, "1"_q},
        {"server"_q, "remove"_q, "1"_q},
        {"root"_q, "remove"_q, "1"_q},
        {"doctor"_q, "--fix"_q, "no-default-schedule"_q},
    };
    QSet<QString> covered;
    Init();
    for (QStringList const& command : commands) {
        if (command == QStringList{"file"_q, "remove"_q, "1"_q})
            RawStore(StorePath())
                .Run("INSERT INTO GeneratedFileConfiguration (clientPath, parentFileId, fileType, rootFolderId) "
                     "VALUES ('%1', 1, 1, 1), ('%2', 2, 1, 1);"_q.arg(At("made"), At("made too")));
        if (command == QStringList{"scan"_q, "--prune"_q})
            QFile::remove(At("docs/2"));
        if (command.first() == "doctor"_q)
            RawStore(StorePath()).Run("DELETE FROM Schedules"_q);
        ExpectSameOutput(command);
        covered.insert(command.first());
        covered.insert(command.mid(0, 2).join(QLatin1Char(' ')));
    }
    EXPECT_FALSE(QFile::exists(At("made")));
    EXPECT_FALSE(QFile::exists(At("made too")));

    tandryctl::CommandLine commandLine;
    tandryctl::DeclareCommands(commandLine);
    for (QString option : commandLine.Options()) {
        if (option.endsWith(" --dry-run"_q)) {
            option.chop(int(qstrlen(" --dry-run")));
            EXPECT_TRUE(covered.contains(option)) << "no case for " << option.toStdString();
        }
    }
}

TEST_F(DryRunTest, CreatesNoStore)
{
    RunResult const dry = Run({"init"_q, "--dry-run"_q});
    EXPECT_EQ(dry.status, 0);
    EXPECT_EQ(dry.out, "made the store '"_q + StorePath() + "'\n"_q);
    EXPECT_TRUE(Everything().isEmpty());
    EXPECT_EQ(RunWithoutStore({"init"_q, "--dry-run"_q}).status, 0);
    EXPECT_FALSE(QFile::exists(At(".local")));
    EXPECT_EQ(Run({"server"_q, "add"_q, "--dav-url"_q, "u"_q, "--dry-run"_q}).status, 3);
}

TEST_F(DryRunTest, FailsAsTheCommandDoes)
{
    Init();
    RunResult const dry = Run({"server"_q, "remove"_q, "7"_q, "--dry-run"_q});
    RunResult const real = Run({"server"_q, "remove"_q, "7"_q, "--yes"_q});
    EXPECT_EQ(dry.status, real.status);
    EXPECT_EQ(dry.err, real.err);
}

TEST_F(DryRunTest, WaitsForNobodyWhoWritesAndKeepsNobodyWaiting)
{
    Init();
    RawStore store(StorePath());
    store.Run("BEGIN IMMEDIATE"_q);
    EXPECT_EQ(Run({"server"_q, "add"_q, "--dav-url"_q, "u"_q, "--dry-run"_q}).status, 0);
    store.Run("COMMIT"_q);
}

TEST_F(DryRunTest, UpgradesNoOlderStore)
{
    tandry::test::ReleasedStore{0, sync::database::JournalMode::WriteAheadLog}.CopyTo(StorePath());
    QMap<QString, QByteArray> const before = Everything();
    RunResult const dry = Run({"server"_q, "remove"_q, "1"_q, "--dry-run"_q});
    EXPECT_EQ(dry.status, 0) << dry.err.toStdString();
    EXPECT_TRUE(Everything() == before);
    EXPECT_EQ(dry.out, Run({"server"_q, "remove"_q, "1"_q, "--yes"_q}).out);
}
