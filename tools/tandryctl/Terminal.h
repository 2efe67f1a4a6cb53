#pragma once

#include "Output.h"

#include <QString>

namespace tandryctl {

class Failure;

/// Occupies the standard streams that are closed, so that no file gets their numbers. Reading and writing them goes on
/// failing.
void OccupyClosedStreams();

/// Writes text to standard error. Ignores failures.
void WriteError(QString const& text);

/// Prints one line that is no failure to standard error, prefixed with the program's name.
void PrintNote(QString const& line);

/// Prints a failure to standard error: a line for people, or an object for programs.
void PrintFailure(Failure const& failure, OutputFormat format);

/// Returns whether standard error is a terminal.
[[nodiscard]] bool CanShowProgress();

/// Returns whether both standard input and standard error are terminals.
[[nodiscard]] bool CanAsk();

/// Asks a question on the terminal. Returns whether the answer begins with "y" or "Y".
[[nodiscard]] bool Ask(QString const& question);

} // namespace tandryctl
