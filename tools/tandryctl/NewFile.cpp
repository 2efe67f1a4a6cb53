#include "NewFile.h"

#include "Text.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace tandryctl {

namespace {

QString ReasonOf(int errorNumber)
{
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

Failure NotWritten(QString const& path, QString const& reason)
{
    return {FailureCode::OutputFailed,
            QStringLiteral("the file %1 cannot be written: %2").arg(Quoted(path), OneLine(reason)),
            QStringLiteral("make room there or give a name elsewhere")};
}

[[noreturn]] void ThrowNotCreated(QString const& path, int errorNumber)
{
    if (errorNumber == EEXIST)
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("the file %1 exists already").arg(Quoted(path)),
                      QStringLiteral("give a name that is not taken; a file is never replaced"));
    throw Failure(FailureCode::UnusableFile,
                  QStringLiteral("the file %1 cannot be created: %2").arg(Quoted(path), ReasonOf(errorNumber)),
                  QStringLiteral("give a name in a folder that you may write"));
}

} // namespace

NewFile::NewFile(QString const& path)
    : _path(path)
{
    int const descriptor =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor == -1)
        ThrowNotCreated(path, errno);
    _file.open(descriptor, QIODevice::WriteOnly, QFile::AutoCloseHandle);
}

NewFile::~NewFile()
{
    if (!_isKept)
        QFile::remove(_path);
}

void NewFile::Finish()
{
    if (!_file.flush())
        throw failure();
    if (::fsync(_file.handle()) != 0)
        throw NotWritten(_path, ReasonOf(errno));
    _isKept = true;
}

Failure NewFile::failure() const
{
    return NotWritten(_path, _file.errorString());
}

} // namespace tandryctl
