#include "tools/findings/RowFinder.h"

#include "config/FileConfiguration.h"
#include "tools/findings/ByteOrder.h"
#include "tools/findings/Record.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

namespace tandry::findings {

namespace {

/// A tree of the largest store is not as deep.
constexpr int MostDepth = 20;
constexpr quint32 OnFreeList = 0xffffffff;
constexpr std::size_t SampleLeaves = 16;

constexpr std::size_t SchemaColumns = 5;
constexpr std::size_t SequenceColumns = 2;

// The evidence that rows belong to a table, by weight: all lower weights together do not outweigh a higher one.
constexpr double NamedKind = 1000; // tables may well have given the same ids
constexpr double IndexedIds = 100;
constexpr double HeldNumbers = 10;
constexpr double NeighbouringIds = 1;

/// The part of a group's rows that an index must name if it names all rows of their table.
constexpr double LeastIndexed = 0.9;

bool IsSchemaRow(std::vector<QVariant> const& values)
{
    if (values.size() != SchemaColumns || values[3].userType() != QMetaType::LongLong)
        return false;
    QString const type = values[0].toString();
    return (type == QLatin1String("table") || type == QLatin1String("index")) &&
           values[1].userType() == QMetaType::QString && values[2].userType() == QMetaType::QString;
}

/// Returns the table into which the client writes files of this kind; null for an unknown one.
QString TableOfKind(int kind)
{
    switch (kind) {
    case sync::config::FileConfigurationTypeFile:
        return QStringLiteral("FileConfiguration");
    case sync::config::FileConfigurationTypeGenerated:
        return QStringLiteral("GeneratedFileConfiguration");
    case sync::config::FileConfigurationTypeBase:
        return QStringLiteral("BaseFileConfiguration");
    default:
        return {};
    }
}

/// Returns whether entries stand beside a broken one in the page: whatever spoilt that may have reached into them.
std::vector<bool> Suspicious(std::vector<Cell> const& cells, std::vector<int> const& brokenOffsets)
{
    std::vector<std::pair<int, int>> places; // offset, and the entry's index or -1
    places.reserve(brokenOffsets.size() + cells.size());
    for (int const offset : brokenOffsets)
        places.emplace_back(offset, -1);
    for (std::size_t i = 0; i < cells.size(); ++i)
        places.emplace_back(cells[i].offset, static_cast<int>(i));
    std::sort(places.begin(), places.end());
    std::vector<bool> suspicious(cells.size(), false);
    for (std::size_t i = 0; i + 1 < places.size(); ++i) {
        int const left = places[i].second;
        int const right = places[i + 1].second;
        if (left >= 0 && right < 0)
            suspicious[static_cast<std::size_t>(left)] = true;
        if (left < 0 && right >= 0)
            suspicious[static_cast<std::size_t>(right)] = true;
    }
    return suspicious;
}

} // namespace

RowFinder::RowFinder(PageFile const& file, std::vector<TableForm> const& tables)
    : _file(file)
    , _forms(tables)
    , _tables(tables.size())
    , _owners(static_cast<std::size_t>(file.pageCount()) + 1, 0)
{
    _ReadSchema();
    _ReadTrees();
    _MarkFreePages();
    if (!_schemaIsWhole) {
        std::vector<quint32> interiors;
        std::vector<quint32> leaves;
        _FindOrphanPages(interiors, leaves);
        _ReadOrphanSchema(leaves);
        _ReadTrees();
    }
    _ReadIndices();
    _ReadSequence();
    _ReadOrphans();
}

void RowFinder::ReadRows(int table, Sink const& sink)
{
    Table& found = _tables[static_cast<std::size_t>(table)];
    TableForm const& form = _forms[static_cast<std::size_t>(table)];
    qint64 broken = 0;
    for (Leaf const& leaf : found.tree.leaves) {
        for (Row const& row : _RowsOf(leaf, broken)) {
            if (row.values.size() != form.columns.size() || !sink(row.id, row.values))
                ++broken;
        }
    }
    for (Leaf const& leaf : found.orphans) {
        for (Row const& row : _RowsOf(leaf, broken)) {
            bool const isRemoved =
                found.idsAreComplete && !std::binary_search(found.indexedIds.begin(), found.indexedIds.end(), row.id);
            // A second one of its id is a stale copy.
            if (!isRemoved && form.Fits(row.values) && sink(row.id, row.values))
                found.doubtfulRows += found.mayHoldRemovedRows ? 1 : 0;
        }
    }
    found.brokenRows = broken;
}

qint64 RowFinder::CountLost(int table, std::vector<qint64> const& recovered) const
{
    Table const& found = _tables[static_cast<std::size_t>(table)];
    std::vector<qint64> lost;
    std::set_difference(
        found.indexedIds.begin(), found.indexedIds.end(), recovered.begin(), recovered.end(), std::back_inserter(lost));
    auto const indexed = static_cast<qint64>(lost.size());
    return found.idsAreComplete ? indexed : std::max(indexed, found.brokenRows);
}

std::optional<qint64> RowFinder::HighestId(int table) const
{
    Table const& found = _tables[static_cast<std::size_t>(table)];
    std::optional<qint64> highest = found.sequence;
    if (!found.indexedIds.empty())
        highest = std::max(highest.value_or(0), found.indexedIds.back());
    return highest;
}

bool RowFinder::FoundAnything() const
{
    return std::any_of(_tables.begin(), _tables.end(), [](Table const& table) {
        return !table.tree.leaves.empty() || !table.orphans.empty() || !table.indexedIds.empty();
    });
}

BtreePage RowFinder::_Parse(quint32 number, QByteArray& bytes) const
{
    bytes = _file.Page(number);
    return {bytes, _file.usableSize(), number, _file.pageCount()};
}

void RowFinder::_Walk(quint32 number, IdRange range, int depth, Tree& tree)
{
    if (number == 0 || number > _file.pageCount() || !_IsFree(number) || depth > MostDepth) {
        tree.gaps.push_back({range, depth});
        return;
    }
    QByteArray bytes;
    BtreePage const page = _Parse(number, bytes);
    if (page.kind() == PageKind::TableLeaf) {
        bool const isOther =
            !page.cells().empty() && std::none_of(page.cells().begin(), page.cells().end(), [&](Cell const& cell) {
                return range.Contains(cell.rowId);
            });
        if (isOther) {
            tree.gaps.push_back({range, depth});
            return;
        }
        _owners[number] = number;
        tree.leaves.push_back({number, range});
        tree.leafDepth = depth;
        return;
    }
    if (page.kind() != PageKind::TableInterior) {
        tree.gaps.push_back({range, depth});
        return;
    }
    _owners[number] = number;
    if (!page.brokenOffsets().empty())
        tree.gaps.push_back({range, depth + 1});
    qint64 low = range.low;
    for (Cell const& cell : page.cells()) {
        if (cell.rowId <= low || cell.rowId > range.high)
            continue;
        _Walk(cell.child, {low, cell.rowId}, depth + 1, tree);
        low = cell.rowId;
    }
    _Walk(page.rightChild(), {low, range.high}, depth + 1, tree);
}

void RowFinder::_WalkIndex(quint32 number, int depth, std::vector<qint64>& ids, bool& isComplete)
{
    if (number == 0 || number > _file.pageCount() || !_IsFree(number) || depth > MostDepth) {
        isComplete = false;
        return;
    }
    QByteArray bytes;
    BtreePage const page = _Parse(number, bytes);
    if (page.kind() != PageKind::IndexLeaf && page.kind() != PageKind::IndexInterior) {
        isComplete = false;
        return;
    }
    _owners[number] = number;
    isComplete = isComplete && page.isWhole();
    for (Cell const& cell : page.cells()) {
        if (page.isInterior())
            _WalkIndex(cell.child, depth + 1, ids, isComplete);
        std::optional<QByteArray> const payload = _Payload(bytes, cell, number);
        std::optional<std::vector<QVariant>> const values = payload ? DecodeRecord(*payload) : std::nullopt;
        if (values && !values->empty() && values->back().userType() == QMetaType::LongLong)
            ids.push_back(values->back().toLongLong());
        else
            isComplete = false;
    }
    if (page.isInterior())
        _WalkIndex(page.rightChild(), depth + 1, ids, isComplete);
}

std::vector<RowFinder::Row> RowFinder::_RowsOf(Leaf const& leaf, qint64& broken)
{
    QByteArray bytes;
    BtreePage const page = _Parse(leaf.page, bytes);
    std::vector<Cell> const& cells = page.cells();
    std::vector<std::optional<std::vector<QVariant>>> records(cells.size());
    std::vector<int> brokenOffsets = page.brokenOffsets();
    broken += static_cast<qint64>(brokenOffsets.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        std::optional<QByteArray> const payload = _Payload(bytes, cells[i], leaf.page);
        if (payload)
            records[i] = DecodeRecord(*payload);
        // A record whose rest is lost elsewhere says nothing against its page.
        if (!records[i] && (cells[i].overflow == 0 || !page.isWhole()))
            brokenOffsets.push_back(cells[i].offset);
    }
    std::vector<bool> const suspicious = Suspicious(cells, brokenOffsets);

    std::vector<Row> rows;
    rows.reserve(cells.size());
    qint64 last = leaf.range.low;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!records[i] || suspicious[i] || cells[i].rowId <= last || cells[i].rowId > leaf.range.high) {
            ++broken;
            continue;
        }
        last = cells[i].rowId;
        rows.push_back({cells[i].rowId, std::move(*records[i])});
    }
    return rows;
}

