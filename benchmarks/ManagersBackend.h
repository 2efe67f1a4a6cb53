#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/Failure.h"
#include "database/OpenOptions.h"

#include <QString>

#include <functional>
#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::benchmarks {

/// Opens a store that is there; ends the program if it can't.
using StoreOpener = std::function<std::shared_ptr<interf::factory::IDatabaseFactory>()>;

/// Opens the store with the library and returns its managers as a backend. Objects for other threads share the
/// managers.
std::unique_ptr<Backend> OpenManagersBackend(StoreOpener open);
/// The same for a file.
std::unique_ptr<Backend> OpenManagersBackend(QString const& path);

/// Opens a store with its factory's `Open`.
template <class Factory>
std::shared_ptr<Factory> OpenExisting(QString const& store)
{
    QString error;
    database::OpenOptions options;
    options.mode = database::OpenMode::OpenExisting;
    auto factory = Factory::Open(store, &error, options);
    if (!factory)
        Fail(error);
    return factory;
}

} // namespace sync::benchmarks
