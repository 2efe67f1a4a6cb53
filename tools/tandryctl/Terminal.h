#pragma once

#include "Output.h"

#include <QString>

#include <optional>

namespace tandryctl {

class Failure;

/// Occupies the standard streams that are closed, so that no file gets their numbers. Reading and writing them goes on
/// failing.
void OccupyClosedStreams();

/// Writes text to standard error. Ignores failures.
void WriteError(QString const& text);

/// When texts on a terminal have colours.
enum class ColourMode
{
    Never,
    /// On a terminal that has them, unless the environment variable NO_COLOR is set and not empty.
    Automatic,
    Always
};

/// What standard error gets besides failures, warnings and questions.
enum class Verbosity
{
    Quiet,
    /// Notes and progress.
    Usual,
    /// The lines that the library logs too.
    Verbose
};

/// How the program uses its terminal.
struct TerminalUse
{
    ColourMode colours = ColourMode::Automatic;
    Verbosity verbosity = Verbosity::Usual;
};

/// Sets it for the whole process, before anything is printed.
void SetTerminalUse(TerminalUse const& use);

/// Returns whether texts on this stream, by its number, have colours.
[[nodiscard]] bool HasColours(int stream);

/// Returns the number of columns of the terminal that this stream, by its number, is now; nothing if it is no terminal.
[[nodiscard]] std::optional<int> TerminalWidth(int stream);

/// Prints one line that is no failure to standard error, prefixed with the program's name.
void PrintWarning(QString const& line);

/// The same for a line that is not printed with --quiet.
void PrintNote(QString const& line);

/// Prints a failure to standard error: a line for people, or an object for programs.
void PrintFailure(Failure const& failure, OutputFormat format);

/// Returns whether standard error is a terminal and takes more than what must be said.
[[nodiscard]] bool CanShowProgress();

/// Returns whether both standard input and standard error are terminals.
[[nodiscard]] bool CanAsk();

/// Asks a question on the terminal. Returns whether the answer begins with "y" or "Y".
[[nodiscard]] bool Ask(QString const& question);

} // namespace tandryctl
