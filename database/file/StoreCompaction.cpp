#include "database/file/StoreCompaction.h"

#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/LogIndex.h"

#include <QFile>

#include <utility>

#include <sys/statvfs.h>

namespace sync::database {

namespace {

/// A journal precedes each page with its number and appends a checksum.
constexpr qint64 JournalRecordOverhead = 8;

/// How many of SQLite's instructions lie between two reports.
constexpr int InstructionsBetweenReports = 1000;

struct Reporter
{
    sqlite3* handle;
    CompactionProgress const& progress;
    qint64 pages;
};

int Report(void* context)
{
    auto const& reporter = *static_cast<Reporter const*>(context);
    int read = 0;
    int highest = 0;
    sqlite3_db_status(reporter.handle, SQLITE_DBSTATUS_CACHE_MISS, &read, &highest, 0);
    reporter.progress(qMin<qint64>(read, reporter.pages), reporter.pages);
    return 0;
}

} // namespace

StoreCompaction::StoreCompaction(StoreFile file, int busyTimeoutMsec)
    : _store(std::move(file), busyTimeoutMsec)
{}

Failure StoreCompaction::Run(CompactionProgress const& progress, Compaction& compaction)
{
    if (Failure failure = _store.Open(OpenPurpose::Connection, StoreAccess::ReadWrite))
        return failure;
    if (Failure failure = _store.CheckWritable())
        return failure;
    if (Failure failure = Measure(compaction))
        return failure;
    if (Failure failure = CheckRoom())
        return failure;
    if (Failure failure = Rebuild(progress))
        return failure;
    qint64 pages = 0;
    if (int const code = QueryNumber(_store.get(), "PRAGMA page_count", pages); code != SQLITE_OK)
        return _store.Describe(code);
    compaction.bytesAfter = pages * _pageSize;
    return EmptyLog(compaction.isPending);
}

Failure StoreCompaction::Measure(Compaction& compaction)
{
    qint64 freePages = 0;
    int code = QueryNumber(_store.get(), "PRAGMA page_size", _pageSize);
    if (code == SQLITE_OK)
        code = QueryNumber(_store.get(), "PRAGMA page_count", _pages);
    if (code == SQLITE_OK)
        code = QueryNumber(_store.get(), "PRAGMA freelist_count", freePages);
    if (code != SQLITE_OK)
        return _store.Describe(code);
    _usedPages = _pages - freePages;
    compaction.bytesBefore = _pages * _pageSize;
    return {};
}

/// The log takes all pages of the new state, a journal those of the old one.
Failure StoreCompaction::CheckRoom() const
{
    bool const hasLog = _store.journalMode() == JournalMode::WriteAheadLog;
    qint64 const needed =
        hasLog ? _usedPages * (_pageSize + FrameHeaderSize) : _pages * (_pageSize + JournalRecordOverhead);
    QByteArray const folder = _store.file().folder();
    struct statvfs room = {};
    if (::statvfs(folder.constData(), &room) != 0)
        return {};
    qint64 const available = qint64(room.f_bavail) * qint64(room.f_frsize);
    if (available >= needed)
        return {};
    return MakeError(_store.file().path(),
                     SQLITE_FULL,
                     QStringLiteral("compacting needs %1 bytes in %2, and %3 are free")
                         .arg(needed)
                         .arg(QFile::decodeName(folder))
                         .arg(available));
}

Failure StoreCompaction::Rebuild(CompactionProgress const& progress)
{
    sqlite3* const handle = _store.get();
    Reporter reporter{handle, progress, _usedPages};
    if (progress)
        sqlite3_progress_handler(handle, InstructionsBetweenReports, &Report, &reporter);
    int const code = Execute(handle, "PRAGMA synchronous = EXTRA; VACUUM;");
    sqlite3_progress_handler(handle, 0, nullptr, nullptr);
    return code == SQLITE_OK ? Failure() : _store.Describe(code);
}

/// Has the file shrink, which the transaction has done in the log only.
Failure StoreCompaction::EmptyLog(bool& isPending)
{
    if (_store.journalMode() != JournalMode::WriteAheadLog)
        return {};
    int const code = sqlite3_wal_checkpoint_v2(_store.get(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    isPending = (code & 0xff) == SQLITE_BUSY || (code & 0xff) == SQLITE_LOCKED;
    return code == SQLITE_OK || isPending ? Failure() : _store.Describe(code);
}

} // namespace sync::database
