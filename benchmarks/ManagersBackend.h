#pragma once

#include "benchmarks/Backend.h"

#include <memory>

namespace sync::benchmarks {

/// Opens the store with the library and returns its managers as a backend. Objects for other threads share the
/// managers.
std::unique_ptr<Backend> OpenManagersBackend(QString const& path);

} // namespace sync::benchmarks
