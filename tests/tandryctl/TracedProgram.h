#pragma once

#include <QStringList>

#include <optional>

namespace tandryctl::test {

/// How a program ended that was to be killed at one of its system calls that change a file.
struct TracedRun
{
    bool wasKilled = false;
    /// The exit status if it was not killed.
    int status = -1;
};

/// Runs the program and kills it in front of its system call number `step`, counted from 1, of those that may change a
/// file, a folder or what the disk holds of them. Returns nothing if the system does not let processes be traced.
std::optional<TracedRun> RunAndKillAt(int step, QString const& program, QStringList const& arguments);

} // namespace tandryctl::test
