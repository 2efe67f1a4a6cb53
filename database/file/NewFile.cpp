#include "database/file/NewFile.h"

#include "database/sqlite/ErrorTexts.h"

#include <QFileInfo>

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

// The functions below return 0 or the operating system's error number.

int SyncToDisk(char const* name, int flags)
{
    Descriptor const descriptor(::open(name, flags | O_RDONLY | O_CLOEXEC));
    return descriptor.isValid() && ::fsync(descriptor.get()) == 0 ? 0 : errno;
}

/// Flushes the folder of a file: until then a power cut may take the file's name.
int SyncFolderOf(QByteArray const& name)
{
    int const slash = name.lastIndexOf('/');
    QByteArray const folder = slash > 0 ? name.left(slash) : QByteArray("/");
    int const errorNumber = SyncToDisk(folder.constData(), O_DIRECTORY);
    return errorNumber == EINVAL ? 0 : errorNumber; // the file system flushes no folders
}

int RenameWithoutReplacing(QByteArray const& from, char const* to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Most file systems without such a rename have hard links. The temporary name is removed later.
    return ::link(from.constData(), to) == 0 ? 0 : errno;
}

} // namespace

NewFile::NewFile(StoreFile const& target)
    : _target(target)
{}

NewFile::~NewFile()
{
    if (_temporary.isEmpty())
        return;
    for (char const* suffix : DatabaseSuffixes)
        ::unlink((_temporary + suffix).constData());
}

Failure NewFile::Create()
{
    QByteArray temporary = QByteArray(_target.name()) + ".new-XXXXXX";
    Descriptor const descriptor(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor.isValid())
        return DescribeSystemError(
            _target.path(),
            QStringLiteral("the file can't be made in %1").arg(QFileInfo(_target.path()).absolutePath()),
            errno);
    _temporary = temporary;
    ::fchmod(descriptor.get(), S_IRUSR | S_IWUSR); // the umask may have taken rights from the owner
    return {};
}

int NewFile::Open(SqliteHandle& handle) const
{
    int const code = OpenHandle(_temporary.constData(), SQLITE_OPEN_READWRITE, handle);
    return code == SQLITE_OK ? Execute(handle.get(), "PRAGMA journal_mode = MEMORY") : code;
}

Failure NewFile::Publish(bool& isTaken) const
{
    isTaken = false;
    int errorNumber = SyncToDisk(_temporary.constData(), 0);
    if (errorNumber == 0)
        errorNumber = RenameWithoutReplacing(_temporary, _target.name());
    if (errorNumber == EEXIST) {
        isTaken = true;
        return {};
    }
    if (errorNumber != 0)
        return DescribeSystemError(_target.path(), QStringLiteral("the new file can't be put in place"), errorNumber);
    errorNumber = SyncFolderOf(_target.name());
    if (errorNumber != 0)
        return DescribeSystemError(
            _target.path(),
            QStringLiteral("the new file is whole, but its folder can't be flushed and may lose it in a power cut"),
            errorNumber);
    return {};
}

} // namespace sync::database
