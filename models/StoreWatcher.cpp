#include "models/StoreWatcher.h"

#include "database/StoreChanges.h"
#include "database/StoreFactory.h"

#include <QSocketNotifier>
#include <QTimer>

#include <utility>

namespace sync::models {

using sync::database::StoreChanges;
using sync::database::StoreFactory;

StoreWatcher::StoreWatcher(std::shared_ptr<StoreFactory> factory, QObject* parent)
    : QObject(parent)
    , _factory(std::move(factory))
    , _changes(_factory->WatchChanges())
    , _pause(new QTimer(this))
{
    if (_changes == nullptr)
        return;
    _pause->setSingleShot(true);
    _pause->setTimerType(Qt::PreciseTimer);
    connect(_pause, &QTimer::timeout, this, &StoreWatcher::Look);
    _notice = new QSocketNotifier(_changes->descriptor(), QSocketNotifier::Read, this);
    connect(_notice, &QSocketNotifier::activated, this, &StoreWatcher::Look);
}

StoreWatcher::~StoreWatcher()
{
    delete _notice; // before its descriptor is closed
}

bool StoreWatcher::isWatching() const
{
    return _changes != nullptr;
}

void StoreWatcher::Look()
{
    StoreChanges::Sight const sight = _changes->Look();
    // During a pause, notices do not wake the thread.
    _notice->setEnabled(!sight.error && !sight.pauseMsec);
    if (sight.pauseMsec)
        _pause->start(*sight.pauseMsec);
    if (sight.error)
        _changes.reset();

    // A slot may destroy this object.
    if (sight.error)
        Q_EMIT Stopped(*sight.error);
    else if (!sight.tables.isEmpty())
        Q_EMIT Changed(sight.tables);
}

} // namespace sync::models
