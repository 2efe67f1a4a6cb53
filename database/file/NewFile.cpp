#include "database/file/NewFile.h"

#include "database/file/Descriptor.h"
#include "database/file/DiskFlush.h"
#include "database/file/ExclusiveLock.h"
#include "database/sqlite/ErrorTexts.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sync::database {

namespace {

/// Reads through files that SQLite opened: to close a descriptor of one's own on a file that is open as a store would
/// drop the store's locks. Returns SQLite's result code.
int CompareBytes(char const* first, char const* second, qint64 size, bool& areSame)
{
    areSame = false;
    SqliteHandle handles[2];
    sqlite3_file* files[2] = {};
    int code = OpenHandle(first, SQLITE_OPEN_READONLY, handles[0]);
    if (code == SQLITE_OK)
        code = OpenHandle(second, SQLITE_OPEN_READONLY, handles[1]);
    if (code != SQLITE_OK)
        return code;
    for (int i : {0, 1})
        sqlite3_file_control(handles[i].get(), "main", SQLITE_FCNTL_FILE_POINTER, &files[i]);
    constexpr int chunkSize = 65536;
    std::vector<char> chunks[2] = {std::vector<char>(chunkSize), std::vector<char>(chunkSize)};
    for (qint64 offset = 0; offset < size; offset += chunkSize) {
        int const length = static_cast<int>(std::min<qint64>(chunkSize, size - offset));
        for (int i : {0, 1}) {
            code = files[i]->pMethods->xRead(files[i], chunks[i].data(), length, offset);
            if (code != SQLITE_OK)
                return code;
        }
        if (std::memcmp(chunks[0].data(), chunks[1].data(), std::size_t(length)) != 0)
            return SQLITE_OK;
    }
    areSame = true;
    return SQLITE_OK;
}

/// Returns 0 or the operating system's error number.
int RenameWithoutReplacing(QByteArray const& from, char const* to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Most file systems without such a rename have hard links.
    if (::link(from.constData(), to) != 0)
        return errno;
    ::unlink(from.constData());
    return 0;
}

Failure CheckNothingIsLeft(StoreFile const& target)
{
    QStringList const left = target.FilesBeside();
    if (left.isEmpty())
        return {};
    return MakeError(target.path(),
                     SQLITE_CANTOPEN,
                     QStringLiteral("there is no such file, but an earlier one has left %1, which SQLite would play "
                                    "into a new one. It may hold the last changes of the earlier file: put that file "
                                    "back, or move away what it has left")
                         .arg(left.join(QStringLiteral(" and "))));
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

Failure NewFile::CheckTarget(bool& isTaken) const
{
    if (Failure failure = _target.CheckNewName())
        return failure;
    // In this order: the files beside one that is being used come after it and go before it.
    Failure failure = CheckNothingIsLeft(_target);
    struct stat status = {};
    isTaken = ::lstat(_target.name(), &status) == 0;
    return isTaken ? Failure() : failure;
}

Failure NewFile::CheckFolder() const
{
    return ::access(_target.folder().constData(), W_OK | X_OK) == 0 ? Failure() : CannotCreate(errno);
}

Failure NewFile::Create(std::optional<FileOwner> const& owner)
{
    QByteArray temporary = QByteArray(_target.name()) + ".new-XXXXXX";
    Descriptor const descriptor(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor.isValid())
        return CannotCreate(errno);
    _temporary = temporary;
    ::fchmod(descriptor.get(), S_IRUSR | S_IWUSR); // the umask may have taken rights from the owner
    if (owner)
        GiveTo(*owner, descriptor.get());
    return {};
}

int NewFile::Open(SqliteHandle& handle) const
{
    int const code = OpenHandle(_temporary.constData(), SQLITE_OPEN_READWRITE, handle);
    return code == SQLITE_OK ? Execute(handle.get(), "PRAGMA journal_mode = MEMORY") : code;
}

Failure NewFile::Compare(StoreFile const& other, bool& isSame) const
{
    isSame = false;
    struct stat own = {};
    struct stat others = {};
    bool const mayBeSame = ::lstat(_temporary.constData(), &own) == 0 && ::lstat(other.name(), &others) == 0 &&
                           own.st_mode == others.st_mode && own.st_uid == others.st_uid &&
                           own.st_size == others.st_size && other.FilesBeside().isEmpty();
    if (!mayBeSame)
        return {};
    int const code = CompareBytes(_temporary.constData(), other.name(), own.st_size, isSame);
    return code == SQLITE_OK ? Failure() : DescribeError(nullptr, code, other.path());
}

Failure NewFile::Publish(bool& isTaken) const
{
    Failure failure = PutInPlace(isTaken);
    return failure || isTaken ? failure : FlushName();
}

Failure NewFile::PutInPlace(bool& isTaken) const
{
    isTaken = false;
    if (int const errorNumber = FlushFile(_temporary.constData()); errorNumber != 0)
        return CannotPutInPlace(errorNumber);
    // Without the lock, what is found beside the file could be of a connection that opened it right after the rename.
    ExclusiveLock lock(file());
    if (Failure failure = lock.Take())
        return failure;
    std::optional<FileIdentity> const identity = IdentityAt(_temporary.constData());
    int const errorNumber = RenameWithoutReplacing(_temporary, _target.name());
    isTaken = errorNumber == EEXIST;
    if (errorNumber != 0)
        return isTaken ? Failure() : CannotPutInPlace(errorNumber);

    Failure failure = CheckNothingIsLeft(_target);
    if (failure && IdentityAt(_target.name()) == identity) {
        ::unlink(_target.name());
        static_cast<void>(FlushFolder(_target.folder())); // a power cut may bring the name back until then
    }
    return failure;
}

Failure NewFile::Replace() const
{
    int errorNumber = FlushFile(_temporary.constData());
    if (errorNumber == 0 && ::rename(_temporary.constData(), _target.name()) != 0)
        errorNumber = errno;
    return errorNumber == 0 ? FlushName() : CannotPutInPlace(errorNumber);
}

Failure NewFile::FlushName() const
{
    int const errorNumber = FlushFolder(_target.folder());
    if (errorNumber == 0)
        return {};
    return DescribeSystemError(
        _target.path(),
        QStringLiteral("the new file is whole, but its folder can't be flushed and may lose it in a power cut"),
        errorNumber);
}

Failure NewFile::CannotCreate(int errorNumber) const
{
    return DescribeSystemError(
        _target.path(),
        QStringLiteral("the file can't be made in %1").arg(QFileInfo(_target.path()).absolutePath()),
        errorNumber);
}

Failure NewFile::CannotPutInPlace(int errorNumber) const
{
    return DescribeSystemError(_target.path(), QStringLiteral("the new file can't be put in place"), errorNumber);
}

} // namespace sync::database
