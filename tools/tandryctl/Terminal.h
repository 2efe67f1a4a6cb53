#pragma once

#include <QString>

namespace tandryctl {

/// Occupies the standard streams that are closed, so that no file gets their numbers. Reading and writing them goes on
/// failing.
void OccupyClosedStreams();

/// Writes text to standard error. Ignores failures.
void WriteError(QString const& text);

/// Prints one line to standard error, prefixed with the program's name.
void PrintError(QString const& line);

/// Returns whether standard error is a terminal.
[[nodiscard]] bool CanShowProgress();

/// Returns whether both standard input and standard error are terminals.
[[nodiscard]] bool CanAsk();

/// Asks a question on the terminal. Returns whether the answer begins with "y" or "Y".
[[nodiscard]] bool Ask(QString const& question);

} // namespace tandryctl
