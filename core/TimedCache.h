#pragma once

#include <QDateTime>
#include <QMutex>
#include <QMutexLocker>

#include <atomic>
#include <functional>
#include <limits>
#include <utility>

namespace sync::core {

/// Returns the time in milliseconds since the epoch. Several threads may call it at once.
using Clock = qint64 (*)();

/// Returns a number that changes when values read before are outdated. Several threads may call it at once.
using Epoch = quint64 (*)();

/// Caches one value and refills it once it is older than the refresh rate, or was read in another epoch.
///
/// The age is the distance between the clock and the last refill, in either direction. Age and rate count in whole
/// seconds, and a value as old as the rate is still fresh: at a rate of 1000 a value lives for just under two seconds.
/// The cache keeps whatever the refill returns, even if it is empty because the refill failed.
///
/// Any thread may call any operation. The age is checked outside the lock and not again inside it, so two threads that
/// find the value outdated both refill it, one after the other. The refill runs under the lock: it must not call its
/// own cache, and `GetValue` and `Clear` on other threads wait for it.
template <class T>
class TimedCache
{
public:
    /// Does not call `refill`. The rate is in milliseconds. `clock` is a parameter for tests. Without `epoch` there is
    /// only one.
    explicit TimedCache(
        std::function<T()> refill,
        int refreshRateMsec = 1000,
        Clock clock = &QDateTime::currentMSecsSinceEpoch,
        Epoch epoch = [] { return quint64(0); })
        : _refill(std::move(refill))
        , _refreshRateMsec(refreshRateMsec)
        , _clock(clock)
        , _epoch(epoch)
    {}

    virtual ~TimedCache() = default;

    /// Returns the value; refills it first if there is none or it is outdated. Returns an empty value if another thread
    /// calls `Clear` between the refill and the return.
    T GetValue()
    {
        // Read before the refill: the value is as old as the beginning of the refill that fetched it.
        qint64 const now = _clock();
        quint64 const epoch = _epoch();
        if (!_IsFresh(now) || epoch != _epochOfValue) {
            QMutexLocker const lock(&_mutex);
            _value = _refill();
            _lastRefresh = now;
            _epochOfValue = epoch;
        }
        QMutexLocker const lock(&_mutex);
        return _value;
    }

    /// Discards the value, so that the next `GetValue` refills it.
    void Clear()
    {
        QMutexLocker const lock(&_mutex);
        _value = T();
        _lastRefresh = Never;
    }

private:
    Q_DISABLE_COPY_MOVE(TimedCache)

    static constexpr qint64 Never = std::numeric_limits<qint64>::min();

    bool _IsFresh(qint64 now) const
    {
        qint64 const lastRefresh = _lastRefresh;
        return lastRefresh != Never && qAbs((lastRefresh - now) / 1000) <= _refreshRateMsec / 1000;
    }

    T _value = T();
    QMutex _mutex; // guards the value and writes to `_lastRefresh` and `_epochOfValue`
    std::function<T()> _refill;
    std::atomic<qint64> _lastRefresh = Never;
    std::atomic<quint64> _epochOfValue = 0;
    int _refreshRateMsec;
    Clock _clock;
    Epoch _epoch;
};

} // namespace sync::core
