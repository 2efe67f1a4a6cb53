#pragma once

#include "database/TandryDatabaseExport.h"

/// Settings of SQLite for the whole process, which are therefore left to the program.
namespace sync::database {

/// Turns off SQLite's memory statistics for the whole process. Returns whether it took effect: it does only before
/// SQLite's first use.
///
/// SQLite counts the memory that it uses, under one lock for all threads. Without that, four threads reading on two
/// cores look up a third more records. `sqlite3_memory_used`, the other figures on memory and SQLite's heap limits do
/// not work then, for any user of SQLite in the process. So only a program should call this, at the beginning of
/// `main`, before it starts threads.
TANDRY_DATABASE_EXPORT bool DisableSqliteMemoryStatistics() noexcept;

} // namespace sync::database
