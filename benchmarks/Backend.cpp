#include "benchmarks/Backend.h"

#include "benchmarks/Failure.h"
#include "benchmarks/ManagersBackend.h"
#include "benchmarks/QtSqlApi.h"
#include "benchmarks/SqlBackend.h"
#include "benchmarks/SqliteApi.h"

namespace sync::benchmarks {

std::unique_ptr<Backend> OpenBackend(BackendKind kind, QString const& path)
{
    switch (kind) {
    case BackendKind::Managers:
        return OpenManagersBackend(path);
    case BackendKind::ByHand:
        return std::make_unique<SqlBackend<SqliteApi>>(path);
    case BackendKind::QtSqlReused:
        return std::make_unique<SqlBackend<QtSqlApi<Prepare::Once>>>(path);
    case BackendKind::QtSqlPerCall:
        return std::make_unique<SqlBackend<QtSqlApi<Prepare::PerCall>>>(path);
    }
    Fail(QStringLiteral("unknown backend"));
}

} // namespace sync::benchmarks
