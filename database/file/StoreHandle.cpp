#include "database/file/StoreHandle.h"

#include "database/file/StoreDamage.h"
#include "database/file/StoreHeader.h"
#include "database/file/StoreOwner.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

#include <utility>

namespace sync::database {

namespace {

/// The settings of every handle.
///
/// - No memory map: an I/O error, or a file cut short, would end the program by a signal instead of giving an error.
/// - Temporary tables in memory: none of the store's content reaches other files, and no other disk can be full.
/// - What is removed is overwritten.
constexpr char const* OpeningSettings = "PRAGMA mmap_size = 0;"
                                        "PRAGMA temp_store = MEMORY;"
                                        "PRAGMA cell_size_check = ON;"
                                        "PRAGMA secure_delete = ON;";

/// How often a look is repeated whether a log's index comes, a millisecond apart. Between the moments in which SQLite
/// makes a log and its index there is much less.
constexpr int LooksForIndex = 100;

/// Whether a store may have failed to open because a write-ahead log does not work in its place.
bool RefusesLog(int code)
{
    switch (code) {
    case SQLITE_IOERR_SHMOPEN:
    case SQLITE_IOERR_SHMSIZE:
    case SQLITE_IOERR_SHMLOCK:
    case SQLITE_IOERR_SHMMAP:
        return true;
    default:
        return (code & 0xff) == SQLITE_CANTOPEN;
    }
}

} // namespace

StoreHandle::StoreHandle(StoreFile file, int busyTimeoutMsec)
    : _file(std::move(file))
    , _busyHandler(busyTimeoutMsec)
    , _openFiles(_file)
{}

StoreHandle::~StoreHandle()
{
    Close();
}

Failure StoreHandle::Open(OpenPurpose purpose, StoreAccess access)
{
    if (access == StoreAccess::ReadWrite) {
        if (Failure failure = CheckWriter(_file))
            return failure;
    }
    if (Failure failure = CheckOwnersBeside(_file))
        return failure;
    if (access == StoreAccess::ReadWrite)
        TakeRightsOfOthers(_file);
    Failure failure = access == StoreAccess::ReadOnly ? OpenForReading(purpose) : OpenForWriting(purpose);
    Failure foreign = CheckOwnersBeside(_file); // something may have come before SQLite looked
    if (!foreign)
        return failure;
    if (_handle != nullptr)
        sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return foreign;
}

void StoreHandle::Close() noexcept
{
    if (_handle != nullptr && !_openFiles.MayCheckpointOnClose())
        sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    _openFiles.Forget();
    _handle.reset();
    _stamp.reset();
}

Failure StoreHandle::OpenForWriting(OpenPurpose purpose)
{
    bool const mayConvert = purpose == OpenPurpose::FirstConnection && !_file.Exists(LogSuffix);
    Failure failure = ConnectForWriting(purpose);
    if (!failure || !mayConvert || !RefusesLog(failure->code))
        return failure;

    // The store may have been moved to a place where a log does not work. A passing fault must not convert it.
    Close();
    failure = ConnectForWriting(purpose);
    if (!failure || !RefusesLog(failure->code))
        return failure;
    Close();
    if (std::optional<FileStatus> const found = _file.Status(); !found || found->names > 1)
        return failure;
    return ConvertToJournal() == SQLITE_OK ? ConnectForWriting(purpose) : failure;
}

Failure StoreHandle::ConnectForWriting(OpenPurpose purpose)
{
    if (Failure failure = _openFiles.CheckBeforeOpening())
        return failure;
    if (Failure failure = CheckLogIndexIsNotInUse())
        return failure;
    bool const hadLog = _file.Exists(LogSuffix);
    int const code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, _handle);
    if (code != SQLITE_OK)
        return Describe(code);
    // Without the right to write SQLite opens the file for reading; that is enough for a snapshot.
    if (purpose != OpenPurpose::Snapshot && sqlite3_db_readonly(get(), "main") != 0)
        return Describe(SQLITE_READONLY);
    sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, hadLog ? 1 : 0, nullptr);
    return Configure(purpose);
}

/// Fails if another handle has the store open and the index of its log is missing, that is, was removed: a new handle
/// would make an index of its own, and with two of them commits overwrite each other.
Failure StoreHandle::CheckLogIndexIsNotInUse() const
{
    for (int look = 0; _file.Exists(LogSuffix) && !_file.Exists(LogIndexSuffix); ++look) {
        if (look == LooksForIndex)
            return MakeError(_file.path(),
                             SQLITE_READONLY_DBMOVED,
                             QStringLiteral("another program has the store open, but the index of its log (-shm) was "
                                            "removed: close the store there first"));
        if (look > 0)
            sqlite3_sleep(1);
        // With this locking mode SQLite reads a log only if no other handle has the file open, and makes no index.
        SqliteHandle handle;
        int code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, handle);
        if (code != SQLITE_OK)
            return {}; // the caller meets the same reason
        sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        code = Execute(handle.get(), "PRAGMA locking_mode = EXCLUSIVE; PRAGMA user_version;");
        if ((code & 0xff) != SQLITE_BUSY)
            return {};
    }
    return {};
}

