#include "benchmarks/Entrant.h"

#include "benchmarks/Failure.h"

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

} // namespace sync::benchmarks
