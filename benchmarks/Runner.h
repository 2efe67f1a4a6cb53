#pragma once

#include "benchmarks/Engine.h"
#include "benchmarks/Workloads.h"

#include <QString>

#include <map>
#include <vector>

namespace sync::benchmarks {

enum class Clock
{
    Elapsed,
    /// Processor time of the process: for a busy machine. Excludes waiting for the disk.
    Processor,
};

struct Measurement
{
    /// Per operation, one value per pass.
    std::vector<double> microseconds;
    /// Peak of the resident memory in a pass of its own, beyond its size before; 0 where the system does not tell.
    qint64 peakBytes = 0;
};

struct Result
{
    QString workload;
    qint64 rows = 0;
    qint64 operations = 0;
    double limit = 0;
    std::map<BackendKind, Measurement> measurements;
};

/// Returns the middle value, or the mean of the two in the middle.
double Median(std::vector<double> values);

/// Returns the median over the passes of the first backend's time divided by the second one's in the same pass.
double MedianRatio(Result const& result, BackendKind numerator, BackendKind denominator);

/// Ends the program unless all backends read the same records from the store, in every column: otherwise they would not
/// do the same work.
void RequireSameRecords(Engine const& engine, SampleStore& store);

/// Runs a case on copies of a sample store. A first pass warms up and measures memory. In each of the following passes,
/// `repetitions` or more for short ones, the backends take turns, and each pass starts with another backend.
Result Run(Case const& benchmark, Engine const& engine, SampleStore& store, int repetitions, Clock clock);

} // namespace sync::benchmarks
