#include "database/sqlite/LockQueue.h"

#include "support/FaultyFiles.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <utility>

namespace {

using namespace tandry::test;
using sync::database::LockQueue;
using namespace std::chrono_literals;
using Microseconds = std::chrono::microseconds;

/// A time that passes when it is told to, and when somebody sleeps. One at a time.
class FakeTime
{
public:
    FakeTime()
    {
        _now = LockQueue::Clock::time_point(1h);
        _slept = {};
        whileAsleep = [] {};
    }

    static LockQueue::Time Functions()
    {
        LockQueue::Time time;
        time.now = [] { return _now; };
        time.sleep = [](Microseconds duration) {
            _now += duration;
            _slept += duration;
            whileAsleep();
        };
        return time;
    }
    static void Pass(Microseconds duration) { _now += duration; }
    /// Since the last call.
    static Microseconds Slept() { return std::exchange(_slept, Microseconds()); }

    static inline std::function<void()> whileAsleep;

private:
    static inline LockQueue::Clock::time_point _now;
    static inline Microseconds _slept;
};

/// A connection of the engine with a queue that lives by the fake time.
class Writer
{
public:
    explicit Writer(QString const& path, int timeoutMsec = 100)
        : _queue(timeoutMsec, FakeTime::Functions())
    {
        sqlite3_open_v2(path.toUtf8().constData(), &_handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        _queue.Attach(_handle);
        Run("PRAGMA synchronous = OFF"); // here nothing needs to be durable
    }
    ~Writer() { sqlite3_close(_handle); }

    bool Run(char const* statements)
    {
        return sqlite3_exec(_handle, statements, nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    bool Begin()
    {
        _queue.GiveWay();
        if (!Run("BEGIN IMMEDIATE"))
            return false;
        _queue.Begun(_handle);
        return Run("INSERT INTO rows VALUES (1)");
    }
    bool Commit()
    {
        bool const committed = Run("COMMIT");
        _queue.Committed(_handle);
        return committed;
    }
    void TakeBack()
    {
        Run("ROLLBACK");
        _queue.TakenBack();
    }
    /// A write that takes so long.
    bool Write(Microseconds duration = 200us)
    {
        bool const begun = Begin();
        FakeTime::Pass(duration);
        return begun && Commit();
    }

private:
    Q_DISABLE_COPY_MOVE(Writer)

    LockQueue _queue;
    sqlite3* _handle = nullptr;
};

class LockQueueTurns : public testing::Test
{
protected:
    LockQueueTurns() { writer.Run("PRAGMA journal_mode = WAL; CREATE TABLE rows (row)"); }

    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("file.db"));
    FakeTime time;
    Writer writer{path};
    Writer other{path};
};

/// How long the writer slept before it wrote for so long without a break of its own.
Microseconds SleptInWriting(Writer& writer, Microseconds duration)
{
    FakeTime::Slept();
    Microseconds slept{};
    for (Microseconds passed{}; passed < duration; passed += 200us) {
        EXPECT_TRUE(writer.Write());
        slept += FakeTime::Slept();
    }
    return slept;
}

TEST_F(LockQueueTurns, WriterAloneDoesNotPauseBeforeItsTurnIsVeryLong)
{
    EXPECT_EQ(SleptInWriting(writer, LockQueue::LongestTurn), 0us);
    EXPECT_EQ(SleptInWriting(writer, LockQueue::LongestTurn), LockQueue::Pause);
}

TEST_F(LockQueueTurns, WriterWhoseOwnBreaksAreLongEnoughNeverPauses)
{
    for (int write = 0; write < 100; ++write) {
        ASSERT_TRUE(writer.Write(10ms));
        FakeTime::Pass(LockQueue::Pause);
    }
    EXPECT_EQ(FakeTime::Slept(), 0us);
}

TEST_F(LockQueueTurns, CommitOfAnotherFromBeforeABreakIsNoCrowd)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    FakeTime::Pass(LockQueue::Pause);
    EXPECT_EQ(SleptInWriting(writer, 5 * LockQueue::TurnInCrowd), 0us);
}

TEST_F(LockQueueTurns, WriterThatSeesCommitsOfAnotherBetweenItsOwnPausesOnceInATurn)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    EXPECT_EQ(SleptInWriting(writer, LockQueue::TurnInCrowd - 1ms), 0us);
    EXPECT_EQ(SleptInWriting(writer, LockQueue::TurnInCrowd), LockQueue::Pause);
    EXPECT_EQ(SleptInWriting(writer, LockQueue::TurnInCrowd), LockQueue::Pause);
}

TEST_F(LockQueueTurns, WriterThatIsAloneAgainForgetsTheCrowd)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    SleptInWriting(writer, LockQueue::CrowdStays + LockQueue::TurnInCrowd);
    EXPECT_EQ(SleptInWriting(writer, 10 * LockQueue::TurnInCrowd), 0us);
}

TEST_F(LockQueueTurns, OtherThatWritesDuringEachPauseKeepsTheTurnsShort)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    int writes = 0;
    FakeTime::whileAsleep = [&] { writes += other.Run("INSERT INTO rows VALUES (2)") ? 1 : 0; };
    Microseconds const slept = SleptInWriting(writer, 1s);
    EXPECT_GE(writes, 1s / (LockQueue::TurnInCrowd + 200us));
    EXPECT_EQ(slept, writes * LockQueue::Pause);
}

TEST_F(LockQueueTurns, WriterThatHadToWaitTakesItForACrowd)
{
    ASSERT_TRUE(other.Begin());
    bool ended = false;
    FakeTime::whileAsleep = [&] { ended = ended || other.Commit(); };
    EXPECT_TRUE(writer.Write());
    EXPECT_GT(FakeTime::Slept(), 0us);
    EXPECT_EQ(SleptInWriting(writer, LockQueue::TurnInCrowd + 1ms), LockQueue::Pause);
}

TEST_F(LockQueueTurns, WaitingEndsWithTheTimeout)
{
    ASSERT_TRUE(other.Begin());
    EXPECT_FALSE(writer.Write());
    Microseconds const slept = FakeTime::Slept();
    EXPECT_GE(slept, 100ms);
    EXPECT_LE(slept, 102ms);
}

TEST_F(LockQueueTurns, WriteThatWasTakenBackIsNoCommitOfAnother)
{
    FaultyFiles files;
    Writer alone(folder.filePath(QStringLiteral("journal.db")));
    ASSERT_TRUE(alone.Run("CREATE TABLE rows (row)"));
    ASSERT_TRUE(alone.Write());
    ASSERT_TRUE(alone.Begin());
    files.Fail(1, SQLITE_IOERR_DELETE, {FileOperation::Delete}); // after which the engine reads the file anew
    EXPECT_FALSE(alone.Run("COMMIT"));
    EXPECT_TRUE(files.Recover());
    alone.TakeBack();
    EXPECT_EQ(SleptInWriting(alone, 5 * LockQueue::TurnInCrowd), 0us);
}

TEST_F(LockQueueTurns, FirstWriteOfAConnectionIsNoCommitOfAnother)
{
    EXPECT_TRUE(other.Write());
    Writer fresh(path);
    EXPECT_EQ(SleptInWriting(fresh, 5 * LockQueue::TurnInCrowd), 0us);
}

} // namespace
