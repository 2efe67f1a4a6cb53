// Commands on a store that another program has locked: this one.

#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFile>
#include <QJsonDocument>

#include <unistd.h>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class LockedStoreTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        MakeDirectory("docs"_q);
    }

    void UseJournal() { RawStore(StorePath()).Run("PRAGMA journal_mode = DELETE"_q); }

    QStringList AddDocs() const { return {"root"_q, "add"_q, At("docs"), "--server-path"_q, "/s"_q}; }

    /// Expects that the command fails at once and names this process.
    void ExpectThisProcessToBeNamed(QStringList const& command)
    {
        RunResult const ran = Run(command + QStringList{"--wait"_q, "0"_q});
        EXPECT_EQ(ran.status, 3);
        EXPECT_TRUE(ran.err.contains(": %1 holds the lock; "_q.arg(ThisProcess()))) << ran.err.toStdString();
        EXPECT_TRUE(ran.err.contains("--wait SECONDS"_q)) << ran.err.toStdString();
    }

    static QString ThisProcess()
    {
        QFile name("/proc/self/comm"_q);
        EXPECT_TRUE(name.open(QIODevice::ReadOnly));
        return "process %1 ('%2')"_q.arg(::getpid()).arg(QString::fromUtf8(name.readAll().trimmed()));
    }
};

} // namespace

TEST_F(LockedStoreTest, WriterBesideALogIsNamed)
{
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    ExpectThisProcessToBeNamed(AddDocs());
    other.Run("COMMIT"_q);
    RunSuccessfully(AddDocs() + QStringList{"--wait"_q, "0"_q});
}

TEST_F(LockedStoreTest, WriterWithAJournalIsNamed)
{
    UseJournal();
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    ExpectThisProcessToBeNamed(AddDocs());
}

TEST_F(LockedStoreTest, ProcessThatKeepsReadersOutIsNamed)
{
    UseJournal();
    RawStore other(StorePath());
    other.Run("BEGIN EXCLUSIVE"_q);
    ExpectThisProcessToBeNamed({"list"_q, "schedules"_q});
}

TEST_F(LockedStoreTest, ReaderThatHoldsUpTheCommitOfAJournalIsNamed)
{
    UseJournal();
    RawStore other(StorePath());
    other.Run("BEGIN; SELECT count(*) FROM Schedules"_q);
    ExpectThisProcessToBeNamed(AddDocs());
}

TEST_F(LockedStoreTest, HolderIsPartOfTheMessageInJson)
{
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    RunResult const ran = Run(AddDocs() + QStringList{"--wait"_q, "0"_q, "--json"_q});
    QJsonObject const error = QJsonDocument::fromJson(ran.err.toUtf8()).object();
    EXPECT_EQ(error.value("code"_q).toString(), "store-locked"_q) << ran.err.toStdString();
    EXPECT_TRUE(error.value("message"_q).toString().contains(ThisProcess())) << ran.err.toStdString();
}

TEST_F(LockedStoreTest, IdleConnectionOfAnotherProgramLocksNothing)
{
    RawStore other(StorePath());
    other.Run("SELECT count(*) FROM Schedules"_q);
    RunSuccessfully(AddDocs() + QStringList{"--wait"_q, "0"_q});
}

TEST_F(LockedStoreTest, CommandWaitsAsLongAsItIsTold)
{
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    std::unique_ptr<QProcess> const patient = Start(AddDocs() + QStringList{"--wait"_q, "100"_q});
    // One that began later, and waits as long as the library does, has given up.
    EXPECT_EQ(Run(AddDocs()).status, 3);
    other.Run("COMMIT"_q);
    ASSERT_TRUE(patient->waitForFinished(TimeoutMsec));
    EXPECT_EQ(patient->exitCode(), 0) << patient->readAllStandardError().constData();
}

TEST_F(LockedStoreTest, OtherStoreOfADiffIsWaitedForAsLongAsTold)
{
    ASSERT_TRUE(QFile::copy(StorePath(), At("other.db")));
    QStringList const diff{"diff"_q, "--with"_q, At("other.db")};
    RawStore other(At("other.db"));
    other.Run("PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE"_q);
    ExpectThisProcessToBeNamed(diff);
    std::unique_ptr<QProcess> const patient = Start(diff + QStringList{"--wait"_q, "100"_q});
    EXPECT_EQ(Run(diff).status, 3);
    other.Run("COMMIT"_q);
    ASSERT_TRUE(patient->waitForFinished(TimeoutMsec));
    EXPECT_EQ(patient->exitCode(), 0) << patient->readAllStandardError().constData();
}

TEST_F(LockedStoreTest, WaitTakesOnlyCountingNumbers)
{
    for (char const* seconds : {"-1", "1.5", "x", ""})
        EXPECT_EQ(Run({"list"_q, "schedules"_q, "--wait="_q + QString::fromUtf8(seconds)}).status, 2) << seconds;
    RunSuccessfully({"list"_q, "schedules"_q, "--wait"_q, "2147483647"_q});
}
