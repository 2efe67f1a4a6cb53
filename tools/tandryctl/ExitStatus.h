#pragma once

namespace tandryctl {

/// What the program tells its caller. Scripts rely on the numbers: never renumber.
enum class ExitStatus : int
{
    Done = 0,
    /// Nothing matched, or what was found is not as it should be.
    NothingFound = 1,
    WrongUsage = 2,
    StoreFailed = 3,
};

} // namespace tandryctl
