#pragma once

namespace tandryctl {

/// The program's exit status. Scripts rely on the numbers: never renumber.
enum class ExitStatus : int
{
    Done = 0,
    /// Nothing matched, or a problem was found.
    NothingFound = 1,
    WrongUsage = 2,
    /// The store failed, or the output could not be written.
    Failed = 3,
};

} // namespace tandryctl
