#include "tools/findings/WriteAheadLog.h"

#include "tools/findings/ByteOrder.h"
#include "tools/findings/PageSize.h"

#include <QFile>

namespace tandry::findings {

namespace {

constexpr int LogHeaderSize = 32;
constexpr int FrameHeaderSize = 24;
constexpr quint32 LogMagic = 0x377f0682;
constexpr quint32 Version = 3007000;

/// The running checksum of a log, over words in the byte order that its header names.
class Checksum
{
public:
    explicit Checksum(bool bigEndian)
        : _bigEndian(bigEndian)
    {}

    /// `size` is a multiple of 8.
    void Add(char const* bytes, int size)
    {
        for (int i = 0; i < size; i += 8) {
            _first += _Word(bytes + i) + _second;
            _second += _Word(bytes + i + 4) + _first;
        }
    }

    bool Equals(QByteArray const& bytes, int offset) const
    {
        return BigEndianAt<quint32>(bytes, offset) == _first && BigEndianAt<quint32>(bytes, offset + 4) == _second;
    }

private:
    quint32 _Word(char const* bytes) const
    {
        return _bigEndian ? qFromBigEndian<quint32>(bytes) : qFromLittleEndian<quint32>(bytes);
    }

    bool const _bigEndian;
    quint32 _first = 0;
    quint32 _second = 0;
};

} // namespace

WriteAheadLog::WriteAheadLog(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QByteArray const header = file.read(LogHeaderSize);
    if (header.size() < LogHeaderSize || (BigEndianAt<quint32>(header, 0) & ~1u) != LogMagic ||
        BigEndianAt<quint32>(header, 4) != Version)
        return;
    auto const pageSize = BigEndianAt<quint32>(header, 8);
    Checksum checksum((BigEndianAt<quint32>(header, 0) & 1u) != 0);
    checksum.Add(header.constData(), 24);
    if (!IsPageSize(pageSize) || !checksum.Equals(header, 24))
        return;
    _pageSize = static_cast<int>(pageSize);

    std::unordered_map<quint32, qint64> transaction;
    qint64 offset = LogHeaderSize;
    for (;;) {
        QByteArray const frame = file.read(FrameHeaderSize + _pageSize);
        if (frame.size() < FrameHeaderSize + _pageSize || frame.mid(8, 8) != header.mid(16, 8))
            break;
        auto const number = BigEndianAt<quint32>(frame, 0);
        checksum.Add(frame.constData(), 8);
        checksum.Add(frame.constData() + FrameHeaderSize, _pageSize);
        if (number == 0 || !checksum.Equals(frame, 16))
            break;
        transaction[number] = offset + FrameHeaderSize;
        auto const databasePages = BigEndianAt<quint32>(frame, 4);
        if (databasePages != 0) {
            for (auto const& [page, place] : transaction)
                _pages[page] = place;
            transaction.clear();
            _databasePages = databasePages;
        }
        offset += frame.size();
    }
}

} // namespace tandry::findings
