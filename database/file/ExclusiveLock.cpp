#include "database/file/ExclusiveLock.h"

#include "database/file/Descriptor.h"
#include "database/file/StorePresence.h"
#include "database/sqlite/ErrorTexts.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace sync::database {

ExclusiveLock::ExclusiveLock(StoreFile file)
    : _file(std::move(file))
{}

ExclusiveLock::~ExclusiveLock()
{
    if (_opened != nullptr)
        _opened->pMethods->xUnlock(_opened, SQLITE_LOCK_NONE);
}

Failure ExclusiveLock::Take()
{
    if (StorePresence::IsAnnounced(_file))
        return DescribeError(nullptr, SQLITE_BUSY, _file.path());
    int code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, _handle);
    if (code != SQLITE_OK)
        return DescribeError(_handle.get(), code, _file.path());
    if (sqlite3_db_readonly(_handle.get(), "main") != 0)
        return DescribeError(nullptr, SQLITE_READONLY, _file.path());
    sqlite3_file_control(_handle.get(), "main", SQLITE_FCNTL_FILE_POINTER, &_opened);
    for (int const lock : {SQLITE_LOCK_SHARED, SQLITE_LOCK_EXCLUSIVE}) {
        if (code == SQLITE_OK)
            code = _opened->pMethods->xLock(_opened, lock);
    }
    return code == SQLITE_OK ? Failure() : DescribeError(nullptr, code, _file.path());
}

int ExclusiveLock::CopyTo(char const* name) const
{
    constexpr int PortionBytes = 1024 * 1024;
    sqlite3_int64 size = 0;
    if (_opened->pMethods->xFileSize(_opened, &size) != SQLITE_OK)
        return EIO;
    Descriptor const target(::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!target.isValid())
        return errno;
    for (sqlite3_int64 offset = 0; offset < size;) {
        int const bytes = static_cast<int>(std::min<sqlite3_int64>(size - offset, PortionBytes));
        QByteArray portion(bytes, Qt::Uninitialized);
        if (_opened->pMethods->xRead(_opened, portion.data(), bytes, offset) != SQLITE_OK)
            return EIO;
        ssize_t const written = ::write(target.get(), portion.constData(), static_cast<size_t>(portion.size()));
        if (written <= 0)
            return written < 0 ? errno : EIO;
        offset += written;
    }
    return ::fsync(target.get()) == 0 ? 0 : errno;
}

} // namespace sync::database
