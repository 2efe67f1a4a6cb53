#pragma once

#include <QString>

namespace tandryctl {

/// Writes to standard error as it is. What can't be written there is lost: nobody is left to be told.
void Tell(QString const& text);

/// One line on standard error, under the program's name.
void Complain(QString const& line);

/// Whether standard error is a terminal, so that progress may be drawn there.
[[nodiscard]] bool CanShowProgress();

/// Whether someone can be asked: both the question and the answer go over a terminal.
[[nodiscard]] bool CanAsk();

/// Asks on the terminal and waits for an answer; only one that begins with "y" is a yes.
[[nodiscard]] bool Ask(QString const& question);

} // namespace tandryctl