std::optional<QByteArray> RowFinder::_Payload(QByteArray const& bytes, Cell const& cell, quint32 owner)
{
    QByteArray payload = bytes.mid(cell.localOffset, cell.localSize);
    std::vector<quint32> chain;
    quint32 next = cell.overflow;
    while (payload.size() < cell.payloadSize) {
        bool const isTaken =
            next < 2 || next > _file.pageCount() || next == owner || (_owners[next] != 0 && _owners[next] != owner);
        if (isTaken || chain.size() > _file.pageCount())
            return std::nullopt;
        chain.push_back(next);
        QByteArray const page = _file.Page(next);
        next = BigEndianAt<quint32>(page, 0);
        int const left = static_cast<int>(cell.payloadSize) - static_cast<int>(payload.size());
        payload += page.mid(4, std::min(left, _file.usableSize() - 4));
    }
    if (next != 0)
        return std::nullopt;
    for (quint32 const page : chain)
        _owners[page] = owner;
    return payload;
}

void RowFinder::_ReadSchema()
{
    Tree tree;
    _Walk(1, {}, 0, tree);
    _schemaIsWhole = tree.gaps.empty();
    qint64 broken = 0;
    for (Leaf const& leaf : tree.leaves) {
        for (Row const& row : _RowsOf(leaf, broken))
            _ReadSchemaRow(row.values);
    }
    _schemaIsWhole = _schemaIsWhole && broken == 0 && !_roots.empty();
}

