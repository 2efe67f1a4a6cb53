#include "Terminal.h"

#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

namespace tandryctl {

void Complain(QString const& line)
{
    std::fprintf(stderr, "tandryctl: %s\n", line.toUtf8().constData());
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
    std::fprintf(stderr, "%s [y/N] ", question.toUtf8().constData());
    std::string answer;
    if (!std::getline(std::cin, answer))
        std::fputc('\n', stderr); // the answer was an end of input, which leaves the cursor behind the question
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

} // namespace tandryctl
