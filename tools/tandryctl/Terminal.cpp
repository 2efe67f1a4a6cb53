#include "Terminal.h"

#include "Failure.h"

#include <iostream>
#include <string>

#include <QLoggingCategory>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tandryctl {

namespace {

/// Changed only by `SetTerminalUse`.
TerminalUse terminalUse;

} // namespace

void SetTerminalUse(TerminalUse const& use)
{
    terminalUse = use;
    // Without --verbose, the commands print the store's errors themselves and nothing else.
    QLoggingCategory::setFilterRules(use.verbosity == Verbosity::Verbose ? QStringLiteral("tandry.database*=true")
                                                                         : QStringLiteral("tandry.database*=false"));
}

bool HasColours(int stream)
{
    switch (terminalUse.colours) {
    case ColourMode::Never:
        return false;
    case ColourMode::Always:
        return true;
    case ColourMode::Automatic:
        break;
    }
    QByteArray const terminal = qgetenv("TERM");
    return qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() && terminal != "dumb" &&
           ::isatty(stream) == 1;
}

std::optional<int> TerminalWidth(int stream)
{
    constexpr int usualWidth = 80;
    if (::isatty(stream) != 1)
        return std::nullopt;
    winsize size{};
    // A terminal that does not know its size says 0.
    if (::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return usualWidth;
}

void OccupyClosedStreams()
{
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) == -1)
            static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

void WriteError(QString const& text)
{
    std::cerr << text.toUtf8().constData() << std::flush;
}

void PrintWarning(QString const& line)
{
    WriteError(QStringLiteral("tandryctl: %1\n").arg(line));
}

void PrintNote(QString const& line)
{
    if (terminalUse.verbosity != Verbosity::Quiet)
        PrintWarning(line);
}

void PrintFailure(Failure const& failure, OutputFormat format)
{
    QString const text = failure.InFormat(format);
    bool const isStyled = format == OutputFormat::Plain && HasColours(STDERR_FILENO);
    WriteError((isStyled ? Styled(text, Style::Bad) : text) + QLatin1Char('\n'));
}

bool CanShowProgress()
{
    return ::isatty(STDERR_FILENO) == 1 && terminalUse.verbosity != Verbosity::Quiet;
}

bool CanAsk()
{
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

bool Ask(QString const& question)
{
    WriteError(question + QStringLiteral(" [y/N] "));
    std::string answer;
    if (!std::getline(std::cin, answer))
        WriteError(QStringLiteral("\n")); // end of input: the terminal has not moved to a new line
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

} // namespace tandryctl
