#pragma once

#include <sqlite3.h>

namespace sync::database {

/// Mutexes for the engine whose threads look again for a moment before they sleep. The engine holds most of its mutexes
/// for no longer than a call of the system; to fall asleep and be woken takes many times as long.
sqlite3_mutex_methods const& EngineMutexMethods() noexcept;

} // namespace sync::database
