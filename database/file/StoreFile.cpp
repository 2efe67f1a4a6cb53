#include "database/file/StoreFile.h"

#include "database/file/NewFile.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace sync::database {

namespace {

FileIdentity IdentityOf(struct stat const& status)
{
    return {status.st_dev, status.st_ino};
}

/// Asks for no time: file systems that keep fine-grained times only for files whose time was asked for would have to
/// note one at each later write.
std::optional<FileIdentity> IdentityAt(char const* name)
{
#ifdef STATX_INO
    struct statx asked = {};
    if (::statx(AT_FDCWD, name, 0, STATX_INO, &asked) == 0)
        return FileIdentity{::makedev(asked.stx_dev_major, asked.stx_dev_minor), static_cast<ino_t>(asked.stx_ino)};
#endif
    struct stat status = {}; // where the kernel, or a sandbox, doesn't know the call
    if (::stat(name, &status) != 0)
        return std::nullopt;
    return IdentityOf(status);
}

/// Something is written by way of the log: only that shows whether one works in this place.
int SwitchToLog(sqlite3* handle)
{
    if (QueryText(handle, "PRAGMA journal_mode = WAL") != "wal")
        return SQLITE_CANTOPEN;
    QByteArray const write =
        "BEGIN IMMEDIATE; PRAGMA user_version = 0; PRAGMA user_version = " + QByteArray::number(schema::Version) +
        "; COMMIT;";
    int const code = Execute(handle, write.constData());
    return code != SQLITE_OK ? code
                             : sqlite3_wal_checkpoint_v2(handle, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

} // namespace

/// The fields of the engine's file header that tell whether a file is a store.
struct StoreFile::Header
{
    static constexpr int Size = 100;

    char bytes[Size] = {};

    bool isBlank() const
    {
        return std::all_of(std::begin(bytes), std::end(bytes), [](char byte) { return byte == 0; });
    }
    bool isSqlite() const { return std::memcmp(bytes, "SQLite format 3", 16) == 0; }
    bool usesLog() const { return bytes[19] == 2; }
    qint32 version() const { return qFromBigEndian<qint32>(bytes + 60); }
    qint32 applicationId() const { return qFromBigEndian<qint32>(bytes + 68); }
};

bool operator==(FileIdentity const& left, FileIdentity const& right)
{
    return left.device == right.device && left.inode == right.inode;
}

bool operator==(FileStamp const& left, FileStamp const& right)
{
    return left.identity == right.identity && left.size == right.size && left.hasLog == right.hasLog &&
           left.modified.tv_sec == right.modified.tv_sec && left.modified.tv_nsec == right.modified.tv_nsec;
}

StoreFile::StoreFile(QString const& path)
    : StoreFile(QFileInfo(path).absoluteFilePath(), QFile::encodeName(QFileInfo(path).absoluteFilePath()))
{}

StoreFile::StoreFile(QString const& path, QByteArray const& name)
    : _path(path)
    , _name(name)
    , _logName(_name + "-wal")
    , _journalName(_name + "-journal")
{}

StoreFile StoreFile::Under(QByteArray const& name) const
{
    return {_path, name};
}

Failure StoreFile::CheckName() const
{
    if (_path.isEmpty())
        return MakeError(QStringLiteral("the store"), SQLITE_CANTOPEN, QStringLiteral("no file was named"));
    // A null character would cut the name off, and what the locale can't express would become another name.
    if (_path.contains(QChar::Null) || QFile::decodeName(_name) != _path)
        return MakeError(_path, SQLITE_CANTOPEN, QStringLiteral("this can't be a file's name here"));
    return {};
}

std::optional<FileIdentity> StoreFile::Identity() const noexcept
{
    return IdentityAt(name());
}

std::optional<FileIdentity> StoreFile::LogIdentity() const noexcept
{
    return IdentityAt(_logName.constData());
}

std::optional<FileStamp> StoreFile::Stamp() const noexcept
{
    struct stat status = {};
    if (::stat(name(), &status) != 0)
        return std::nullopt;
    return FileStamp{IdentityOf(status), status.st_size, status.st_mtim, LogIdentity().has_value()};
}

bool StoreFile::HasJournal() const noexcept
{
    return ::access(_journalName.constData(), F_OK) == 0;
}

bool StoreFile::IsMissing() const noexcept
{
    struct stat status = {};
    return ::lstat(name(), &status) != 0 && errno == ENOENT;
}

bool StoreFile::IsFree() const
{
    struct stat status = {};
    return std::all_of(std::begin(Suffixes), std::end(Suffixes), [&](char const* suffix) {
        return ::lstat((_name + suffix).constData(), &status) != 0;
    });
}

/// Reads through the engine's own file: a descriptor of ours would drop, when closed, the locks that another connection
/// of this process holds on the file.
Failure StoreFile::ReadHeader(Header& header) const
{
    SqliteHandle handle;
    int code = OpenHandle(name(), SQLITE_OPEN_READONLY, handle);
    if (code == SQLITE_OK) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(handle.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
        code = file->pMethods->xRead(file, header.bytes, Header::Size, 0);
    }
    if (code == SQLITE_OK || code == SQLITE_IOERR_SHORT_READ) // what is missing is zero then
        return {};
    return DescribeError(handle.get(), code, _path);
}

Failure StoreFile::CheckHeader() const
{
    struct stat status = {};
    if (::stat(name(), &status) != 0)
        return DescribeSystemError(_path, QStringLiteral("the store can't be opened"), errno);
    if (S_ISDIR(status.st_mode))
        return MakeError(_path, SQLITE_CANTOPEN, QStringLiteral("this is a folder"));
    if (!S_ISREG(status.st_mode))
        return MakeError(_path, SQLITE_CANTOPEN, QStringLiteral("this is no ordinary file"));
    if (status.st_size == 0)
        return MakeError(
            _path, SQLITE_NOTADB, QStringLiteral("the file is empty: a store never is, so what was in it got lost"));

    Header header;
    if (Failure failure = ReadHeader(header))
        return failure;
    if (header.isBlank())
        return MakeError(_path,
                         SQLITE_NOTADB,
                         QStringLiteral("the file begins with zeros: a store never does, so what was in it got lost"));
    if (status.st_size < Header::Size || !header.isSqlite())
        return MakeError(_path, SQLITE_NOTADB, QStringLiteral("the file is no SQLite database"));
    if (header.applicationId() != schema::ApplicationId)
        return MakeError(_path, SQLITE_NOTADB, QStringLiteral("the database belongs to another application"));
    if (header.version() != schema::Version && !schema::IsOlder(header.version()))
        return MakeError(_path, SQLITE_SCHEMA, schema::OtherVersion(header.version()));
    return {};
}

Failure StoreFile::CheckLength(sqlite3* handle) const
{
    // While the statement stands on its row, nobody can change the file by way of a journal.
    StatementHandle counting;
    int code = PrepareOwn(handle, "SELECT page_count * page_size FROM pragma_page_count, pragma_page_size", counting);
    if (code == SQLITE_OK)
        code = sqlite3_step(counting.get());
    sqlite3_int64 size = 0;
    sqlite3_file* file = nullptr;
    if (code == SQLITE_ROW)
        code = sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (code == SQLITE_OK)
        code = file->pMethods->xFileSize(file, &size);
    if (code != SQLITE_OK)
        return DescribeError(handle, code, _path);

    struct stat log = {};
    bool const mayBeInLog = ::stat(_logName.constData(), &log) == 0 && log.st_size > 0;
    if (mayBeInLog || size >= sqlite3_column_int64(counting.get(), 0))
        return {};
    return MakeError(_path, SQLITE_CORRUPT, QStringLiteral("the store is damaged (the file's end is missing)"));
}

Failure StoreFile::OpenForReading(SqliteHandle& handle, std::optional<FileStamp>& stamp) const
{
    Header header;
    if (Failure failure = ReadHeader(header))
        return failure;

    QByteArray opened = _name;
    int flags = SQLITE_OPEN_READONLY;
    stamp = header.usesLog() ? Stamp() : std::nullopt;
    if (stamp && !stamp->hasLog) { // the engine would make one
        opened = "file:" + _name.toPercentEncoding("/") + "?immutable=1";
        flags |= SQLITE_OPEN_URI;
    }
    else {
        stamp.reset();
        auto const isThere = [this](char const* suffix) { return ::access((_name + suffix).constData(), F_OK) == 0; };
        if (isThere("-wal") && !isThere("-shm")) // it would make this one too, whatever the header says about a log
            return MakeError(_path,
                             SQLITE_CANTOPEN,
                             QStringLiteral("the store was not closed well and must be opened for writing once"));
    }

    int code = OpenHandle(opened.constData(), flags, handle);
    if (code == SQLITE_OK)
        code = Execute(handle.get(), "PRAGMA schema_version");
    return code == SQLITE_OK ? Failure() : DescribeError(handle.get(), code, _path);
}

int StoreFile::ConvertToJournal() const
{
    SqliteHandle handle;
    int const code = OpenHandle(name(), SQLITE_OPEN_READWRITE, handle);
    if (code != SQLITE_OK)
        return code;
    // With the file to itself, the engine needs no shared memory for the log.
    Execute(handle.get(), "PRAGMA locking_mode = EXCLUSIVE");
    return QueryText(handle.get(), "PRAGMA journal_mode = DELETE") == "delete" ? SQLITE_OK : SQLITE_CANTOPEN;
}

Failure StoreFile::Make(JournalMode mode) const
{
    {
        NewFile file(_name);
        if (int const errorNumber = file.Make(); errorNumber != 0)
            return DescribeSystemError(
                _path,
                QStringLiteral("the store can't be made in %1").arg(QFileInfo(_path).absolutePath()),
                errorNumber);
        Failure failure = MakeAs(file.temporaryName(), mode);
        if (!failure)
            return PutInPlace(file);
        if (mode == JournalMode::Rollback)
            return failure;
    }
    return Make(JournalMode::Rollback); // the place may refuse no more than a log
}

Failure StoreFile::MakeAs(QByteArray const& temporary, JournalMode mode) const
{
    SqliteHandle handle;
    int code = OpenHandle(temporary.constData(), SQLITE_OPEN_READWRITE, handle);
    if (code == SQLITE_OK)
        code = Execute(handle.get(), "PRAGMA encoding = 'UTF-8'; PRAGMA journal_mode = MEMORY;");
    if (code == SQLITE_OK)
        code = schema::Create(handle.get());
    if (code == SQLITE_OK && mode == JournalMode::WriteAheadLog)
        code = SwitchToLog(handle.get());
    if (code != SQLITE_OK)
        return DescribeError(handle.get(), code, _path);
    return {};
}

Failure StoreFile::PutInPlace(NewFile const& file) const
{
    int errorNumber = file.PutInPlace();
    if (errorNumber == EEXIST)
        return {};
    if (errorNumber != 0)
        return DescribeSystemError(_path, QStringLiteral("the store can't be put in place"), errorNumber);
    errorNumber = file.FlushFolder();
    if (errorNumber != 0)
        return DescribeSystemError(_path, QStringLiteral("the store's folder can't be flushed"), errorNumber);
    return {};
}

} // namespace sync::database
