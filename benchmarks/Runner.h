#pragma once

#include "benchmarks/Case.h"
#include "benchmarks/SampleStore.h"

#include <QString>

#include <map>
#include <vector>

namespace sync::benchmarks {

/// What counts: the time that passed, or the time that processors were busy for us. The second one is of use where
/// others keep the machine busy; waiting for the disk isn't in it.
enum class Clock
{
    Elapsed,
    Processor,
};

/// What one entrant took for a case.
struct Measurement
{
    /// For each operation, one value for each repetition.
    std::vector<double> microseconds;
    /// Beyond what the process had before, in a pass of its own.
    qint64 peakBytes = 0;

    double median() const;
};

/// The middle one, or the mean of the two in the middle.
double Median(std::vector<double> values);

struct Result
{
    QString workload;
    qint64 rows = 0;
    qint64 operations = 0;
    double limit = 0;
    std::map<Entrant, Measurement> measurements;
};

/// Runs a case on a sample store: after a first pass, which measures memory and warms everything up, so many passes in
/// which the entrants take turns, each pass beginning with another one. Short passes are repeated more often, since a
/// moment's disturbance counts for more in them.
Result Run(Case const& benchmark, SampleStore& store, int repetitions, Clock clock);

} // namespace sync::benchmarks
