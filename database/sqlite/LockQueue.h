#pragma once

#include <chrono>
#include <optional>

struct sqlite3;

namespace sync::database {

/// How a connection waits for the locks of others, and lets others wait no longer than need be.
///
/// The engine's locks have no queue: whoever looks at the right moment gets one. A connection that writes in a loop
/// frees the lock for so short a time that one which looks seldom would hardly ever see it free, and time out. So those
/// that wait look often, and one that writes without a break pauses when it has had a turn: soon where it has noticed
/// that others want to write, and after a long turn in any case.
class LockQueue
{
public:
    using Clock = std::chrono::steady_clock;

    /// The passing of time, for tests to replace.
    struct Time
    {
        Clock::time_point (*now)() = &Clock::now;
        void (*sleep)(std::chrono::microseconds) = &Sleep;
    };

    explicit LockQueue(int timeoutMsec);
    LockQueue(int timeoutMsec, Time time);

    /// Has the connection wait for locks as told above, up to the timeout. The queue must outlive the handle's use.
    void Attach(sqlite3* handle);

    /// To be called before a write transaction begins.
    void GiveWay();
    /// To be called when one has begun.
    void Begun(sqlite3* handle);
    /// To be called when one has been committed.
    void Committed(sqlite3* handle);
    /// To be called when one was taken back, or could not be committed.
    void TakenBack();

    /// How long a connection keeps others from their turn, if it has noticed any, and if it hasn't.
    static constexpr std::chrono::milliseconds TurnInCrowd{15};
    static constexpr std::chrono::milliseconds LongestTurn{250};
    /// Between two turns. Longer than those who wait sleep, so that everybody has looked.
    static constexpr std::chrono::microseconds Pause{1500};
    /// How long a connection takes it that others want to write too, after it has last noticed.
    static constexpr std::chrono::milliseconds CrowdStays{250};

private:
    static void Sleep(std::chrono::microseconds duration);
    static int OnBusy(void* queue, int attempts);
    static unsigned DataVersion(sqlite3* handle);

    std::chrono::milliseconds const _timeout;
    Time const _time;
    Clock::time_point _waitsSince;
    Clock::time_point _lastCrowd;
    Clock::time_point _lastCommit;
    /// When others last had a chance to write.
    Clock::time_point _turnBegan;
    /// Whether this write follows the one before at once, but for a pause.
    bool _followsAtOnce = false;
    /// Of the file as this connection left it: another number tells of another's commit. Nothing where it isn't known.
    std::optional<unsigned> _dataVersion;
};

} // namespace sync::database
