#include "database/sqlite/BusyHandler.h"

#include <sqlite3.h>

#include <algorithm>
#include <thread>

namespace sync::database {

namespace {

using namespace std::chrono_literals;

/// The sleep between two attempts; a waiting thread takes about a hundredth of a processor.
constexpr auto LongestSleep = 1000us;
constexpr auto ShortestSleep = 100us;
static_assert(BusyHandler::Pause > LongestSleep);

} // namespace

BusyHandler::BusyHandler(int timeoutMsec)
    : BusyHandler(timeoutMsec, Time())
{}

BusyHandler::BusyHandler(int timeoutMsec, Time time)
    : _timeout(std::max(timeoutMsec, 0))
    , _time(time)
{}

void BusyHandler::Install(sqlite3* handle)
{
    sqlite3_busy_handler(handle, &BusyHandler::OnBusy, this);
}

void BusyHandler::Sleep(std::chrono::microseconds duration)
{
    std::this_thread::sleep_for(duration);
}

int BusyHandler::OnBusy(void* handler, int attempts)
{
    auto& self = *static_cast<BusyHandler*>(handler);
    Clock::time_point const now = self._time.now();
    self._lastContention = now;
    self._turnBegan = now;
    if (attempts == 0)
        self._waitingSince = now;
    if (now - self._waitingSince >= self._timeout)
        return 0;
    self._time.sleep(std::min<std::chrono::microseconds>(ShortestSleep * (attempts + 1), LongestSleep));
    return 1;
}

void BusyHandler::BeforeTransaction()
{
    Clock::time_point const now = _time.now();
    _continuesTurn = now - _lastCommit < Pause;
    if (!_continuesTurn) {
        _turnBegan = now; // every waiting connection has had its chance
        return;
    }
    if (now - _turnBegan < (now - _lastContention < ContentionWindow ? ContendedTurn : LongestTurn))
        return;
    _time.sleep(Pause);
    _turnBegan = _time.now();
}

void BusyHandler::TransactionBegan(sqlite3* handle)
{
    // After a break, a commit of another connection does not mean that it still wants to write.
    if (_continuesTurn && _dataVersion && DataVersion(handle) != *_dataVersion)
        _lastContention = _time.now();
}

void BusyHandler::TransactionCommitted(sqlite3* handle)
{
    _dataVersion = DataVersion(handle);
    _lastCommit = _time.now();
}

void BusyHandler::TransactionRolledBack()
{
    _dataVersion.reset(); // SQLite may have reloaded the file, which changes the version
    _lastCommit = _time.now();
}

unsigned BusyHandler::DataVersion(sqlite3* handle)
{
    unsigned version = 0;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

} // namespace sync::database
