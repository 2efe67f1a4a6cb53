#pragma once

#include "benchmarks/Case.h"
#include "benchmarks/SampleRecords.h"

#include <QVector>

#include <vector>

namespace sync::benchmarks {

/// The cases that one sample store serves, in the order in which they run: those that change much come last.
struct Suite
{
    SampleRecords records;
    std::vector<Case> cases;
};

/// All there is, for these sizes. `passes` is how often each case will run.
std::vector<Suite> AllSuites(QVector<int> const& sizes, int passes);

} // namespace sync::benchmarks
