#include "benchmarks/WindowTimes.h"

#include "benchmarks/Failure.h"

#include <QAbstractItemView>
#include <QEventLoop>
#include <QFile>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <random>

#include <unistd.h>

namespace sync::benchmarks {

namespace {

constexpr int Steps = 300;

Time Longest()
{
    Time longest;
    for (Time const& time : Application().events) {
        longest.msecs = std::max(longest.msecs, time.msecs);
        longest.ownMsecs = std::max(longest.ownMsecs, time.ownMsecs);
    }
    return longest;
}

/// Measures steps of scrolling, each until its rows have been painted with values.
void MeasureSteps(QString const& what, QAbstractItemView& view, std::function<void(int step)> const& scroll)
{
    std::vector<Time> times;
    for (int step = 0; step < Steps; ++step) {
        Application().events.clear();
        QTimer::singleShot(0, &view, [&] { scroll(step); });
        HandleEventsFor(0);
        WaitFor([&view] {
            QModelIndex const top = view.indexAt(QPoint(2, 2));
            return top.siblingAtColumn(0).data().isValid();
        });
        HandleEventsFor(0); // paints
        times.push_back(Longest());
    }
    Print(what, times);
}

} // namespace

TimedApplication& Application()
{
    return *static_cast<TimedApplication*>(QCoreApplication::instance());
}

void Print(QString const& what, std::vector<Time> const& times)
{
    Require(!times.empty(), "nothing was measured");
    auto const print = [&](char const* kind, double Time::*part) {
        std::vector<double> msecs;
        msecs.reserve(times.size());
        for (Time const& time : times)
            msecs.push_back(time.*part);
        std::sort(msecs.begin(), msecs.end());
        std::printf(" %s: longest %7.2f, 99%% %7.2f, median %6.2f;",
                    kind,
                    msecs.back(),
                    msecs[msecs.size() * 99 / 100],
                    msecs[msecs.size() / 2]);
    };
    std::printf("%-40s", qPrintable(what));
    print("ms", &Time::msecs);
    print("ms running", &Time::ownMsecs);
    std::printf(" of %zu\n", times.size());
    static_cast<void>(std::fflush(stdout));
}

void WaitFor(std::function<bool()> const& holds)
{
    while (!holds())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void HandleEventsFor(int msecs)
{
    QEventLoop loop;
    QTimer::singleShot(msecs, &loop, &QEventLoop::quit);
    loop.exec();
}

void MeasureScrolling(QString const& kind, QAbstractItemView& view)
{
    QScrollBar& bar = *view.verticalScrollBar();
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same places in every run
    bar.setValue(0);
    MeasureSteps(kind + QStringLiteral(": scrolling by pages"), view, [&](int) {
        bar.triggerAction(QScrollBar::SliderPageStepAdd);
    });
    MeasureSteps(kind + QStringLiteral(": scrolling by jumps"), view, [&](int) {
        bar.setValue(std::uniform_int_distribution<int>(0, bar.maximum())(random));
    });
}

qint64 BytesInMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    Require(file.open(QIODevice::ReadOnly), "the memory cannot be read");
    return file.readAll().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

} // namespace sync::benchmarks
