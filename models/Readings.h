#pragma once

#include <QtGlobal>

#include <functional>

QT_BEGIN_NAMESPACE
class QObject;
class QTimer;
QT_END_NAMESPACE

namespace sync::models {

/// The readings of a model that reads the store in its own thread. A slot that is told of a changed row may ask for
/// another reading, also from an event loop that it runs; the rows that the first one still compares must not change.
class Readings
{
public:
    using Reading = std::function<bool()>;

    /// `readAll` reads everything that has been opened, and returns whether the store has answered.
    Readings(QObject& model, Reading readAll);

    /// Runs a reading of what a view opens, also while something else is being read.
    void Open(Reading const& read);
    /// Reads everything. If something is being read, does so after that, and returns true.
    bool Refresh();
    /// Does the same after a change of the store. A store that changes all the time takes a fifth of the thread's time:
    /// after a reading, others wait for four times as long as it took, but no longer than a second.
    void Follow();

private:
    bool Run(Reading const& read);

    Reading const _readAll;
    int _depth = 0;
    /// Everything is to be read when nothing is being read.
    bool _isStale = false;
    /// Belongs to the model, and is moved to another thread with it.
    QTimer* const _pause;
    /// The store has changed during the pause.
    bool _hasChanged = false;
};

} // namespace sync::models