void RowFinder::_ReadOrphanSchema(std::vector<quint32> const& leaves)
{
    for (quint32 const number : leaves) {
        qint64 broken = 0;
        std::vector<Row> const rows = _RowsOf({number, {}}, broken);
        bool const isSchema = !rows.empty() && std::all_of(rows.begin(), rows.end(), [](Row const& row) {
            return IsSchemaRow(row.values);
        });
        if (!isSchema)
            continue;
        _owners[number] = number;
        for (Row const& row : rows)
            _ReadSchemaRow(row.values);
    }
}

void RowFinder::_ReadSchemaRow(std::vector<QVariant> const& values)
{
    if (!IsSchemaRow(values))
        return;
    qint64 const root = values[3].toLongLong();
    if (root < 2 || root > _file.pageCount())
        return;
    auto const page = static_cast<quint32>(root);
    std::optional<std::size_t> const table = _TableNamed(values[2].toString());
    if (values[0].toString() == QLatin1String("index")) {
        if (table)
            _indices.push_back({*table, page, values[4].toString().contains(QLatin1String(" WHERE "))});
    }
    else if (values[1].toString() == QLatin1String("sqlite_sequence")) {
        _sequenceRoot = page;
    }
    else if (table) {
        _roots.emplace(*table, page);
    }
    else {
        _otherRoots.push_back(page);
    }
}

void RowFinder::_ReadTrees()
{
    for (auto const& [table, root] : _roots) {
        Table& found = _tables[table];
        if (found.hasRoot)
            continue;
        found.hasRoot = true;
        _Walk(root, {}, 0, found.tree);
        std::vector<Gap>& gaps = found.tree.gaps;
        // All leaves of a tree are equally deep: what is missing there is a leaf and leads to no other page.
        gaps.erase(
            std::remove_if(gaps.begin(), gaps.end(), [&](Gap const& gap) { return gap.depth == found.tree.leafDepth; }),
            gaps.end());
    }
    for (quint32 const root : _otherRoots) {
        Tree other;
        _Walk(root, {}, 0, other);
    }
    _otherRoots.clear();
}

