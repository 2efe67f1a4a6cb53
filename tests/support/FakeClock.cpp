#include "support/FakeClock.h"

#include <QDateTime>

#include <atomic>
#include <chrono>

namespace {

std::atomic<bool> isStopped = false;
std::atomic<qint64> stoppedAt = 0;

} // namespace

// Takes the place of Qt's own function for the program and the libraries that it loads: the dynamic linker finds the
// program's definition first. Qt's calls of its own function are not affected.
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
