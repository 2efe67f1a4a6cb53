#pragma once

#include <QtGlobal>

namespace tandry::test {

/// Stops the clock that `QDateTime::currentMSecsSinceEpoch` returns to the project's libraries, and moves it on demand.
/// There may be one object at a time.
class FakeClock
{
public:
    FakeClock();
    ~FakeClock();

    static qint64 Now();
    static void Move(qint64 milliseconds);

    static constexpr qint64 Start = 1'700'000'000'000;

private:
    Q_DISABLE_COPY_MOVE(FakeClock)
};

} // namespace tandry::test
