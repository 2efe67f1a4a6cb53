#include "database/sqlite/LockQueue.h"

#include <sqlite3.h>

#include <algorithm>
#include <thread>

namespace sync::database {

namespace {

using namespace std::chrono_literals;

/// Between two looks at a lock. Costs a waiting thread about a hundredth of a processor.
constexpr auto LongestSleep = 1000us;
constexpr auto ShortestSleep = 100us;
static_assert(LockQueue::Pause > LongestSleep);

} // namespace

LockQueue::LockQueue(int timeoutMsec)
    : LockQueue(timeoutMsec, Time())
{}

LockQueue::LockQueue(int timeoutMsec, Time time)
    : _timeout(std::max(timeoutMsec, 0))
    , _time(time)
{}

void LockQueue::Attach(sqlite3* handle)
{
    sqlite3_busy_handler(handle, &LockQueue::OnBusy, this);
}

void LockQueue::Sleep(std::chrono::microseconds duration)
{
    std::this_thread::sleep_for(duration);
}

int LockQueue::OnBusy(void* queue, int attempts)
{
    auto& self = *static_cast<LockQueue*>(queue);
    Clock::time_point const now = self._time.now();
    self._lastCrowd = now;
    self._turnBegan = now;
    if (attempts == 0)
        self._waitsSince = now;
    if (now - self._waitsSince >= self._timeout)
        return 0;
    self._time.sleep(std::min<std::chrono::microseconds>(ShortestSleep * (attempts + 1), LongestSleep));
    return 1;
}

void LockQueue::GiveWay()
{
    Clock::time_point const now = _time.now();
    _followsAtOnce = now - _lastCommit < Pause;
    if (!_followsAtOnce) {
        _turnBegan = now; // everybody has looked meanwhile
        return;
    }
    if (now - _turnBegan < (now - _lastCrowd < CrowdStays ? TurnInCrowd : LongestTurn))
        return;
    _time.sleep(Pause);
    _turnBegan = _time.now();
}

void LockQueue::Begun(sqlite3* handle)
{
    // A commit from before a break tells nothing of who wants to write now.
    if (_followsAtOnce && _dataVersion && DataVersion(handle) != *_dataVersion)
        _lastCrowd = _time.now();
}

void LockQueue::Committed(sqlite3* handle)
{
    _dataVersion = DataVersion(handle);
    _lastCommit = _time.now();
}

void LockQueue::TakenBack()
{
    _dataVersion.reset(); // the engine may have read the file anew
    _lastCommit = _time.now();
}

unsigned LockQueue::DataVersion(sqlite3* handle)
{
    unsigned version = 0;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

} // namespace sync::database
