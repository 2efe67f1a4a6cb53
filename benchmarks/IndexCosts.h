#pragma once

#include <QString>

namespace sync::benchmarks {

/// Returns a table of what each index on files and folders costs with so many rows: its bytes per row, and how much
/// faster SQLite by hand inserts rows in a transaction without it.
QString IndexCosts(QString const& directory, int rows, int repetitions);

} // namespace sync::benchmarks
