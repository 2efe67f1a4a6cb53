#pragma once

#include <QString>

#include <cstdio>
#include <cstdlib>

namespace sync::benchmarks {

/// Prints the reason on standard error and ends the program: a failed operation has no meaningful time.
[[noreturn]] inline void Fail(QString const& reason)
{
    std::fprintf(stderr, "benchmarks: %s\n", qPrintable(reason));
    std::exit(EXIT_FAILURE);
}

/// Calls `Fail` with the text unless the condition holds.
inline void Require(bool condition, char const* otherwise)
{
    if (!condition)
        Fail(QString::fromLatin1(otherwise));
}

} // namespace sync::benchmarks
