#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/SampleRecords.h"

#include <QString>
#include <QVector>

#include <functional>
#include <vector>

namespace sync::benchmarks {

/// One workload at one number of rows. Every backend runs it with the same keys.
struct Case
{
    QString workload;
    qint64 rows = 0;
    /// Per pass.
    qint64 operations = 1;
    /// The target: the time of the managers as a multiple of the time by hand. 0 means no target.
    double limit = 0;
    /// Later cases may need fresh copies of the store.
    bool changesStore = false;
    /// False where SQL is no part of the work, or where Qt SQL would take too long.
    bool includesQtSql = true;
    /// Whether the store has work for more passes than requested.
    bool canRepeatMore = true;

    /// Makes the keys of a pass. Called once per pass, not measured.
    std::function<void(int pass)> prepare = [](int) {};
    /// Restores the backend's store at this path before each measurement, not measured.
    std::function<void(QString const& path)> reset = [](QString const&) {};
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

} // namespace sync::benchmarks
