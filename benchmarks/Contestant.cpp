#include "benchmarks/Contestant.h"

#include "benchmarks/Failure.h"
#include "benchmarks/ManagersContestant.h"
#include "benchmarks/QtSqlEngine.h"
#include "benchmarks/SqlContestant.h"
#include "benchmarks/SqliteEngine.h"

namespace sync::benchmarks {

std::unique_ptr<Contestant> Enter(Entrant entrant, QString const& path)
{
    switch (entrant) {
    case Entrant::Managers:
        return EnterManagers(path);
    case Entrant::ByHand:
        return std::make_unique<SqlContestant<SqliteEngine>>(path);
    case Entrant::QtSqlReused:
        return std::make_unique<SqlContestant<QtSqlEngine<Preparing::Once>>>(path);
    case Entrant::QtSqlPerCall:
        return std::make_unique<SqlContestant<QtSqlEngine<Preparing::PerCall>>>(path);
    }
    Fail(QStringLiteral("no such entrant"));
}

} // namespace sync::benchmarks
