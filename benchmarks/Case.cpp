#include "benchmarks/Case.h"

#include "benchmarks/SqliteEngine.h"

namespace sync::benchmarks {

void ExecuteOn(Participant const& participant, QStringList const& statements)
{
    SqliteEngine engine(participant.path);
    engine.Begin();
    for (QString const& statement : statements)
        engine.Execute(statement);
    engine.Commit();
    engine.Execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
}

} // namespace sync::benchmarks
