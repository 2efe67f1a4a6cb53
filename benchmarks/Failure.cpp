#include "benchmarks/Failure.h"

#include <cstdio>
#include <cstdlib>

namespace sync::benchmarks {

void Fail(QString const& reason)
{
    std::fprintf(stderr, "benchmarks: %s\n", qPrintable(reason));
    std::exit(EXIT_FAILURE);
}

} // namespace sync::benchmarks
