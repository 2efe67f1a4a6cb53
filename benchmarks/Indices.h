#pragma once

#include <QString>

namespace sync::benchmarks {

/// What each index on files and folders costs at so many rows, as a table: its bytes for each row, and how much faster
/// rows are inserted in a bracket, by hand, on a store without it.
QString CostOfIndices(QString const& directory, int rows, int repetitions);

} // namespace sync::benchmarks