void RowFinder::_ReadIndices()
{
    for (IndexRoot const& index : _indices) {
        Table& table = _tables[index.table];
        std::vector<qint64> ids;
        bool isComplete = true;
        _WalkIndex(index.root, 0, ids, isComplete);
        if (table.idsAreComplete)
            continue;
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        if (isComplete && !index.isPartial) {
            table.indexedIds = std::move(ids);
            table.idsAreComplete = true;
            continue;
        }
        std::vector<qint64> all;
        std::set_union(
            table.indexedIds.begin(), table.indexedIds.end(), ids.begin(), ids.end(), std::back_inserter(all));
        table.indexedIds = std::move(all);
    }
}

void RowFinder::_ReadSequence()
{
    if (_sequenceRoot == 0)
        return;
    Tree tree;
    _Walk(_sequenceRoot, {}, 0, tree);
    qint64 broken = 0;
    for (Leaf const& leaf : tree.leaves) {
        for (Row const& row : _RowsOf(leaf, broken))
            _ReadSequenceRow(row.values);
    }
    if (broken > 0 || !tree.gaps.empty() || tree.leaves.empty())
        return;
    for (Table& table : _tables) {
        if (!table.sequence)
            table.sequence = 0; // SQLite notes the first id that it gives
    }
}

void RowFinder::_ReadSequenceRow(std::vector<QVariant> const& values)
{
    if (values.size() != SequenceColumns || values[1].userType() != QMetaType::LongLong)
        return;
    std::optional<std::size_t> const table = _TableNamed(values[0].toString());
    if (table)
        _tables[*table].sequence = std::max(_tables[*table].sequence.value_or(0), values[1].toLongLong());
}

void RowFinder::_MarkFreePages()
{
    if (_file.hasHeader()) {
        QByteArray const header = _file.Page(1);
        auto next = BigEndianAt<quint32>(header, 32);
        auto const expected = BigEndianAt<quint32>(header, 36);
        quint32 count = 0;
        while (next != 0 && _MarkTrunk(next, next, count)) {
        }
        _freeListIsWhole = next == 0 && count == expected;
    }
    if (_freeListIsWhole)
        return;
    // Part of the list is lost: what is left of it is told by its form.
    for (quint32 number = 2; number <= _file.pageCount(); ++number) {
        quint32 next = 0;
        quint32 count = 0;
        static_cast<void>(_MarkTrunk(number, next, count));
    }
}

/// Marks a page of the free list and the pages that it names; does nothing if the page can't be one.
bool RowFinder::_MarkTrunk(quint32 number, quint32& next, quint32& count)
{
    if (number < 2 || number > _file.pageCount() || !_IsFree(number))
        return false;
    QByteArray const bytes = _file.Page(number);
    auto const following = BigEndianAt<quint32>(bytes, 0);
    auto const entries = BigEndianAt<quint32>(bytes, 4);
    if (following > _file.pageCount() || following == 1 || entries > quint32(_file.usableSize() / 4 - 2) ||
        (following == 0 && entries == 0 && next != number))
        return false;
    std::unordered_set<quint32> pages;
    for (quint32 i = 0; i < entries; ++i) {
        auto const page = BigEndianAt<quint32>(bytes, static_cast<int>(8 + 4 * i));
        if (page < 2 || page > _file.pageCount() || page == number || !_IsFree(page) || !pages.insert(page).second)
            return false;
    }
    _owners[number] = OnFreeList;
    for (quint32 const page : pages)
        _owners[page] = OnFreeList;
    next = following;
    count += entries + 1;
    return true;
}

void RowFinder::_FindOrphanPages(std::vector<quint32>& interiors, std::vector<quint32>& leaves) const
{
    for (quint32 number = 1; number <= _file.pageCount(); ++number) {
        if (!_IsFree(number))
            continue;
        QByteArray bytes;
        BtreePage const page = _Parse(number, bytes);
        if (!page.isWhole() || page.cells().empty())
            continue;
        if (page.kind() == PageKind::TableInterior)
            interiors.push_back(number);
        else if (page.kind() == PageKind::TableLeaf)
            leaves.push_back(number);
    }
}

