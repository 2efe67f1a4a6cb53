#pragma once

#include <QString>

#include <functional>

#include <sys/types.h>

namespace tandry::test {

/// A forked process that runs a function and exits with its result, without the destructors of the test program.
///
/// The child has only the forking thread, and no store may be open when it is forked: SQLite would assume that the
/// child holds the parent's locks. Use `OtherProgram` if a store is open.
class ChildProcess
{
public:
    explicit ChildProcess(std::function<int()> const& function);
    /// Waits for the process unless `Wait` has been called.
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    /// Waits for the process; returns its exit status, or the negative number of the signal that ended it.
    int Wait();

    pid_t id() const { return _id; }

private:
    pid_t _id = -1;
};

/// Runs the function in a child process and returns its result.
int InChildProcess(std::function<int()> const& function);

/// Kills the calling process immediately.
[[noreturn]] void Crash();

/// Makes the calling process an unprivileged user if it is root, so that file permissions apply to it.
void DropRights();

/// Gives a file to the user that `DropRights` makes of root. Does nothing if the test is not run by root.
void GiveToUnprivilegedUser(QString const& path);

} // namespace tandry::test
