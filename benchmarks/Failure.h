#pragma once

#include <QString>
#include <QTextStream>

#include <cstdlib>

namespace sync::benchmarks {

/// Prints the reason on standard error and ends the program: a failed operation has no meaningful time.
[[noreturn]] inline void Fail(QString const& reason)
{
    QTextStream(stderr) << "benchmarks: " << reason << '\n';
    std::_Exit(EXIT_FAILURE); // other threads may still be running
}

/// Calls `Fail` with the text unless the condition holds.
inline void Require(bool condition, char const* otherwise)
{
    if (!condition)
        Fail(QString::fromLatin1(otherwise));
}

} // namespace sync::benchmarks
