#pragma once

#include <QString>

namespace sync::benchmarks {

/// Ends the program with a line on standard error: a benchmark of something that failed measures nothing.
[[noreturn]] void Fail(QString const& reason);

/// Fails unless it holds. For answers that a contestant has to get right.
inline void Require(bool holds, char const* what)
{
    if (!holds)
        Fail(QString::fromLatin1(what));
}

} // namespace sync::benchmarks