Failure StoreHandle::OpenForReading(OpenPurpose purpose)
{
    // If another program writes to a file that SQLite reads as immutable, the file can look damaged.
    constexpr int Attempts = 5;
    Failure failure;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        Close();
        failure = ConnectForReading(purpose);
        if (!failure || IsUnchanged())
            break;
    }
    return failure;
}

Failure StoreHandle::ConnectForReading(OpenPurpose purpose)
{
    StoreHeader header;
    if (Failure failure = header.Read(_file))
        return failure;

    QByteArray name = _file.name();
    int flags = SQLITE_OPEN_READONLY;
    std::optional<FileStamp> const stamp = header.usesLog() ? _file.Stamp() : std::nullopt;
    if (stamp && !stamp->hasLog) {
        // SQLite would create the log, but not of a file that it opens as immutable.
        _stamp = stamp;
        name = "file:" + name.toPercentEncoding("/") + "?immutable=1";
        flags |= SQLITE_OPEN_URI;
    }
    else if (_file.Exists(LogSuffix) && !_file.Exists(LogIndexSuffix)) {
        // SQLite would create the log's index, whatever the header says about a log.
        return MakeError(_file.path(),
                         SQLITE_READONLY_RECOVERY,
                         QStringLiteral("the store was not closed well and must be opened for writing once"));
    }
    else if (Failure failure = _openFiles.CheckBeforeOpening())
        return failure;
    int const code = OpenHandle(name.constData(), flags, _handle);
    return code == SQLITE_OK ? Configure(purpose) : Describe(code);
}

Failure StoreHandle::Configure(OpenPurpose purpose)
{
    _busyHandler.Install(get());
    Harden(get());
    int code = Execute(get(), OpeningSettings);
    // To ask for the journal mode reads the schema, whose damage a snapshot may be about to report.
    if (code == SQLITE_OK && purpose != OpenPurpose::Snapshot) {
        QByteArray mode;
        code = QueryText(get(), "PRAGMA journal_mode", mode);
        _journalMode = _stamp || mode == "wal" ? JournalMode::WriteAheadLog : JournalMode::Rollback;
    }
    if (code != SQLITE_OK)
        return Describe(code);
    if (Failure failure = CheckStore(purpose))
        return failure;
    bool const hasLog = purpose != OpenPurpose::Snapshot && !_stamp && _journalMode == JournalMode::WriteAheadLog;
    return _openFiles.Remember(get(), hasLog);
}

Failure StoreHandle::CheckStore(OpenPurpose purpose) const
{
    if (purpose == OpenPurpose::Upgrade || purpose == OpenPurpose::Snapshot)
        return {};
    // The header was looked at before: the log may hold another version, or another program may have upgraded since.
    qint64 version = 0;
    int const code = QueryNumber(get(), "PRAGMA user_version", version);
    if (code != SQLITE_OK)
        return Describe(code);
    if (version != schema::Version)
        return schema::OtherVersion(_file.path(), version);
    if (purpose == OpenPurpose::FirstConnection) {
        if (Failure failure = CheckLength(*this))
            return failure;
        if (Failure failure = schema::Check(get(), _file.path()))
            return failure;
    }
    sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    return {};
}

int StoreHandle::ConvertToJournal()
{
    SqliteHandle handle;
    int code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, handle);
    if (code != SQLITE_OK)
        return code;
    // A connection that has the file to itself needs no shared memory for the log.
    Execute(handle.get(), "PRAGMA locking_mode = EXCLUSIVE");
    QByteArray mode;
    code = QueryText(handle.get(), "PRAGMA journal_mode = DELETE", mode);
    return code == SQLITE_OK && mode != "delete" ? SQLITE_CANTOPEN : code;
}

Failure StoreHandle::CheckUnchanged() const
{
    if (IsUnchanged())
        return {};
    return MakeError(
        _file.path(), SQLITE_BUSY_SNAPSHOT, QStringLiteral("the store was changed while it was being read"));
}

void StoreHandle::AllowCheckpointOnClose() noexcept
{
    sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

StoreError StoreHandle::Describe(int code, QString const& statement, bool withMessage) const
{
    return DescribeError(get(), code, _file.path(), statement, withMessage);
}

} // namespace sync::database
