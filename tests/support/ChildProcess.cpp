#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <QFile>

#include <csignal>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

namespace tandry::test {

ChildProcess::ChildProcess(std::function<int()> const& function)
    : _id(::fork())
{
    EXPECT_GE(_id, 0);
    if (_id == 0)
        ::_exit(function());
}

ChildProcess::~ChildProcess()
{
    if (_id > 0)
        Wait();
}

int ChildProcess::Wait()
{
    int status = 0;
    EXPECT_EQ(::waitpid(_id, &status, 0), _id);
    _id = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int InChildProcess(std::function<int()> const& function)
{
    return ChildProcess(function).Wait();
}

void Crash()
{
    ::kill(::getpid(), SIGKILL);
    std::abort();
}

namespace {

constexpr id_t Nobody = 65534;

} // namespace

void DropRights()
{
    if (::geteuid() == 0 && (::setgid(Nobody) != 0 || ::setuid(Nobody) != 0))
        std::abort();
}

void GiveToUnprivilegedUser(QString const& path)
{
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(QFile::encodeName(path).constData(), Nobody, Nobody), 0) << path.toStdString();
    }
}

} // namespace tandry::test
