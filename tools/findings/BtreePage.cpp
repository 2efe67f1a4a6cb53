#include "tools/findings/BtreePage.h"

#include "tools/findings/ByteOrder.h"
#include "tools/findings/Record.h"

#include <algorithm>
#include <limits>

namespace tandry::findings {

namespace {

/// Page 1 begins with the header of the file.
constexpr int FileHeaderSize = 100;
constexpr int LeafHeaderSize = 8;
constexpr int InteriorHeaderSize = 12;
constexpr int SmallestCell = 4;
constexpr int FreeBlockHeaderSize = 4;

PageKind KindOf(char byte)
{
    switch (byte) {
    case 2:
        return PageKind::IndexInterior;
    case 5:
        return PageKind::TableInterior;
    case 10:
        return PageKind::IndexLeaf;
    case 13:
        return PageKind::TableLeaf;
    default:
        return PageKind::None;
    }
}

bool IsTable(PageKind kind)
{
    return kind == PageKind::TableLeaf || kind == PageKind::TableInterior;
}

} // namespace

int LocalSize(PageKind kind, qint64 payloadSize, int usableSize)
{
    int const most = kind == PageKind::TableLeaf ? usableSize - 35 : (usableSize - 12) * 64 / 255 - 23;
    if (payloadSize <= most)
        return static_cast<int>(payloadSize);
    int const least = (usableSize - 12) * 32 / 255 - 23;
    int const fitting = least + static_cast<int>((payloadSize - least) % (usableSize - 4));
    return fitting <= most ? fitting : least;
}

BtreePage::BtreePage(QByteArray const& page, int usableSize, quint32 number, quint32 pageCount)
{
    if (!_ReadHeader(page, usableSize, number, pageCount)) {
        _kind = PageKind::None;
        return;
    }
    _cells.reserve(static_cast<std::size_t>(_cellCount));
    for (int i = 0; i < _cellCount; ++i) {
        Cell cell;
        cell.offset = BigEndianAt<quint16>(page, _pointers + 2 * i);
        if (_ReadCell(page, usableSize, pageCount, cell))
            _cells.push_back(cell);
        else
            _brokenOffsets.push_back(cell.offset);
    }
    _DropOverlappingCells();

    int bytes = static_cast<quint8>(page.at(_headerOffset + 7)); // in gaps too small for a free block
    for (Cell const& cell : _cells)
        bytes += cell.size;
    int const freeBytes = _FreeBlockBytes(page, usableSize);
    _isWhole = _brokenOffsets.empty() && freeBytes >= 0 && bytes + freeBytes == usableSize - _contentStart &&
               _RowIdsAscend() && (!isInterior() || _rightChild != 0);
}

bool BtreePage::_ReadHeader(QByteArray const& page, int usableSize, quint32 number, quint32 pageCount)
{
    _headerOffset = number == 1 ? FileHeaderSize : 0;
    if (page.size() < usableSize || usableSize < FileHeaderSize + InteriorHeaderSize)
        return false;
    _kind = KindOf(page.at(_headerOffset));
    if (_kind == PageKind::None)
        return false;
    _cellCount = BigEndianAt<quint16>(page, _headerOffset + 3);
    _contentStart = BigEndianAt<quint16>(page, _headerOffset + 5);
    if (_contentStart == 0)
        _contentStart = 65536;
    _pointers = _headerOffset + (isInterior() ? InteriorHeaderSize : LeafHeaderSize);
    if (isInterior()) {
        _rightChild = BigEndianAt<quint32>(page, _headerOffset + 8);
        if (_rightChild < 2 || _rightChild > pageCount || _rightChild == number)
            _rightChild = 0;
    }
    return _contentStart <= usableSize && _pointers + 2 * _cellCount <= _contentStart;
}

bool BtreePage::_ReadCell(QByteArray const& page, int usableSize, quint32 pageCount, Cell& cell) const
{
    if (cell.offset < _contentStart || cell.offset > usableSize - SmallestCell)
        return false;
    int offset = cell.offset;
    if (isInterior()) {
        cell.child = BigEndianAt<quint32>(page, offset);
        offset += 4;
        if (cell.child < 2 || cell.child > pageCount)
            return false;
    }
    bool const hasPayload = _kind != PageKind::TableInterior;
    if (hasPayload) {
        std::optional<quint64> const size = ReadVarint(page, offset);
        if (!size || *size > quint64(pageCount) * quint64(usableSize) ||
            *size > quint64(std::numeric_limits<int>::max() / 2))
            return false;
        cell.payloadSize = static_cast<qint64>(*size);
    }
    if (IsTable(_kind)) {
        std::optional<quint64> const rowId = ReadVarint(page, offset);
        if (!rowId)
            return false;
        cell.rowId = static_cast<qint64>(*rowId);
    }
    if (hasPayload) {
        cell.localOffset = offset;
        cell.localSize = LocalSize(_kind, cell.payloadSize, usableSize);
        if (cell.localSize > usableSize - offset)
            return false;
        offset += cell.localSize;
        if (cell.localSize < cell.payloadSize) {
            if (usableSize - offset < 4)
                return false;
            cell.overflow = BigEndianAt<quint32>(page, offset);
            offset += 4;
            if (cell.overflow < 2 || cell.overflow > pageCount)
                return false;
        }
    }
    cell.size = std::max(offset - cell.offset, SmallestCell);
    return cell.offset + cell.size <= usableSize;
}

void BtreePage::_DropOverlappingCells()
{
    std::vector<std::size_t> order(_cells.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(
        order.begin(), order.end(), [&](auto left, auto right) { return _cells[left].offset < _cells[right].offset; });
    std::vector<bool> overlaps(_cells.size(), false);
    for (std::size_t i = 1; i < order.size(); ++i) {
        Cell const& before = _cells[order[i - 1]];
        if (before.offset + before.size > _cells[order[i]].offset)
            overlaps[order[i - 1]] = overlaps[order[i]] = true;
    }
    std::vector<Cell> kept;
    kept.reserve(_cells.size());
    for (std::size_t i = 0; i < _cells.size(); ++i) {
        if (overlaps[i])
            _brokenOffsets.push_back(_cells[i].offset);
        else
            kept.push_back(_cells[i]);
    }
    _cells = std::move(kept);
}

int BtreePage::_FreeBlockBytes(QByteArray const& page, int usableSize)
{
    int bytes = 0;
    int block = BigEndianAt<quint16>(page, _headerOffset + 1);
    int end = _contentStart;
    while (block != 0) {
        if (block < end || block > usableSize - 4)
            return -1;
        int const size = BigEndianAt<quint16>(page, block + 2);
        if (size < 4 || block + size > usableSize)
            return -1;
        auto const content = page.constBegin() + block + FreeBlockHeaderSize;
        _hasRemnants = _hasRemnants ||
                       std::any_of(content, page.constBegin() + block + size, [](char byte) { return byte != '\0'; });
        bytes += size;
        end = block + size;
        block = BigEndianAt<quint16>(page, block);
    }
    return bytes;
}

bool BtreePage::_RowIdsAscend() const
{
    if (!IsTable(_kind))
        return true;
    return std::adjacent_find(_cells.begin(), _cells.end(), [](Cell const& left, Cell const& right) {
               return left.rowId >= right.rowId;
           }) == _cells.end();
}

} // namespace tandry::findings
