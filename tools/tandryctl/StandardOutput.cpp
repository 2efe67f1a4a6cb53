#include "StandardOutput.h"

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace tandryctl {

StandardOutput::StandardOutput()
{
    open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool StandardOutput::Settle()
{
    int const copy = ::dup(STDOUT_FILENO);
    if (copy == -1 || ::close(copy) == 0)
        return true; // closed from the start: then only a write is a failure
    _SetError(errno);
    return false;
}

Failure StandardOutput::failure() const
{
    return {FailureCode::OutputFailed,
            QStringLiteral("standard output cannot be written: %1").arg(errorString()),
            QStringLiteral("make room there or send it elsewhere; what the command has changed stays changed")};
}

qint64 StandardOutput::readData(char* /*data*/, qint64 /*maxSize*/)
{
    return -1;
}

qint64 StandardOutput::writeData(char const* data, qint64 size)
{
    qint64 written = 0;
    while (written < size) {
        ssize_t const count = ::write(STDOUT_FILENO, data + written, static_cast<size_t>(size - written));
        if (count < 0 && errno != EINTR) {
            _SetError(errno);
            return -1;
        }
        written += count < 0 ? 0 : count;
    }
    return written;
}

void StandardOutput::_SetError(int errorNumber)
{
    setErrorString(QString::fromStdString(std::generic_category().message(errorNumber)));
}

} // namespace tandryctl
