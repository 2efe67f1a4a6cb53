#pragma once

#include <QApplication>
#include <QString>
#include <QtGlobal>

#include <functional>
#include <vector>

#include <time.h>

QT_BEGIN_NAMESPACE
class QAbstractItemView;
QT_END_NAMESPACE

/// How long the window's thread is kept from its events, and what that takes of the machine.
namespace sync::benchmarks {

/// How long something took, in milliseconds, and how much of that the thread ran.
struct Time
{
    double msecs = 0;
    double ownMsecs = 0;
};

class Stopwatch
{
public:
    Time Elapsed() const
    {
        return {double(Now(CLOCK_MONOTONIC) - _begin) / 1e6, double(Now(CLOCK_THREAD_CPUTIME_ID) - _ownBegin) / 1e6};
    }

private:
    static qint64 Now(clockid_t clock)
    {
        timespec time{};
        ::clock_gettime(clock, &time);
        return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
    }

    qint64 _begin = Now(CLOCK_MONOTONIC);
    qint64 _ownBegin = Now(CLOCK_THREAD_CPUTIME_ID);
};

/// An application that records how long it takes to handle each event.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (_depth > 0)
            return QApplication::notify(receiver, event);
        ++_depth;
        Stopwatch const watch;
        bool const result = QApplication::notify(receiver, event);
        events.push_back(watch.Elapsed());
        --_depth;
        return result;
    }

    std::vector<Time> events;

private:
    int _depth = 0;
};

/// Returns the program's application, which must be a `TimedApplication`.
TimedApplication& Application();

/// Prints the longest and the median of some times.
void Print(QString const& what, std::vector<Time> const& times);

/// Handles events until the condition holds.
void WaitFor(std::function<bool()> const& holds);
/// Handles events for this long; what is posted and due with 0.
void HandleEventsFor(int msecs);

/// Prints the longest event of each of some steps of scrolling, by pages from the top and by jumps. A step ends when
/// its rows have been painted with values.
void MeasureScrolling(QString const& kind, QAbstractItemView& view);

/// Returns how much memory of this process is resident.
qint64 BytesInMemory();

} // namespace sync::benchmarks
