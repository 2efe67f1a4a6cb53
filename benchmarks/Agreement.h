#pragma once

#include "benchmarks/SampleStore.h"

namespace sync::benchmarks {

/// Fails unless all entrants read the same records from the store, to the last member: only then is what they take to
/// be compared.
void RequireAgreement(SampleStore& store);

} // namespace sync::benchmarks
