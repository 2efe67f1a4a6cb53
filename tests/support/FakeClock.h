#pragma once

#include "config/folder/FolderCaches.h"

#include <QtGlobal>

#include <atomic>

namespace tandry::test {

/// A clock that stands still until it is moved; folder listings age by it while one lives. One at a time.
class FakeClock
{
public:
    FakeClock()
    {
        _now = Start;
        sync::config::FolderCaches::UseClock(&Now);
    }
    ~FakeClock() { sync::config::FolderCaches::UseClock(nullptr); }

    static qint64 Now() { return _now; }
    static void Move(qint64 milliseconds) { _now += milliseconds; }

    static constexpr qint64 Start = 1'700'000'000'000;

private:
    Q_DISABLE_COPY_MOVE(FakeClock)

    static inline std::atomic<qint64> _now = Start;
};

} // namespace tandry::test
