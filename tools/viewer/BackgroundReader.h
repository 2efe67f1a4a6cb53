#pragma once

#include <QObject>
#include <QThread>

#include <atomic>
#include <functional>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

namespace tandry::viewer {

/// Reads something on a thread of its own, which therefore has its own connection to a store. Only the newest reading
/// counts: one that waits is dropped when another one comes, and so is the answer of one that runs.
///
/// Belongs to the window's thread. Nothing runs while there is nothing to read.
class BackgroundReader : public QObject
{
    Q_OBJECT

public:
    /// Runs on the window's thread, and shows what was read.
    using Answer = std::function<void()>;
    /// Runs on the thread of the reader, and must not touch the window.
    using Reading = std::function<Answer()>;

    explicit BackgroundReader(QObject* parent = nullptr);
    /// Waits for the reading that runs.
    ~BackgroundReader() override;

    /// Reads this from now on, and at once.
    void Read(Reading const& reading);
    /// Reads the same again, for a store that has changed. A while must have passed since it was read last, several
    /// times as long as that took; so a store that changes all the time takes a small part of a processor.
    void Renew();
    /// Reads nothing any more.
    void Stop();

    /// Returns whether nothing runs and nothing waits.
    bool isIdle() const;

private:
    void _Start();
    void _Finish(Answer const& answer, qint64 milliseconds);

    QThread _thread;
    /// Lives on the thread.
    QObject* const _worker;
    QTimer* const _pause;
    Reading _reading;
    /// The number of the reading that counts.
    std::atomic<int> _newest = 0;
    bool _isRunning = false;
    bool _isOutdated = false;
};

} // namespace tandry::viewer
