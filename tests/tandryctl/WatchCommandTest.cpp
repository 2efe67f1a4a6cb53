#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>

#include <csignal>
#include <functional>
#include <map>

#include <sys/syscall.h>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class WatchCommandTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        RawStore(StorePath())
            .Run("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (1, '/r', 0, 1);"
                 "INSERT INTO FileConfiguration (id, clientPath, rootFolderId, syncStatus) VALUES (1, '/r/a', 1, 2)"_q);
    }

    void TearDown() override
    {
        _process.reset(); // ends the program after a failure
        _raw.reset();
        ToolTest::TearDown();
    }

    /// Another program that has the store open.
    RawStore& raw()
    {
        if (!_raw)
            _raw = std::make_unique<RawStore>(StorePath());
        return *_raw;
    }

    void StartWatching(QStringList const& options = {}, QStringList const& environment = {})
    {
        _process = Start(QStringList{"watch"_q} + options, environment);
        WaitFor([&] { return _process->readAllStandardError().contains("Ctrl-C ends it"); });
    }

    /// Waits until the program has printed so many lines, and returns them without their times.
    QStringList Changes(int count)
    {
        QStringList lines = Lines(count);
        for (QString& line : lines)
            line = line.section(QLatin1Char(' '), 1);
        return lines;
    }

    /// Waits until the program has printed so many lines, and returns them.
    QStringList Lines(int count)
    {
        WaitFor([&] {
            _out += _process->readAllStandardOutput();
            return _out.count('\n') >= count;
        });
        QStringList lines = QString::fromUtf8(_out).split(QLatin1Char('\n'));
        EXPECT_EQ(lines.takeLast(), QString());
        EXPECT_EQ(lines.size(), count) << _out.constData();
        _out.clear();
        return lines;
    }

    /// Waits until the program sleeps without a limit.
    void WaitUntilAsleep()
    {
        WaitFor([&] {
            QFile file("/proc/%1/syscall"_q.arg(_process->processId()));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            QList<QByteArray> const words = file.readAll().split(' ');
            return words.size() > 3 && words.at(0).toInt() == SYS_ppoll && words.at(3) == "0x0";
        });
    }

    /// Sends a signal, and returns the rest of the output.
    QString End(int signal = SIGINT)
    {
        EXPECT_EQ(::kill(pid_t(_process->processId()), signal), 0);
        EXPECT_TRUE(_process->waitForFinished(TimeoutMsec));
        EXPECT_EQ(_process->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(_process->exitCode(), 0);
        return QString::fromUtf8(_process->readAllStandardOutput());
    }

    void WaitFor(std::function<bool()> const& condition)
    {
        constexpr int stepMsec = 20;
        int left = TimeoutMsec;
        bool isMet = condition();
        while (!isMet && left > 0 && _process->state() == QProcess::Running) {
            _process->waitForReadyRead(stepMsec);
            left -= stepMsec;
            isMet = condition();
        }
        EXPECT_TRUE(isMet) << _process->readAllStandardError().constData();
    }

    /// Waits until the program has ended by itself, and returns its exit status.
    int WaitForEnd()
    {
        EXPECT_TRUE(_process->waitForFinished(TimeoutMsec));
        return _process->exitCode();
    }

private:
    std::unique_ptr<RawStore> _raw;
    std::unique_ptr<QProcess> _process;
    QByteArray _out;
};

} // namespace

TEST_F(WatchCommandTest, RowsThatComeAndGoAndTheirStatusesArePrinted)
{
    StartWatching();
    raw().Run("BEGIN;"
              "INSERT INTO FileConfiguration (id, clientPath, syncStatus) VALUES (7, '/r/new one', 2);"
              "UPDATE FileConfiguration SET syncStatus = 1 WHERE id = 1;"
              "INSERT INTO ServerConfiguration (id, davUrl) VALUES (3, 'https://a');"
              "COMMIT"_q);
    EXPECT_EQ(Changes(3),
              QStringList({"added server 3 'https://a'"_q,
                           "status file 1 '/r/a': 2 not synced -> 1 syncing"_q,
                           "added file 7 '/r/new one': 2 not synced"_q}));
    raw().Run("DELETE FROM FileConfiguration WHERE id = 1"_q);
    EXPECT_EQ(Changes(1), QStringList{"removed file 1"_q});
    EXPECT_EQ(End(), "2 records added, 1 removed, 1 with another status\n"_q);
}

