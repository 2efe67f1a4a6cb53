#pragma once

#include <functional>

#include <sys/types.h>

namespace tandry::test {

/// A process that runs a function and ends with its result as exit status, without the test program's own clean-up.
///
/// Copied from this process, without its other threads. No store may be open here: the copy would take its locks for
/// its own. `OtherProgram` is for that.
class ChildProcess
{
public:
    explicit ChildProcess(std::function<int()> const& function);
    /// Waits for a process that was not waited for.
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    /// The exit status, or minus the signal that ended the process.
    int Wait();

    pid_t id() const { return _id; }

private:
    pid_t _id = -1;
};

/// Runs the function in a process of its own and gives its result.
int InChildProcess(std::function<int()> const& function);

/// Ends the calling process at once, as a crash would.
[[noreturn]] void Crash();

/// Takes the rights of root from the calling process, if it has them: nothing is forbidden to root.
void DropRights();

} // namespace tandry::test
