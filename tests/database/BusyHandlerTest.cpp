#include "database/sqlite/BusyHandler.h"

#include "support/FaultyFiles.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <utility>

namespace {

using namespace tandry::test;
using sync::database::BusyHandler;
using namespace std::chrono_literals;
using Microseconds = std::chrono::microseconds;

/// A clock that advances when told to and when somebody sleeps. One object at a time.
class FakeTime
{
public:
    FakeTime()
    {
        _now = BusyHandler::Clock::time_point(1h);
        _slept = {};
        whileAsleep = [] {};
    }

    static BusyHandler::Time Functions()
    {
        BusyHandler::Time time;
        time.now = [] { return _now; };
        time.sleep = [](Microseconds duration) {
            _now += duration;
            _slept += duration;
            whileAsleep();
        };
        return time;
    }
    static void Pass(Microseconds duration) { _now += duration; }
    /// Returns the time slept since the last call.
    static Microseconds Slept() { return std::exchange(_slept, Microseconds()); }

    static inline std::function<void()> whileAsleep;

private:
    static inline BusyHandler::Clock::time_point _now;
    static inline Microseconds _slept;
};

/// A SQLite connection with a busy handler that uses the fake clock.
class Writer
{
public:
    explicit Writer(QString const& path, int timeoutMsec = 100)
        : _busyHandler(timeoutMsec, FakeTime::Functions())
    {
        sqlite3_open_v2(path.toUtf8().constData(), &_handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        _busyHandler.Install(_handle);
        Run("PRAGMA synchronous = OFF"); // nothing needs to be durable here
    }
    ~Writer() { sqlite3_close(_handle); }

    bool Run(char const* statements)
    {
        return sqlite3_exec(_handle, statements, nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    bool Begin()
    {
        _busyHandler.BeforeTransaction();
        if (!Run("BEGIN IMMEDIATE"))
            return false;
        _busyHandler.TransactionBegan(_handle);
        return Run("INSERT INTO rows VALUES (1)");
    }
    bool Commit()
    {
        bool const committed = Run("COMMIT");
        _busyHandler.TransactionCommitted(_handle);
        return committed;
    }
    void RollBack()
    {
        Run("ROLLBACK");
        _busyHandler.TransactionRolledBack();
    }
    /// Writes in a transaction that takes this long.
    bool Write(Microseconds duration = 200us)
    {
        bool const begun = Begin();
        FakeTime::Pass(duration);
        return begun && Commit();
    }

private:
    Q_DISABLE_COPY_MOVE(Writer)

    BusyHandler _busyHandler;
    sqlite3* _handle = nullptr;
};

class BusyHandlerTurns : public testing::Test
{
protected:
    BusyHandlerTurns() { writer.Run("PRAGMA journal_mode = WAL; CREATE TABLE rows (row)"); }

    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("file.db"));
    FakeTime time;
    Writer writer{path};
    Writer other{path};
};

/// Has the writer write this long without a break of its own; returns how long it slept.
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

TEST_F(BusyHandlerTurns, WriterAloneDoesNotPauseBeforeItsTurnIsVeryLong)
{
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::LongestTurn), 0us);
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::LongestTurn), BusyHandler::Pause);
}

TEST_F(BusyHandlerTurns, WriterWhoseOwnBreaksAreLongEnoughNeverPauses)
{
    for (int write = 0; write < 100; ++write) {
        ASSERT_TRUE(writer.Write(10ms));
        FakeTime::Pass(BusyHandler::Pause);
    }
    EXPECT_EQ(FakeTime::Slept(), 0us);
}

TEST_F(BusyHandlerTurns, CommitOfAnotherFromBeforeABreakIsNoContention)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    FakeTime::Pass(BusyHandler::Pause);
    EXPECT_EQ(SleptInWriting(writer, 5 * BusyHandler::ContendedTurn), 0us);
}

TEST_F(BusyHandlerTurns, WriterThatSeesCommitsOfAnotherBetweenItsOwnPausesOnceInATurn)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::ContendedTurn - 1ms), 0us);
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::ContendedTurn), BusyHandler::Pause);
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::ContendedTurn), BusyHandler::Pause);
}

TEST_F(BusyHandlerTurns, WriterThatIsAloneAgainForgetsTheContention)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    SleptInWriting(writer, BusyHandler::ContentionWindow + BusyHandler::ContendedTurn);
    EXPECT_EQ(SleptInWriting(writer, 10 * BusyHandler::ContendedTurn), 0us);
}

TEST_F(BusyHandlerTurns, OtherThatWritesDuringEachPauseKeepsTheTurnsShort)
{
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(other.Write());
    int writes = 0;
    FakeTime::whileAsleep = [&] { writes += other.Run("INSERT INTO rows VALUES (2)") ? 1 : 0; };
    Microseconds const slept = SleptInWriting(writer, 1s);
    EXPECT_GE(writes, 1s / (BusyHandler::ContendedTurn + 200us));
    EXPECT_EQ(slept, writes * BusyHandler::Pause);
}

TEST_F(BusyHandlerTurns, WriterThatHadToWaitTakesItForContention)
{
    ASSERT_TRUE(other.Begin());
    bool ended = false;
    FakeTime::whileAsleep = [&] { ended = ended || other.Commit(); };
    EXPECT_TRUE(writer.Write());
    EXPECT_GT(FakeTime::Slept(), 0us);
    EXPECT_EQ(SleptInWriting(writer, BusyHandler::ContendedTurn + 1ms), BusyHandler::Pause);
}

TEST_F(BusyHandlerTurns, WaitingEndsWithTheTimeout)
{
    ASSERT_TRUE(other.Begin());
    EXPECT_FALSE(writer.Write());
    Microseconds const slept = FakeTime::Slept();
    EXPECT_GE(slept, 100ms);
    EXPECT_LE(slept, 102ms);
}

TEST_F(BusyHandlerTurns, WriteThatWasRolledBackIsNoCommitOfAnother)
{
    FaultyFiles files;
    Writer alone(folder.filePath(QStringLiteral("journal.db")));
    ASSERT_TRUE(alone.Run("CREATE TABLE rows (row)"));
    ASSERT_TRUE(alone.Write());
    ASSERT_TRUE(alone.Begin());
    files.Fail(1, SQLITE_IOERR_DELETE, {FileOperation::Delete}); // after which SQLite reloads the file
    EXPECT_FALSE(alone.Run("COMMIT"));
    EXPECT_TRUE(files.Recover());
    alone.RollBack();
    EXPECT_EQ(SleptInWriting(alone, 5 * BusyHandler::ContendedTurn), 0us);
}

TEST_F(BusyHandlerTurns, FirstWriteOfAConnectionIsNoCommitOfAnother)
{
    EXPECT_TRUE(other.Write());
    Writer fresh(path);
    EXPECT_EQ(SleptInWriting(fresh, 5 * BusyHandler::ContendedTurn), 0us);
}

} // namespace
