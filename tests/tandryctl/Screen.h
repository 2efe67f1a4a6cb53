#pragma once

#include "ToolFixture.h"

#include <functional>

namespace tandryctl::test {

/// A terminal to run the program on.
struct Screen
{
    /// 0 for a terminal that does not know its size.
    int columns = 0;
    /// Variables that are added to the program's environment; NO_COLOR is removed from it.
    QStringList environment;
};

/// Runs the built program with these arguments on a terminal. `out` contains both streams as shown by the terminal.
/// `type` is called with what is shown so far at the beginning and each time that there is more, and with the other end
/// of the terminal as a file descriptor; it returns the keys to type.
RunResult RunOnScreen(QStringList const& arguments,
                      Screen const& screen,
                      std::function<QByteArray(QByteArray const& shown, int terminal)> const& type = {});

} // namespace tandryctl::test
