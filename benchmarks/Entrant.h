#pragma once

#include <QString>

#include <array>

namespace sync::benchmarks {

/// Who takes part. All of them work on stores that the library made, with the same rows, and fill the same records.
enum class Entrant
{
    Managers,
    /// SQLite's C interface at its fastest: statements kept, text read as UTF-8, nothing looked up by name.
    ByHand,
    /// Qt SQL with one query object for each statement, prepared once.
    QtSqlReused,
    /// Qt SQL with a query object made and prepared for each call.
    QtSqlPerCall,
};

inline constexpr std::array Entrants{Entrant::Managers, Entrant::ByHand, Entrant::QtSqlReused, Entrant::QtSqlPerCall};

QString NameOf(Entrant entrant);

} // namespace sync::benchmarks
