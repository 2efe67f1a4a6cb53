#include "tools/viewer/BackgroundReader.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

namespace tandry::viewer {

namespace {

/// A person does not read faster.
constexpr qint64 ShortestPauseMsec = 200;
/// The pause, in multiples of the time that the reading took.
constexpr qint64 PauseForReading = 4;

} // namespace

BackgroundReader::BackgroundReader(QObject* parent)
    : QObject(parent)
    , _worker(new QObject)
    , _pause(new QTimer(this))
{
    _worker->moveToThread(&_thread);
    connect(&_thread, &QThread::finished, _worker, &QObject::deleteLater);
    _pause->setSingleShot(true);
    connect(_pause, &QTimer::timeout, this, [this] {
        if (_isOutdated)
            _Start();
    });
    _thread.start();
}

BackgroundReader::~BackgroundReader()
{
    ++_newest;
    _thread.quit();
    _thread.wait();
}

void BackgroundReader::Read(Reading const& reading)
{
    _reading = reading;
    _Start();
}

void BackgroundReader::Renew()
{
    if (!_reading)
        return;
    if (_isRunning || _pause->isActive())
        _isOutdated = true;
    else
        _Start();
}

void BackgroundReader::Stop()
{
    ++_newest;
    _reading = nullptr;
    _isRunning = false;
    _isOutdated = false;
    _pause->stop();
}

bool BackgroundReader::isIdle() const
{
    return !_isRunning && !_isOutdated;
}

void BackgroundReader::_Start()
{
    _pause->stop();
    _isRunning = true;
    _isOutdated = false;
    int const number = ++_newest;
    QMetaObject::invokeMethod(_worker, [this, number, reading = _reading] {
        if (number != _newest)
            return;
        QElapsedTimer timer;
        timer.start();
        Answer const answer = reading();
        qint64 const milliseconds = timer.elapsed();
        QMetaObject::invokeMethod(this, [this, number, answer, milliseconds] {
            if (number == _newest)
                _Finish(answer, milliseconds);
        });
    });
}

void BackgroundReader::_Finish(Answer const& answer, qint64 milliseconds)
{
    _isRunning = false;
    _pause->start(static_cast<int>(std::max(ShortestPauseMsec, PauseForReading * milliseconds)));
    answer(); // may read something else
}

} // namespace tandry::viewer
