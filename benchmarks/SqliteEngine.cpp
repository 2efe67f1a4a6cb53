#include "benchmarks/Engine.h"
#include "benchmarks/Failure.h"
#include "benchmarks/ManagersBackend.h"
#include "benchmarks/QtSqlApi.h"
#include "benchmarks/SqlBackend.h"
#include "benchmarks/SqliteApi.h"
#include "benchmarks/SqliteSampleStore.h"

#include <sqlite3.h>

#include <utility>

namespace sync::benchmarks {

namespace {

class SqliteEngine : public Engine
{
public:
    explicit SqliteEngine(QString directory)
        : _directory(std::move(directory))
    {}

    QString name() const override { return QStringLiteral("sqlite"); }
    QString version() const override { return QStringLiteral("SQLite ") + QLatin1String(sqlite3_libversion()); }
    std::vector<BackendKind> kinds() const override
    {
        return {BackendKind::Managers, BackendKind::ByHand, BackendKind::QtSqlReused, BackendKind::QtSqlPerCall};
    }
    double LimitFor(double limit) const override { return limit; }

    std::unique_ptr<SampleStore> MakeStore(SampleRecords const& records) override
    {
        return std::make_unique<SqliteSampleStore>(_directory, records);
    }

    std::unique_ptr<Backend> Open(BackendKind kind, QString const& store) const override
    {
        switch (kind) {
        case BackendKind::Managers:
        case BackendKind::ManagersOnFile:
            return OpenManagersBackend(store);
        case BackendKind::ByHand:
            return std::make_unique<SqlBackend<SqliteApi>>(store);
        case BackendKind::QtSqlReused:
            return std::make_unique<SqlBackend<QtSqlApi<Prepare::Once>>>(store);
        case BackendKind::QtSqlPerCall:
            return std::make_unique<SqlBackend<QtSqlApi<Prepare::PerCall>>>(store);
        }
        Fail(QStringLiteral("unknown backend"));
    }

    /// Empties the log, too.
    void Execute(QString const& store, QStringList const& statements) const override
    {
        SqliteApi api(store);
        api.Begin();
        for (QString const& statement : statements)
            api.Execute(statement);
        api.Commit();
        api.Execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    }

private:
    QString const _directory;
};

} // namespace

std::unique_ptr<Engine> MakeSqliteEngine(QString const& directory)
{
    return std::make_unique<SqliteEngine>(directory);
}

} // namespace sync::benchmarks
