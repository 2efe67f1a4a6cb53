#pragma once

#include <QtGlobal>

#include <array>

#include <signal.h>

namespace tandryctl {

/// Lets a long command end at a point of its own choice when the user presses Ctrl-C or the process is to terminate. A
/// second signal ends the process at once, as it would without this object. Signals that the process was told to ignore
/// stay ignored. One object at a time.
class Interruption
{
public:
    Interruption();
    ~Interruption();

    /// Returns whether a signal has come.
    static bool IsRequested();

    /// Takes a signal that has come as the end that the command was told to wait for: `EndProcess` does nothing.
    static void TakeAsHandled();

    /// Ends the process by the signal that has come, so that a calling shell stops too. Does nothing if none has come.
    /// Close the store first: no destructor runs.
    static void EndProcess();

private:
    Q_DISABLE_COPY_MOVE(Interruption)

    std::array<struct sigaction, 2> _before = {};
};

} // namespace tandryctl