void RowFinder::_ReadOrphans()
{
    bool const lacksNothing = std::all_of(
        _tables.begin(), _tables.end(), [](Table const& table) { return table.hasRoot && table.tree.gaps.empty(); });
    if (lacksNothing)
        return;

    std::vector<quint32> interiors;
    std::vector<quint32> leaves;
    _FindOrphanPages(interiors, leaves);
    std::unordered_set<quint32> children;
    for (quint32 const number : interiors) {
        QByteArray bytes;
        BtreePage const page = _Parse(number, bytes);
        for (Cell const& cell : page.cells())
            children.insert(cell.child);
        children.insert(page.rightChild());
    }

    std::vector<Group> groups;
    for (quint32 const number : interiors) {
        if (children.count(number) != 0)
            continue;
        Tree tree;
        _Walk(number, {}, 0, tree);
        if (!tree.leaves.empty())
            groups.push_back(_MakeGroup(tree.leaves, true));
    }
    for (quint32 const number : leaves) {
        if (!_IsFree(number))
            continue;
        _owners[number] = number;
        groups.push_back(_MakeGroup({{number, {}}}, false));
    }
    std::stable_sort(groups.begin(), groups.end(), [](Group const& left, Group const& right) {
        return left.leaves.size() > right.leaves.size();
    });
    groups.erase(std::remove_if(groups.begin(), groups.end(), [](Group const& group) { return group.sample.empty(); }),
                 groups.end());
    for (Group const& group : groups) {
        for (Row const& row : group.sample) {
            if (_sequenceRoot == 0)
                _ReadSequenceRow(row.values);
        }
    }
    for (Group const& group : groups)
        _Place(group);
    bool const mayHoldRemovedRows = _MayHoldRemovedRows();
    for (Table& table : _tables)
        _AddStrays(table, mayHoldRemovedRows);
}

RowFinder::Group RowFinder::_MakeGroup(std::vector<Leaf> const& leaves, bool hasParent)
{
    Group group;
    group.leaves = leaves;
    group.hasParent = hasParent;
    qint64 broken = 0;
    std::size_t const step = std::max<std::size_t>(1, leaves.size() / SampleLeaves);
    auto const add = [&](Leaf const& leaf) {
        for (Row& row : _RowsOf(leaf, broken))
            group.sample.push_back(std::move(row));
    };
    for (std::size_t i = 0; i + 1 < leaves.size(); i += step)
        add(leaves[i]);
    add(leaves.back());
    if (!group.sample.empty()) {
        group.lowest = group.sample.front().id;
        group.highest = group.sample.back().id;
    }
    return group;
}

/// Gives the leaves to the likeliest of the tables that they fit, if there is one.
void RowFinder::_Place(Group const& group)
{
    std::optional<std::size_t> best;
    double most = 0;
    bool isAmbiguous = false;
    for (std::size_t table = 0; table < _tables.size(); ++table) {
        double const likelihood = _Likelihood(table, group);
        if (likelihood < 0)
            continue;
        if (!best || likelihood > most) {
            best = table;
            most = likelihood;
            isAmbiguous = false;
        }
        else if (likelihood == most) {
            isAmbiguous = true;
        }
    }
    if (!best)
        return;
    Table& table = _tables[*best];
    if (!group.hasParent && !table.idsAreComplete)
        table.strays.push_back(group);
    else
        table.orphans.insert(table.orphans.end(), group.leaves.begin(), group.leaves.end());
    if (isAmbiguous)
        table.ambiguousRows += _CountRows(group);
}

qint64 RowFinder::_CountRows(Group const& group)
{
    qint64 rows = 0;
    qint64 broken = 0;
    for (Leaf const& leaf : group.leaves)
        rows += static_cast<qint64>(_RowsOf(leaf, broken).size());
    return rows;
}

/// Pages of the free list keep their rows where SQLite does not overwrite what it removes. Our client has it overwrite
/// that. That another program did not shows in free blocks, and in rows that stand on two pages: on one that became
/// free, and on the one that they had been moved to.
bool RowFinder::_MayHoldRemovedRows()
{
    if (_freeListIsWhole)
        return false;
    for (quint32 number = 1; number <= _file.pageCount(); ++number) {
        QByteArray bytes;
        BtreePage const page = _Parse(number, bytes);
        if (page.isWhole() && page.hasRemnants())
            return true;
    }
    return std::any_of(_tables.begin(), _tables.end(), [&](Table const& table) { return _HasRowsTwice(table); });
}

