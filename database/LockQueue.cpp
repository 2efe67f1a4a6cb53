#include "database/LockQueue.h"

#include <sqlite3.h>

#include <algorithm>
#include <thread>

namespace sync::database {

namespace {

using namespace std::chrono_literals;

/// Between two looks at a lock. Costs a waiting thread about a hundredth of a processor.
constexpr auto LongestSleep = 1000us;
constexpr auto ShortestSleep = 100us;
/// Longer than the above, so that everybody who waits has looked.
constexpr auto Pause = 1500us;
/// How long a connection takes it that others want to write too, after it has last noticed.
constexpr auto CrowdStays = 250ms;

} // namespace

LockQueue::LockQueue(int timeoutMsec)
    : _timeout(std::max(timeoutMsec, 0))
{}

void LockQueue::Attach(sqlite3* handle)
{
    sqlite3_busy_handler(handle, &LockQueue::OnBusy, this);
}

int LockQueue::OnBusy(void* queue, int attempts)
{
    auto& self = *static_cast<LockQueue*>(queue);
    Clock::time_point const now = Clock::now();
    self._lastCrowd = now;
    if (attempts == 0)
        self._waitsSince = now;
    if (now - self._waitsSince >= self._timeout)
        return 0;
    std::this_thread::sleep_for(std::min<std::chrono::microseconds>(ShortestSleep * (attempts + 1), LongestSleep));
    return 1;
}

void LockQueue::GiveWay() const
{
    Clock::time_point const now = Clock::now();
    if (now - _lastCommit < Pause && now - _lastCrowd < CrowdStays)
        std::this_thread::sleep_for(Pause);
}

void LockQueue::Begun(sqlite3* handle)
{
    if (DataVersion(handle) != _dataVersion)
        _lastCrowd = Clock::now();
}

void LockQueue::Committed(sqlite3* handle)
{
    _dataVersion = DataVersion(handle);
    _lastCommit = Clock::now();
}

unsigned LockQueue::DataVersion(sqlite3* handle)
{
    unsigned version = 0;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

} // namespace sync::database
