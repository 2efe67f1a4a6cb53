#include "benchmarks/Contestant.h"

#include "benchmarks/Failure.h"
#include "benchmarks/ManagersContestant.h"
#include "benchmarks/QtSqlEngine.h"
#include "benchmarks/SqlContestant.h"
#include "benchmarks/SqliteEngine.h"

namespace sync::benchmarks {

QString NameOf(Entrant entrant)
{
    switch (entrant) {
    case Entrant::Managers:
        return QStringLiteral("managers");
    case Entrant::ByHand:
        return QStringLiteral("by hand");
    case Entrant::QtSqlReused:
        return QStringLiteral("Qt SQL reused");
    case Entrant::QtSqlPerCall:
        return QStringLiteral("Qt SQL per call");
    }
    Fail(QStringLiteral("no such entrant"));
}

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
