#pragma once

#include <QDateTime>
#include <QMutex>
#include <QMutexLocker>

#include <atomic>
#include <functional>
#include <limits>
#include <utility>

namespace sync::core {

/// Tells the time in milliseconds since the epoch. Read by several threads at once.
using Clock = qint64 (*)();

/// Keeps one value for a while and fetches it anew once it is too old.
///
/// A value's age counts in whole seconds and is still good at the rate itself, so with a rate of 1000 it lives for just
/// under two seconds. The distance to the stamp counts either way: a clock that was set back further than that makes
/// the value old too. Whatever a refill gives is kept, be it empty because the refill failed.
///
/// Any thread may call any operation. Whether the value is too old is asked outside the lock and not asked again inside
/// it: two threads that find it so both refill, one after the other. A refill runs under the lock, so it must not call
/// its own cache, and a thread that only wants the value waits for it.
template <class T>
class TimedCache
{
public:
    /// Runs no refill yet. The rate is in milliseconds; `clock` is for tests.
    explicit TimedCache(std::function<T()> refill,
                        int refreshRateMsec = 1000,
                        Clock clock = &QDateTime::currentMSecsSinceEpoch)
        : _refill(std::move(refill))
        , _refreshRateMsec(refreshRateMsec)
        , _clock(clock)
    {}

    virtual ~TimedCache() = default;

    /// The value, fetched first if there is none or it is too old. A `Clear` or a refill on another thread may come in
    /// between, and the caller gets the newer state then.
    T GetValue()
    {
        // Read before the refill, so that a slow one eats into the value's time.
        qint64 const now = _clock();
        if (!_IsFresh(now)) {
            QMutexLocker const lock(&_mutex);
            _value = _refill();
            _lastRefresh = now;
        }
        QMutexLocker const lock(&_mutex);
        return _value;
    }

    /// Forgets the value, so that the next `GetValue` fetches it.
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
    QMutex _mutex; // guards the value and the writes of the stamp
    std::function<T()> _refill;
    std::atomic<qint64> _lastRefresh = Never;
    int _refreshRateMsec;
    Clock _clock;
};

} // namespace sync::core
