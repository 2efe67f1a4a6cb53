#include "Terminal.h"

#include <iostream>
#include <string>

#include <unistd.h>

namespace tandryctl {

void Tell(QString const& text)
{
    std::cerr << text.toUtf8().constData() << std::flush;
}

void Complain(QString const& line)
{
    Tell(QStringLiteral("tandryctl: %1\n").arg(line));
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
    Tell(question + QStringLiteral(" [y/N] "));
    std::string answer;
    if (!std::getline(std::cin, answer))
        Tell(QStringLiteral("\n")); // the answer was an end of input, which leaves the cursor behind the question
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

} // namespace tandryctl