TEST_F(WatchCommandTest, TimesAreLocalWithTheirZoneOrInUtc)
{
    for (auto const& [options, zone] : std::map<QStringList, QString>{{{}, "+05:45"_q}, {{"--utc"_q}, "Z"_q}}) {
        QDateTime const before = QDateTime::currentDateTimeUtc();
        StartWatching(options, {"TZ=TEST-05:45"_q}); // 05:45 before UTC
        raw().Run("UPDATE FileConfiguration SET syncStatus = syncStatus + 1 WHERE id = 1"_q);
        QString const time = Lines(1).first().section(QLatin1Char(' '), 0, 0);
        EXPECT_TRUE(time.endsWith(zone)) << time.toStdString();
        QDateTime const read = QDateTime::fromString(time, Qt::ISODateWithMs);
        EXPECT_GE(read, before) << time.toStdString();
        EXPECT_LE(read, QDateTime::currentDateTimeUtc()) << time.toStdString();
        End();
    }
}

TEST_F(WatchCommandTest, JsonHasAnObjectForEachChange)
{
    StartWatching({"--json"_q});
    raw().Run("UPDATE FileConfiguration SET syncStatus = 0 WHERE id = 1"_q);
    QJsonObject const change = QJsonDocument::fromJson(Lines(1).first().toUtf8()).object();
    EXPECT_EQ(change.value("change"_q), "status"_q);
    EXPECT_EQ(change.value("kind"_q), "file"_q);
    EXPECT_EQ(change.value("id"_q), 1);
    EXPECT_EQ(change.value("name"_q), "/r/a"_q);
    EXPECT_EQ(change.value("before"_q), 2);
    EXPECT_EQ(change.value("after"_q), 0);
    EXPECT_TRUE(change.value("time"_q).toString().endsWith("Z"_q));
    EXPECT_EQ(QJsonDocument::fromJson(End().toUtf8()).object(),
              QJsonObject({{"change"_q, "end"_q}, {"added"_q, 0}, {"removed"_q, 0}, {"status"_q, 1}}));
}

TEST_F(WatchCommandTest, SleepsAndHoldsNoLockWhileNobodyWrites)
{
    StartWatching();
    raw().Run("UPDATE FileConfiguration SET syncStatus = 0 WHERE id = 1"_q);
    Lines(1);
    WaitUntilAsleep();
    // A reader would keep the log from being emptied.
    std::vector<QVector<QVariant>> const checkpoint = raw().Rows("PRAGMA wal_checkpoint(TRUNCATE)"_q);
    ASSERT_EQ(checkpoint.size(), 1U);
    EXPECT_EQ(checkpoint.front().first().toInt(), 0) << "busy";
    raw().Run("UPDATE FileConfiguration SET syncStatus = 1 WHERE id = 1"_q);
    Lines(1);
    End();
}

TEST_F(WatchCommandTest, StoreThatNobodyHasOpenIsWatched)
{
    StartWatching();
    WaitUntilAsleep();
    RunSuccessfully({"server"_q, "add"_q, "--dav-url"_q, "https://b.example/d"_q});
    EXPECT_EQ(Changes(1), QStringList{"added server 1 'https://b.example/d'"_q});
    End(SIGTERM);
}

TEST_F(WatchCommandTest, ChangesWithinTheIntervalArePrintedTogether)
{
    raw(); // its opening would count as the first change
    StartWatching({"--interval"_q, "3600"_q});
    raw().Run("UPDATE FileConfiguration SET syncStatus = 0 WHERE id = 1"_q);
    Lines(1); // the first one comes at once
    raw().Run("UPDATE FileConfiguration SET syncStatus = 1 WHERE id = 1"_q);
    EXPECT_EQ(End(), "0 records added, 0 removed, 1 with another status\n"_q);
}

TEST_F(WatchCommandTest, StoreThatIsRemovedEndsIt)
{
    raw();
    StartWatching();
    WaitUntilAsleep();
    ASSERT_TRUE(QFile::remove(StorePath()));
    EXPECT_EQ(WaitForEnd(), 3);
}

TEST_F(WatchCommandTest, StoreThatWasNotClosedIsRefused)
{
    {
        RawStore killed(StorePath(), RawStore::KeepLog);
        killed.Run("UPDATE FileConfiguration SET syncStatus = 0"_q);
    }
    QFile::remove(StorePath() + "-shm"_q);
    RunResult const ran = Run({"watch"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("tandryctl init"_q)) << ran.err.toStdString();
}

TEST_F(WatchCommandTest, IntervalIsAWholeNumberFromOneUp)
{
    EXPECT_EQ(Run({"watch"_q, "--interval"_q, "0"_q}).status, 2);
}
