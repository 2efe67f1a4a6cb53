#pragma once

#include "benchmarks/Contestant.h"

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::benchmarks {

/// The library's managers over its own store, without a shell to refresh. All threads share them.
std::unique_ptr<Contestant> EnterManagers(QString const& path);

} // namespace sync::benchmarks
