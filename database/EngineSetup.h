#pragma once

namespace sync::database {

/// Sets the engine up for many threads, for the whole process, which is possible until it is used for the first time.
/// Done when the library is loaded. False where somebody was faster: then all stays as it is, and works as well.
///
/// - Mutexes whose threads look again before they sleep.
/// - No statistics of memory, which take one lock for all allocations of all threads. Who wants them, or the limits of
///   memory that depend on them, turns them on again before the engine is used.
bool SetUpEngine() noexcept;

} // namespace sync::database
