#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <vector>

namespace tandry::findings {

/// The kind of a B-tree page. The values are those of its first byte.
enum class PageKind : quint8
{
    None = 0,
    IndexInterior = 2,
    TableInterior = 5,
    IndexLeaf = 10,
    TableLeaf = 13,
};

/// An entry of a page, as described by the page itself.
struct Cell
{
    /// The offset of the entry in the page, in bytes.
    int offset = 0;
    int size = 0;
    /// The row id of a table's entry.
    qint64 rowId = 0;
    /// The page below, of an interior page's entry.
    quint32 child = 0;
    /// The size of the whole record, and the part of it that is in this page.
    qint64 payloadSize = 0;
    int localOffset = 0;
    int localSize = 0;
    /// The first page with the rest of the record, or 0.
    quint32 overflow = 0;
};

/// One page of a B-tree, parsed. Nothing in it is trusted: an entry that reaches beyond the page, overlaps another one
/// or names a page that does not exist is broken and left out.
class BtreePage
{
public:
    /// `usableSize` is the size of a page without its reserved bytes, and `number` that of this page, from 1 up.
    BtreePage(QByteArray const& page, int usableSize, quint32 number, quint32 pageCount);

    /// `PageKind::None` if the page is none of a B-tree.
    PageKind kind() const { return _kind; }
    bool isInterior() const { return _kind == PageKind::TableInterior || _kind == PageKind::IndexInterior; }
    /// The entries in the page's order, without the broken ones.
    std::vector<Cell> const& cells() const { return _cells; }
    /// Where the page says that the broken ones stand.
    std::vector<int> const& brokenOffsets() const { return _brokenOffsets; }
    /// The last child of an interior page; 0 if it is broken.
    quint32 rightChild() const { return _rightChild; }
    /// Whether no entry is broken, row ids ascend, and entries and free space make up the page exactly.
    bool isWhole() const { return _isWhole; }
    /// Whether free blocks hold something: what was removed from the page was not overwritten.
    bool hasRemnants() const { return _hasRemnants; }

private:
    bool _ReadHeader(QByteArray const& page, int usableSize, quint32 number, quint32 pageCount);
    bool _ReadCell(QByteArray const& page, int usableSize, quint32 pageCount, Cell& cell) const;
    void _DropOverlappingCells();
    /// Returns the bytes in free blocks; -1 if their chain is broken.
    int _FreeBlockBytes(QByteArray const& page, int usableSize);
    bool _RowIdsAscend() const;

    PageKind _kind = PageKind::None;
    int _headerOffset = 0;
    int _pointers = 0;
    int _cellCount = 0;
    int _contentStart = 0;
    std::vector<Cell> _cells;
    std::vector<int> _brokenOffsets;
    quint32 _rightChild = 0;
    bool _isWhole = false;
    bool _hasRemnants = false;
};

/// Returns how many bytes of a record of this size stand in the page itself.
int LocalSize(PageKind kind, qint64 payloadSize, int usableSize);

} // namespace tandry::findings
