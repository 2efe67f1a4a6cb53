#include "models/Readings.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace sync::models {

namespace {

/// The pause, in multiples of the time that the reading took.
constexpr qint64 PauseForReading = 4;
/// A reading that waited for a lock may have taken long.
constexpr qint64 LongestPauseMsec = 1000;

} // namespace

Readings::Readings(QObject& model, Reading readAll)
    : _readAll(std::move(readAll))
    , _pause(new QTimer(&model))
{
    _pause->setSingleShot(true);
    QObject::connect(_pause, &QTimer::timeout, &model, [this] {
        if (std::exchange(_hasChanged, false))
            Follow();
    });
}

void Readings::Open(Reading const& read)
{
    Run(read);
}

bool Readings::Refresh()
{
    _isStale = true;
    return _depth > 0 || Run(nullptr);
}

void Readings::Follow()
{
    if (_pause->isActive()) {
        _hasChanged = true;
        return;
    }
    QElapsedTimer timer;
    timer.start();
    Refresh();
    qint64 const pause = std::min(PauseForReading * timer.elapsed(), LongestPauseMsec);
    if (pause > 0)
        _pause->start(static_cast<int>(pause));
}

bool Readings::Run(Reading const& read)
{
    ++_depth;
    bool succeeds = read == nullptr || read();
    while (_depth == 1 && _isStale) {
        _isStale = false;
        succeeds = _readAll();
    }
    --_depth;
    return succeeds;
}

} // namespace sync::models
