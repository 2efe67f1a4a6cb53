#pragma once

#include "TandryDatabaseExport.h"

/// Settings of SQLite that apply to the whole process. The library leaves them to the program.
namespace sync::database {

/// Turns off SQLite's memory statistics for the whole process. Returns whether it took effect: it does only before
/// SQLite's first use.
///
/// SQLite counts its memory under one lock for all threads. Without these statistics, four threads on two cores look up
/// a third more records. `sqlite3_memory_used`, the other memory figures and SQLite's heap limits then do not work for
/// any user of SQLite in the process. So only a program should call this function, at the beginning of `main` and
/// before it starts threads.
TANDRY_DATABASE_EXPORT bool DisableSqliteMemoryStatistics() noexcept;

} // namespace sync::database
