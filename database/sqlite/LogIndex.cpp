#include "database/sqlite/LogIndex.h"

#include <sqlite3.h>

#include <QtEndian>

#include <cstddef>
#include <cstring>

namespace sync::database {

namespace {

constexpr int RegionSize = 32768;

/// The first bytes of the index, as SQLite documents them: in the machine's byte order, but for the salts, which are
/// copied from the log.
struct FirstBytes
{
    quint32 version;
    quint32 unused;
    quint32 changeCounter;
    quint8 isInitialized;
    quint8 hasBigEndianChecksums;
    quint16 pageSize; // 1 stands for 65,536
    quint32 lastFrame;
    quint32 databaseSize;
    quint32 checksum[2];
    unsigned char salts[8];
};
static_assert(sizeof(FirstBytes) == 40 && offsetof(FirstBytes, changeCounter) == 8);
static_assert(offsetof(FirstBytes, lastFrame) == 16);

int PageSize(quint16 stored)
{
    return stored == 1 ? 65536 : stored;
}

} // namespace

LogIndex::LogIndex(sqlite3* handle)
{
    sqlite3_file* database = nullptr;
    sqlite3_file* log = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &database);
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    bool const hasLog = log != nullptr && log->pMethods != nullptr && database->pMethods->iVersion >= 2;
    void volatile* region = nullptr;
    // SQLite has it mapped already and gives the same address again.
    if (hasLog && database->pMethods->xShmMap(database, 0, RegionSize, 0, &region) == SQLITE_OK)
        _bytes = region;
}

quint32 LogIndex::lastFrame() const noexcept
{
    return _bytes != nullptr ? static_cast<FirstBytes const volatile*>(_bytes)->lastFrame : 0;
}

quint32 LogIndex::commits() const noexcept
{
    return _bytes != nullptr ? static_cast<FirstBytes const volatile*>(_bytes)->changeCounter : 0;
}

qint64 LogIndex::sizeOfLog() const noexcept
{
    Header header;
    header.lastFrame = lastFrame();
    if (header.lastFrame == 0)
        return 0;
    header.pageSize = PageSize(static_cast<FirstBytes const volatile*>(_bytes)->pageSize); // never changes
    return header.end();
}

LogIndex::Header LogIndex::header() const noexcept
{
    FirstBytes bytes{};
    std::memcpy(&bytes, const_cast<void const*>(_bytes), sizeof bytes);
    return {bytes.lastFrame,
            PageSize(bytes.pageSize),
            bytes.hasBigEndianChecksums != 0,
            {bytes.checksum[0], bytes.checksum[1]},
            {qFromBigEndian<quint32>(bytes.salts), qFromBigEndian<quint32>(bytes.salts + 4)}};
}

} // namespace sync::database
