#include "database/file/StoreHeader.h"

#include "database/file/StoreFile.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/SqliteHandle.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace sync::database {

/// Reads through a file that SQLite opened: if the process closed a descriptor of its own on the file, the operating
/// system would drop the locks that other connections of the process hold on it.
Failure StoreHeader::Read(StoreFile const& file)
{
    SqliteHandle handle;
    int code = OpenHandle(file.name(), SQLITE_OPEN_READONLY, handle);
    if (code == SQLITE_OK) {
        sqlite3_file* opened = nullptr;
        sqlite3_file_control(handle.get(), "main", SQLITE_FCNTL_FILE_POINTER, &opened);
        code = opened->pMethods->xRead(opened, _bytes, Size, 0);
    }
    if (code == SQLITE_OK || code == SQLITE_IOERR_SHORT_READ)
        return {};
    return DescribeError(handle.get(), code, file.path());
}

Failure StoreHeader::Check(StoreFile const& file)
{
    auto const refuse = [&](int code, QString const& words) { return MakeError(file.path(), code, words); };

    struct stat status = {};
    if (::stat(file.name(), &status) != 0)
        return DescribeSystemError(file.path(), QStringLiteral("the store can't be opened"), errno);
    if (S_ISDIR(status.st_mode))
        return refuse(SQLITE_CANTOPEN, QStringLiteral("this is a folder"));
    if (!S_ISREG(status.st_mode))
        return refuse(SQLITE_CANTOPEN, QStringLiteral("this is no ordinary file"));
    if (status.st_size == 0)
        return refuse(SQLITE_NOTADB, QStringLiteral("the file is empty: a store never is, so what was in it got lost"));

    StoreHeader header;
    if (Failure failure = header.Read(file))
        return failure;
    if (header.isBlank())
        return refuse(SQLITE_NOTADB,
                      QStringLiteral("the file begins with zeros: a store never does, so what was in it got lost"));
    if (header.isRestoreNotice())
        return refuse(SQLITE_NOTADB,
                      QStringLiteral("a backup was being restored here, which was interrupted; restore it again. The "
                                     "earlier store is kept beside this file"));
    if (status.st_size < Size || !header.isSqlite())
        return refuse(SQLITE_NOTADB, QStringLiteral("the file is no SQLite database"));
    if (header.applicationId() != schema::ApplicationId)
        return refuse(SQLITE_NOTADB, QStringLiteral("the database belongs to another application"));
    if (header.version() != schema::Version && !schema::IsOlder(header.version()))
        return schema::OtherVersion(file.path(), header.version());
    return {};
}

qint64 StoreHeader::length() const
{
    quint16 const pageSize = qFromBigEndian<quint16>(_bytes + 16); // 1 stands for 65,536
    return qint64(pageSize == 1 ? 65536 : pageSize) * qFromBigEndian<quint32>(_bytes + 28);
}

bool StoreHeader::isBlank() const
{
    return std::all_of(std::begin(_bytes), std::end(_bytes), [](char byte) { return byte == 0; });
}

bool StoreHeader::isSqlite() const
{
    return std::memcmp(_bytes, "SQLite format 3", 16) == 0;
}

bool StoreHeader::isRestoreNotice() const
{
    return std::memcmp(_bytes, RestoreNotice, std::strlen(RestoreNotice)) == 0;
}

qint32 StoreHeader::version() const
{
    return qFromBigEndian<qint32>(_bytes + 60);
}

qint32 StoreHeader::applicationId() const
{
    return qFromBigEndian<qint32>(_bytes + 68);
}

} // namespace sync::database
