#include "SpoolFile.h"

#include "Failure.h"
#include "StoreFailure.h"
#include "Text.h"

#include "tools/findings/TemporaryFolder.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): of POSIX
#include <unistd.h>

namespace tandryctl {

using tandry::findings::TemporaryFolder;

namespace {

Failure CannotHold(QString const& reason)
{
    return {FailureCode::StoreFailed,
            QStringLiteral("%1 cannot hold what the command sorts: %2")
                .arg(Quoted(TemporaryFolder().path()), OneLine(reason)),
            AdviceOnTemporaryFolder()};
}

} // namespace

SpoolFile::Block SpoolFile::Append(QByteArray const& bytes)
{
    if (!_file.isOpen())
        _Create();
    Block const block{_size, int(bytes.size())};
    if (!_file.seek(_size) || _file.write(bytes) != bytes.size())
        throw CannotHold(_file.errorString());
    _size += bytes.size();
    return block;
}

QByteArray SpoolFile::Read(Block const& block)
{
    QByteArray bytes;
    if (_file.seek(block.offset))
        bytes = _file.read(block.size);
    if (bytes.size() != block.size)
        throw CannotHold(_file.errorString());
    return bytes;
}

void SpoolFile::_Create()
{
    QByteArray name = QFile::encodeName(TemporaryFolder().filePath(QStringLiteral("tandry-sort-XXXXXX")));
    int const descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor == -1)
        throw CannotHold(QString::fromStdString(std::generic_category().message(errno)));
    ::unlink(name.constData());
    _file.open(descriptor, QIODevice::ReadWrite | QIODevice::Unbuffered, QFile::AutoCloseHandle);
}

} // namespace tandryctl
