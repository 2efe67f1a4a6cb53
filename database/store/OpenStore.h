#pragma once

#include "database/store/Failure.h"
#include "database/store/StoreLog.h"

#include <QString>

#include <memory>
#include <utility>

/// What the `Open` operations of all factories have in common.
namespace sync::database {

/// Logs the failure of an operation without a store, and sets the caller's error to it.
inline void ReportWithoutStore(StoreError const& failure, StoreError& error)
{
    qCWarning(StoreLog).noquote() << failure.text;
    error = failure;
}

/// Returns the factory that `open` puts into its argument, or null and the error if `open` returns a failure.
template <class Factory, class Open>
std::shared_ptr<Factory> OpenStore(StoreError& error, Open const& open)
{
    std::shared_ptr<Factory> factory;
    Failure const failure = open(factory);
    if (!failure)
        return factory;
    ReportWithoutStore(*failure, error);
    return nullptr;
}

/// Calls `open` with an error, and hands its words on; `error` may be null.
template <class Open>
auto OpenWithWords(QString* error, Open const& open)
{
    StoreError reason;
    auto factory = open(reason);
    if (factory == nullptr && error != nullptr)
        *error = reason.text;
    return factory;
}

} // namespace sync::database
