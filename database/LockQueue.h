#pragma once

#include <chrono>

struct sqlite3;

namespace sync::database {

/// How a connection waits for the locks of others, and lets others wait no longer than need be.
///
/// The engine's locks have no queue: whoever looks at the right moment gets one. A connection that writes in a loop
/// frees the lock for so short a time that one which looks seldom would hardly ever see it free, and time out. So those
/// that wait look often, and one that has just committed pauses before it begins again while there is a crowd.
class LockQueue
{
public:
    using Clock = std::chrono::steady_clock;

    explicit LockQueue(int timeoutMsec);

    /// Has the connection wait for locks as told above, up to the timeout. The queue must outlive the handle's use.
    void Attach(sqlite3* handle);

    /// To be called before a write transaction begins.
    void GiveWay() const;
    /// To be called when one has begun.
    void Begun(sqlite3* handle);
    /// To be called when one has been committed.
    void Committed(sqlite3* handle);

private:
    static int OnBusy(void* queue, int attempts);
    static unsigned DataVersion(sqlite3* handle);

    std::chrono::milliseconds const _timeout;
    Clock::time_point _waitsSince;
    Clock::time_point _lastCrowd;
    Clock::time_point _lastCommit;
    /// Of the file as this connection left it: another number tells of another's commit.
    unsigned _dataVersion = 0;
};

} // namespace sync::database
