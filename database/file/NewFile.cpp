#include "database/file/NewFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sync::database {

namespace {

/// A file descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : _descriptor(descriptor)
    {}
    ~Descriptor()
    {
        if (_descriptor >= 0)
            ::close(_descriptor);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    bool isValid() const { return _descriptor >= 0; }
    int get() const { return _descriptor; }

private:
    int _descriptor;
};

int SyncToDisk(QByteArray const& name, int flags)
{
    Descriptor const descriptor(::open(name.constData(), flags | O_RDONLY | O_CLOEXEC));
    return descriptor.isValid() && ::fsync(descriptor.get()) == 0 ? 0 : errno;
}

/// Gives the file its name unless something bears it already.
int RenameWithoutReplacing(QByteArray const& from, QByteArray const& to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // File systems that know no such rename mostly know links; the first name goes with the others.
    return ::link(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

NewFile::NewFile(QByteArray const& name)
    : _name(name)
{}

NewFile::~NewFile()
{
    if (_temporary.isEmpty())
        return;
    for (char const* suffix : Suffixes)
        ::unlink((_temporary + suffix).constData());
}

int NewFile::Make()
{
    QByteArray temporary = _name + ".new-XXXXXX";
    Descriptor const descriptor(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor.isValid())
        return errno;
    _temporary = temporary;
    ::fchmod(descriptor.get(), S_IRUSR | S_IWUSR); // whatever the umask lets through
    return 0;
}

int NewFile::PutInPlace() const
{
    int const errorNumber = SyncToDisk(_temporary, 0);
    return errorNumber != 0 ? errorNumber : RenameWithoutReplacing(_temporary, _name);
}

int NewFile::FlushFolder() const
{
    int const slash = _name.lastIndexOf('/');
    int const errorNumber = SyncToDisk(slash > 0 ? _name.left(slash) : QByteArray("/"), O_DIRECTORY);
    return errorNumber == EINVAL ? 0 : errorNumber; // some file systems flush no folders
}

} // namespace sync::database