bool RowFinder::_HasRowsTwice(Table const& table)
{
    std::vector<Leaf> leaves = table.tree.leaves;
    leaves.insert(leaves.end(), table.orphans.begin(), table.orphans.end());
    for (Group const& stray : table.strays)
        leaves.push_back(stray.leaves.front());
    std::unordered_set<qint64> ids;
    qint64 broken = 0;
    for (Leaf const& leaf : leaves) {
        for (Row const& row : _RowsOf(leaf, broken)) {
            if (!ids.insert(row.id).second)
                return true;
        }
    }
    return false;
}

/// Takes strays over; if pages may hold removed rows, only those that need not be on the free list. All leaves of a
/// tree are equally deep: if pages lead to some, a page leads to each, so a stray is one of the free list, unless the
/// page above it is broken. Otherwise a client that only adds rows fills pages in the order of their ids. When rows are
/// removed, what is left of a page moves to one in front, which then holds higher ids than the pages behind it that
/// became free.
///
/// Nothing tells the others apart: what makes a leaf part of a tree stands in the page above it and in the list of free
/// pages alone, and both are lost.
void RowFinder::_AddStrays(Table& table, bool mayHoldRemovedRows)
{
    std::vector<Group> strays = std::move(table.strays);
    std::sort(strays.begin(), strays.end(), [](Group const& left, Group const& right) {
        return left.leaves.front().page < right.leaves.front().page;
    });
    bool const haveOthersParents = !table.orphans.empty() || !table.tree.leaves.empty();
    qint64 highest = std::numeric_limits<qint64>::min();
    for (Group const& stray : strays) {
        if (mayHoldRemovedRows && (haveOthersParents || stray.lowest <= highest)) {
            table.leftOutRows += _CountRows(stray);
            continue;
        }
        highest = stray.highest;
        table.orphans.push_back(stray.leaves.front());
    }
    table.mayHoldRemovedRows = mayHoldRemovedRows && !table.idsAreComplete;
}

/// Whether the table's tree lacks these rows.
bool RowFinder::_MayLack(Table const& table, Group const& group) const
{
    if (!table.hasRoot)
        return true;
    return std::any_of(table.tree.gaps.begin(), table.tree.gaps.end(), [&](Gap const& gap) {
        return gap.range.Contains(group.lowest) && gap.range.Contains(group.highest);
    });
}

/// How much speaks for the table; negative if the rows can't be its own.
double RowFinder::_Likelihood(std::size_t table, Group const& group) const
{
    constexpr double impossible = -1;
    Table const& found = _tables[table];
    TableForm const& form = _forms[table];
    bool const fits =
        std::all_of(group.sample.begin(), group.sample.end(), [&](Row const& row) { return form.Fits(row.values); });
    if (!fits || !_MayLack(found, group))
        return impossible;
    if (found.sequence && group.highest > *found.sequence)
        return impossible;

    int const kindColumn = form.IndexOf(QStringLiteral("fileType"));
    double indexed = 0;
    double named = 0;
    double numbers = 0;
    for (Row const& row : group.sample) {
        indexed += std::binary_search(found.indexedIds.begin(), found.indexedIds.end(), row.id) ? 1 : 0;
        numbers += form.PartOfNumbers(row.values);
        if (kindColumn >= 0) {
            QVariant const& kind = row.values[static_cast<std::size_t>(kindColumn)];
            named += form.name == TableOfKind(kind.toInt()) ? 1 : 0;
        }
    }
    auto const rows = static_cast<double>(group.sample.size());
    // An index that is whole names each row of the table; a few of the sample may be misread.
    if (found.idsAreComplete && indexed < LeastIndexed * rows)
        return impossible;
    return (IndexedIds * indexed + NamedKind * named + HeldNumbers * numbers) / rows +
           (_HasNeighbour(found, group) ? NeighbouringIds : 0);
}

/// Whether a leaf of the table ends or begins where the rows begin or end.
bool RowFinder::_HasNeighbour(Table const& table, Group const& group) const
{
    auto const touches = [&](Leaf const& leaf) {
        return leaf.range.high == group.lowest - 1 || leaf.range.low == group.highest;
    };
    return std::any_of(table.tree.leaves.begin(), table.tree.leaves.end(), touches);
}

std::optional<std::size_t> RowFinder::_TableNamed(QString const& name) const
{
    for (std::size_t table = 0; table < _forms.size(); ++table) {
        if (_forms[table].name.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    }
    return std::nullopt;
}

} // namespace tandry::findings
