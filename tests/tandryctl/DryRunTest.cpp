#include "ToolFixture.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"
#include "tools/tandryctl/CommandLine.h"
#include "tools/tandryctl/Program.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

QString const DryRunNote = "tandryctl: this was a dry run; nothing was changed\n"_q;

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
        EXPECT_EQ(dry.err, DryRunNote);

        RunResult const real = Run(command + QStringList{"--yes"_q});
        EXPECT_EQ(real.status, 0) << real.err.toStdString();
        QRegularExpression const varying("elapsed: .*|copied the store to .*\n|T\\d\\d-\\d\\d-\\d\\dZ"_q);
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
        {"root"_q, "move"_q, "1"_q, At("moved")},
        {"root"_q, "add"_q, At("more"), "--server-path"_q, "/m"_q},
        {"folder"_q, "add"_q, At("moved/new/deep")},
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
        {"compact"_q},
        {"doctor"_q, "--fix"_q, "no-default-schedule"_q},
        {"backup"_q, At("copy.db")},
        {"backup"_q, "--keep"_q, "1"_q, At("more")},
        {"restore"_q, At("copy.db")},
        {"recover"_q, At("copy.db"), "--to"_q, At("recovered.db")},
        {"copy"_q, "--from"_q, StorePath(), "--to"_q, At("copied.db")},
        {"import"_q, At("export.jsonl")},
    };
    QSet<QString> covered;
    Init();
    for (QStringList const& command : commands) {
        if (command == QStringList{"file"_q, "remove"_q, "1"_q})
            RawStore(StorePath())
                .Run("INSERT INTO GeneratedFileConfiguration (clientPath, parentFileId, fileType, rootFolderId) "
                     "VALUES ('%1', 1, 1, 1), ('%2', 2, 1, 1);"_q.arg(At("made"), At("made too")));
        if (command == QStringList{"scan"_q, "--prune"_q})
            QFile::remove(At("moved/2"));
        if (command.contains("move"_q)) {
            ASSERT_TRUE(QDir().rename(At("docs"), At("moved")));
        }
        if (command.contains("--keep"_q))
            RunSuccessfully({"backup"_q, At("more/store-2002-02-02T00-00-00Z.db")});
        if (command.first() == "doctor"_q)
            RawStore(StorePath()).Run("DELETE FROM Schedules"_q);
        if (command.first() == "import"_q) {
            RunSuccessfully({"export"_q, At("export.jsonl")});
            RawStore(StorePath())
                .Run("DELETE FROM FolderConfiguration; DELETE FROM FileConfiguration;"
                     "DELETE FROM GeneratedFileConfiguration;"_q);
        }
        ExpectSameOutput(command);
        covered.insert(command.first());
        covered.insert(command.mid(0, 2).join(QLatin1Char(' ')));
    }
    EXPECT_FALSE(QFile::exists(At("made")));
    EXPECT_FALSE(QFile::exists(At("made too")));
    EXPECT_FALSE(QFile::exists(At("more/store-2002-02-02T00-00-00Z.db")));

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

TEST_F(DryRunTest, OfACopyFailsWhereTheCopyDoes)
{
    Init();
    RunSuccessfully({"backup"_q, At("copy.db")});
    WriteFile("taken"_q, "mine");
    WriteFile("letter"_q, "dear reader");
    WriteFile("left.db-journal"_q, "left");
    for (QStringList const& command : {QStringList{"backup"_q, At("taken")},
                                       QStringList{"backup"_q, At("missing/copy.db")},
                                       QStringList{"backup"_q, At("left.db")},
                                       QStringList{"backup"_q, "--keep"_q, "1"_q, At("missing")},
                                       QStringList{"restore"_q, At("letter")},
                                       QStringList{"restore"_q, At("missing.db")},
                                       QStringList{"restore"_q, StorePath()},
                                       QStringList{"recover"_q, StorePath(), "--to"_q, At("taken")},
                                       QStringList{"recover"_q, StorePath(), "--to"_q, At("left.db")},
                                       QStringList{"recover"_q, At("letter"), "--to"_q, At("new.db")}}) {
        SCOPED_TRACE(command.join(QLatin1Char(' ')).toStdString());
        RunResult const real = Run(command);
        EXPECT_NE(real.status, 0);
        RunResult const dry = Run(command + QStringList{"--dry-run"_q});
        EXPECT_EQ(dry.status, real.status);
        EXPECT_EQ(dry.err, real.err);
    }
}

TEST_F(DryRunTest, OfARestoreFailsIfTheBackupIsDamagedOrTheStoreOpen)
{
    Init();
    RunSuccessfully({"backup"_q, At("copy.db")});
    QStringList const restore{"restore"_q, At("copy.db"), "--dry-run"_q};
    {
        auto const store = sync::database::SqliteDatabaseFactory::Open(StorePath());
        EXPECT_EQ(Run(restore).status, 3);
    }
    EXPECT_EQ(Run(restore).status, 0);
    RawStore(At("copy.db")).Run("DROP INDEX FileConfiguration_root"_q);
    EXPECT_EQ(Run(restore).status, 3);
    EXPECT_FALSE(QFile::exists(At("store.db.replaced")));
}

TEST_F(DryRunTest, OfARestoreOrRecoveryLooksAtFilesThatWereNotClosed)
{
    Init();
    RawStore(StorePath(), RawStore::KeepLog).Run("INSERT INTO ServerConfiguration (alias) VALUES ('a')"_q);
    for (char const* suffix : {"", "-wal"})
        ASSERT_TRUE(QFile::copy(StorePath() + QLatin1String(suffix), At("left.db"_q + QLatin1String(suffix))));
    QMap<QString, QByteArray> const before = Everything();
    RunResult const restored = Run({"restore"_q, At("left.db"), "--dry-run"_q});
    EXPECT_EQ(restored.status, 0) << restored.err.toStdString();
    EXPECT_TRUE(restored.out.contains(At("store.db.replaced"))) << restored.out.toStdString();
    RunResult const recovered = Run({"recover"_q, At("left.db"), "--to"_q, At("new.db"), "--dry-run"_q, "--json"_q});
    EXPECT_EQ(recovered.json().first().toObject().value("recovered"_q), QJsonValue(1));
    EXPECT_EQ(recovered.err, DryRunNote);
    EXPECT_TRUE(Everything() == before);
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
