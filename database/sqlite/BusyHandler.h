#pragma once

#include <chrono>
#include <optional>

struct sqlite3;

namespace sync::database {

/// Lets a connection wait for locks, and gives other connections their turn.
///
/// SQLite's locks are not queued: whichever connection tries at the right moment gets one. A connection that writes in
/// a loop frees the lock so briefly that others, which sleep between their attempts, would find it taken until they
/// time out. Hence the waiting connections try often, and a connection that writes without a break pauses at the end of
/// its turn: after a short turn if others have recently wanted to write, after a long one in any case.
class BusyHandler
{
public:
    using Clock = std::chrono::steady_clock;

    /// The clock and the sleep, which tests replace.
    struct Time
    {
        Clock::time_point (*now)() = &Clock::now;
        void (*sleep)(std::chrono::microseconds) = &Sleep;
    };

    /// Waits for a lock for at most `timeoutMsec` milliseconds.
    explicit BusyHandler(int timeoutMsec);
    BusyHandler(int timeoutMsec, Time time);

    /// Makes the handle wait for locks this way. The object must outlive the handle.
    void Install(sqlite3* handle);

    /// To be called before a write transaction begins; pauses at the end of a turn.
    void BeforeTransaction();
    /// To be called after a write transaction began.
    void TransactionBegan(sqlite3* handle);
    /// To be called after one was committed.
    void TransactionCommitted(sqlite3* handle);
    /// To be called after one was rolled back, or failed to commit.
    void TransactionRolledBack();

    /// How long a connection may write without a break while others want to write.
    static constexpr std::chrono::milliseconds ContendedTurn{15};
    /// How long it may do so in any case.
    static constexpr std::chrono::milliseconds LongestTurn{250};
    /// The break between two turns; longer than the sleep between two attempts, so that every waiting connection tries.
    static constexpr std::chrono::microseconds Pause{1500};
    /// How long after the last sign of another writer its turns stay short.
    static constexpr std::chrono::milliseconds ContentionWindow{250};

private:
    static void Sleep(std::chrono::microseconds duration);
    static int OnBusy(void* handler, int attempts);
    static unsigned DataVersion(sqlite3* handle);

    std::chrono::milliseconds const _timeout;
    Time const _time;
    Clock::time_point _waitingSince;
    Clock::time_point _lastContention;
    Clock::time_point _lastCommit;
    /// The last time that others had a chance to write.
    Clock::time_point _turnBegan;
    /// Whether this transaction follows the last one with no longer break than a pause.
    bool _continuesTurn = false;
    /// The file's data version after this connection's last commit; a different one means that another connection has
    /// committed. Nothing if unknown.
    std::optional<unsigned> _dataVersion;
};

} // namespace sync::database
