#include "support/FakeClock.h"

#include <QDateTime>

#include <atomic>
#include <chrono>

namespace {

std::atomic<bool> isStopped = false;
std::atomic<qint64> stoppedAt = 0;

} // namespace

// Replaces Qt's function in the program and the project's libraries: the dynamic linker finds the program's definition
// first. Qt's internal calls are not affected.
qint64 QDateTime::currentMSecsSinceEpoch() noexcept
{
    if (isStopped)
        return stoppedAt;
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

namespace tandry::test {

FakeClock::FakeClock()
{
    stoppedAt = Start;
    isStopped = true;
}

FakeClock::~FakeClock()
{
    isStopped = false;
}

qint64 FakeClock::Now()
{
    return stoppedAt;
}

void FakeClock::Move(qint64 milliseconds)
{
    stoppedAt += milliseconds;
}

} // namespace tandry::test
