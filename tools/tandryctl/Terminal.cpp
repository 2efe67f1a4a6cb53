#include "Terminal.h"

#include "Failure.h"

#include <iostream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace tandryctl {

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

void PrintNote(QString const& line)
{
    WriteError(QStringLiteral("tandryctl: %1\n").arg(line));
}

void PrintFailure(Failure const& failure, OutputFormat format)
{
    WriteError(failure.InFormat(format) + QLatin1Char('\n'));
}

bool CanShowProgress()
{
    return ::isatty(STDERR_FILENO) == 1;
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
