#include "database/sqlite/LogTail.h"

#include "database/sqlite/SqliteHandle.h"

#include <sqlite3.h>

#include <QtEndian>

#include <cstring>

namespace sync::database {

namespace {

// The format that SQLite documents for its log.
constexpr int CheckedPartOfFrameHeader = 8;
constexpr quint32 LogMagic = 0x377f0682; // the lowest bit is set for checksums over big-endian words
quint32 Number(unsigned char const* bytes)
{
    return qFromBigEndian<quint32>(bytes);
}

} // namespace

LogTail::LogTail(sqlite3* handle)
    : _handle(handle)
    , _code(SQLITE_IOERR_SHMMAP)
{
    LogIndex const index(handle);
    if (!index.isValid())
        return;
    _lastCommit = index.header();
    _code = sqlite3_file_control(handle, "main", SQLITE_FCNTL_JOURNAL_POINTER, &_log);
}

int LogTail::Erase()
{
    if (_code != SQLITE_OK)
        return _code;
    qint64 const end = _lastCommit.end();
    sqlite3_int64 size = 0;
    _code = _log->pMethods->xFileSize(_log, &size);
    if (_code != SQLITE_OK || size <= end)
        return _code;
    // Without its first frame the chain of checksums is broken, whatever of the others has reached the disk. The file
    // has the room for it already, so a full disk is no obstacle.
    char const zeros[FrameHeaderSize] = {};
    _code = _log->pMethods->xWrite(_log, zeros, FrameHeaderSize, end);
    if (_code == SQLITE_OK)
        _code = _log->pMethods->xSync(_log, SQLITE_SYNC_NORMAL);
    if (_code == SQLITE_OK)
        static_cast<void>(_log->pMethods->xTruncate(_log, end)); // only tidies up
    return _code;
}

bool LogTail::Read(void* bytes, int size, qint64 offset)
{
    _code = _log->pMethods->xRead(_log, bytes, size, offset);
    return _code == SQLITE_OK;
}

LogTail::Pair LogTail::Continue(Pair sum, unsigned char const* data, int size) const
{
    auto const word = [&](int offset) {
        return _lastCommit.hasBigEndianChecksums ? qFromBigEndian<quint32>(data + offset)
                                                 : qFromLittleEndian<quint32>(data + offset);
    };
    for (int offset = 0; offset < size; offset += 8) {
        sum[0] += word(offset) + sum[1];
        sum[1] += word(offset + 4) + sum[0];
    }
    return sum;
}

/// Takes over what the log's header says: that is all there is to go by where no commit could be read.
bool LogTail::ReadHeader(bool& isIntact)
{
    unsigned char bytes[LogHeaderSize];
    if (!Read(bytes, LogHeaderSize, 0))
        return false;
    quint32 const magic = Number(bytes);
    _lastCommit.hasBigEndianChecksums = (magic & 1) != 0;
    _lastCommit.checksum = Continue({}, bytes, LogHeaderSize - 8);
    _lastCommit.salts = {Number(bytes + 16), Number(bytes + 20)};
    qint64 pageSize = 0;
    _code = QueryNumber(_handle, "PRAGMA page_size", pageSize);
    _lastCommit.pageSize = static_cast<int>(pageSize);
    isIntact = (magic & ~1u) == LogMagic && _lastCommit.checksum == Pair{Number(bytes + 24), Number(bytes + 28)};
    return _code == SQLITE_OK;
}

bool LogTail::ReadFrame(qint64 offset, Frame& frame, std::vector<unsigned char>& bytes)
{
    if (!Read(bytes.data(), int(bytes.size()), offset))
        return false;
    auto const number = [&](int position) { return Number(bytes.data() + position); };
    frame = {number(0), number(4), {number(8), number(12)}, {number(16), number(20)}};
    return true;
}

std::optional<int> LogTail::CountDroppedCommits()
{
    sqlite3_int64 size = 0;
    if (_code == SQLITE_OK)
        _code = _log->pMethods->xFileSize(_log, &size);
    if (_code != SQLITE_OK)
        return std::nullopt;
    if (size <= LogHeaderSize)
        return 0;
    bool hasIntactHeader = true;
    if (_lastCommit.lastFrame == 0 && !ReadHeader(hasIntactHeader))
        return std::nullopt;

    int commits = 0;
    int const frameSize = FrameHeaderSize + _lastCommit.pageSize;
    bool isIntact = hasIntactHeader;
    std::vector<unsigned char> bytes(isIntact ? std::size_t(frameSize) : FrameHeaderSize);
    for (qint64 offset = _lastCommit.end(); offset + frameSize <= size; offset += frameSize) {
        Frame frame;
        if (!ReadFrame(offset, frame, bytes))
            return std::nullopt;
        bool const isOfThisLog = !hasIntactHeader || frame.salts == _lastCommit.salts;
        if (isIntact) {
            Pair& sum = _lastCommit.checksum;
            sum = Continue(sum, bytes.data(), CheckedPartOfFrameHeader);
            sum = Continue(sum, bytes.data() + FrameHeaderSize, _lastCommit.pageSize);
            isIntact = isOfThisLog && frame.page != 0 && frame.checksum == sum;
            if (!isIntact)
                bytes.resize(FrameHeaderSize); // all that is needed of the others
        }
        if (!isIntact && isOfThisLog && frame.page != 0 && frame.page <= frame.commitSize)
            ++commits;
    }
    return commits;
}

} // namespace sync::database
