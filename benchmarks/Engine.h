#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/SampleStore.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace sync::benchmarks {

/// A database behind the library's interfaces, and who is compared on it.
class Engine
{
public:
    Engine() = default;
    virtual ~Engine() = default;

    /// The name in results.
    virtual QString name() const = 0;
    /// The product's name and version.
    virtual QString version() const = 0;
    virtual std::vector<BackendKind> kinds() const = 0;
    /// The target of the managers for a case whose target is `limit` with SQLite.
    virtual double LimitFor(double limit) const = 0;

    virtual std::unique_ptr<SampleStore> MakeStore(SampleRecords const& records) = 0;
    /// Opens a store or one of its copies.
    virtual std::unique_ptr<Backend> Open(BackendKind kind, QString const& store) const = 0;
    /// Runs the statements on the store in one transaction of a connection of its own, and tidies up behind them and
    /// earlier writes, so that all backends start alike.
    virtual void Execute(QString const& store, QStringList const& statements) const = 0;

private:
    Q_DISABLE_COPY_MOVE(Engine)
};

/// Makes stores below `directory`.
std::unique_ptr<Engine> MakeSqliteEngine(QString const& directory);

#ifdef TANDRY_BENCHMARK_POSTGRES
/// Starts a server whose data lie below `directory`; it ends with the object.
std::unique_ptr<Engine> MakePostgresEngine(QString const& directory);
#endif

} // namespace sync::benchmarks
