#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/SampleRecords.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <vector>

namespace sync::benchmarks {

/// One workload at one number of rows. Every backend runs it with the same keys.
struct Case
{
    QString workload;
    qint64 rows = 0;
    /// Per pass and store.
    qint64 operations = 1;
    /// The target: the time of the managers as a multiple of the time by hand. 0 means no target.
    double limit = 0;
    /// Later cases may need fresh copies of the store.
    bool changesStore = false;
    /// False where SQL is no part of the work, or where Qt SQL would take too long.
    bool includesQtSql = true;
    /// Whether the store has work for more passes than requested.
    bool canRepeatMore = true;
    /// With more than one, a case that only reads runs on so many copies of the store, one after the other; all of them
    /// are open.
    int stores = 1;

    /// Makes the keys of a pass. Called once per pass, not measured.
    std::function<void(int pass)> prepare = [](int) {};
    /// Statements that restore a store before each measurement, not measured. A list without statements makes the
    /// backends start alike after writes.
    std::optional<QStringList> reset;
    /// Measured.
    std::function<void(Backend&)> run;

    QString name() const { return QStringLiteral("%1/%2").arg(workload).arg(rows); }
};

/// The cases that share a sample store, in the order of execution; those that change much of the store come last.
struct Suite
{
    SampleRecords records;
    std::vector<Case> cases;
};

/// Returns all cases for these numbers of rows. Each case runs at most `passes` times unless it can repeat more.
std::vector<Suite> AllSuites(QVector<int> const& sizes, int passes);

/// Returns look-ups on so many stores of so many files.
Suite ManyStoresSuite(QVector<int> const& counts, int files);

} // namespace sync::benchmarks
