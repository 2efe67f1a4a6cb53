#include "tools/findings/RollbackJournal.h"

#include "tools/findings/ByteOrder.h"
#include "tools/findings/PageSize.h"

#include <QFile>

namespace tandry::findings {

namespace {

constexpr int JournalHeaderSize = 28;
constexpr quint32 UpToTheEnd = 0xffffffff;

QByteArray JournalMagic()
{
    return QByteArray::fromHex("d9d505f920a163d7");
}

/// Whether the transaction was one over several files that has been committed: their common journal is gone.
bool IsCommitted(QFile& file)
{
    constexpr int TrailerSize = 16;
    if (file.size() < TrailerSize || !file.seek(file.size() - TrailerSize))
        return false;
    QByteArray const trailer = file.read(TrailerSize);
    if (trailer.size() < TrailerSize || trailer.mid(8) != JournalMagic())
        return false;
    qint64 const length = BigEndianAt<quint32>(trailer, 0);
    if (length == 0 || length > file.size() - TrailerSize || !file.seek(file.size() - TrailerSize - length))
        return false;
    QByteArray const name = file.read(length);
    quint32 sum = BigEndianAt<quint32>(trailer, 4);
    for (char const byte : name)
        sum -= static_cast<quint32>(static_cast<signed char>(byte));
    return sum == 0 && !QFile::exists(QFile::decodeName(name));
}

bool ChecksumIsRight(QByteArray const& record, int pageSize, quint32 nonce)
{
    quint32 sum = nonce;
    for (int i = pageSize - 200; i > 0; i -= 200)
        sum += static_cast<quint8>(record.at(4 + i));
    return BigEndianAt<quint32>(record, 4 + pageSize) == sum;
}

} // namespace

RollbackJournal::RollbackJournal(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || IsCommitted(file))
        return;

    qint64 offset = 0;
    qint64 sector = 0;
    for (;;) {
        file.seek(offset);
        QByteArray const header = file.read(JournalHeaderSize);
        if (header.size() < JournalHeaderSize || !header.startsWith(JournalMagic()))
            return;
        if (!_isHot) {
            auto const sectorSize = BigEndianAt<quint32>(header, 20);
            auto const pageSize = BigEndianAt<quint32>(header, 24);
            if (!IsPageSize(pageSize) || sectorSize < 32 || sectorSize > LargestPageSize ||
                (sectorSize & (sectorSize - 1)) != 0)
                return;
            sector = sectorSize;
            _pageSize = static_cast<int>(pageSize);
            _databasePages = BigEndianAt<quint32>(header, 16);
            _isHot = true;
        }
        int const recordSize = _pageSize + 8;
        offset += sector;
        qint64 records = BigEndianAt<quint32>(header, 8);
        if (records == UpToTheEnd)
            records = (file.size() - offset) / recordSize;
        file.seek(offset);
        for (; records > 0; --records) {
            QByteArray const record = file.read(recordSize);
            if (record.size() < recordSize || !ChecksumIsRight(record, _pageSize, BigEndianAt<quint32>(header, 12)))
                return;
            auto const number = BigEndianAt<quint32>(record, 0);
            if (number == 0)
                return;
            if (number <= _databasePages)
                _pages.emplace(number, offset + 4);
            offset += recordSize;
        }
        offset = (offset + sector - 1) / sector * sector;
    }
}

} // namespace tandry::findings
