#pragma once

#include "tools/findings/BtreePage.h"
#include "tools/findings/PageFile.h"
#include "tools/findings/TableForm.h"

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QtGlobal>

#include <functional>
#include <limits>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tandry::findings {

/// Finds the rows of a damaged store, table by table.
///
/// Pages that a table's tree leads to come first. Where an inner page of the tree is broken, pages that nothing leads
/// to are told by their form and by the row ids that the tree lacks there; pages on the free list never count. A page
/// without a parent belongs to the table whose columns its rows fit. Among tables that fit alike these decide, in this
/// order: row ids that the tree lacks, an index that would name them all, the highest id that the table has given, the
/// kind that a file's row names, row ids in the table's indices, and pages with the row ids before and behind. What
/// even these leave open goes to the first of the tables in the order of the schema, so that a file's row becomes one
/// of the client's own files: unlike a generated file, such a file is never deleted from the disk along with another
/// one.
class RowFinder
{
public:
    /// Takes a row; returns whether it is new.
    using Sink = std::function<bool(qint64 rowId, std::vector<QVariant> const& values)>;

    /// Reads the structure of the store. Both arguments must outlive this object.
    RowFinder(PageFile const& file, std::vector<TableForm> const& tables);

    /// Passes every row of the table that can be read to `sink`, the surest first; a row id may come more than once.
    void ReadRows(int table, Sink const& sink);

    /// Returns how many of the table's rows are known to be there besides these, in ascending order.
    qint64 CountLost(int table, std::vector<qint64> const& recovered) const;
    /// Returns the highest id that the table has given, as far as it is known.
    std::optional<qint64> HighestId(int table) const;
    /// Returns how many rows of the table stand there for want of a better place.
    qint64 ambiguousRows(int table) const { return _tables[static_cast<std::size_t>(table)].ambiguousRows; }
    /// Returns how many of the rows that `ReadRows` has passed may have been removed.
    qint64 doubtfulRows(int table) const { return _tables[static_cast<std::size_t>(table)].doubtfulRows; }
    /// Returns how many rows were left out because they may have been removed.
    qint64 leftOutRows(int table) const { return _tables[static_cast<std::size_t>(table)].leftOutRows; }
    /// Whether anything of the store was found: a table's tree or one of its pages.
    bool FoundAnything() const;

private:
    /// Row ids above `low`, up to `high`.
    struct IdRange
    {
        qint64 low = std::numeric_limits<qint64>::min();
        qint64 high = std::numeric_limits<qint64>::max();

        bool Contains(qint64 id) const { return id > low && id <= high; }
    };

    struct Leaf
    {
        quint32 page = 0;
        IdRange range;
    };

    struct Gap
    {
        IdRange range;
        int depth = 0;
    };

    struct Tree
    {
        std::vector<Leaf> leaves;
        std::vector<Gap> gaps;
        int leafDepth = -1;
    };

    struct Row
    {
        qint64 id = 0;
        std::vector<QVariant> values;
    };

    /// Leaves that are known to belong to one table.
    struct Group
    {
        std::vector<Leaf> leaves;
        /// Whether a page leads to them.
        bool hasParent = false;
        std::vector<Row> sample;
        qint64 lowest = 0;
        qint64 highest = 0;
    };

    struct Table
    {
        bool hasRoot = false;
        Tree tree;
        /// Leaves that the tree does not lead to.
        std::vector<Leaf> orphans;
        /// Leaves that no page at all leads to, as long as it is open whether they are on the free list.
        std::vector<Group> strays;
        /// In ascending order; all of the table's ids if `idsAreComplete`.
        std::vector<qint64> indexedIds;
        bool idsAreComplete = false;
        std::optional<qint64> sequence;
        /// Whether rows of the orphans may have been removed.
        bool mayHoldRemovedRows = false;
        qint64 ambiguousRows = 0;
        qint64 doubtfulRows = 0;
        qint64 leftOutRows = 0;
        /// Rows whose page is there and whose content is not.
        qint64 brokenRows = 0;
    };

    BtreePage _Parse(quint32 number, QByteArray& bytes) const;
    void _Walk(quint32 number, IdRange range, int depth, Tree& tree);
    void _WalkIndex(quint32 number, int depth, std::vector<qint64>& ids, bool& isComplete);
    bool _IsFree(quint32 number) const { return _owners[number] == 0; }

    /// Returns the rows of a leaf that lie in its range; adds to `broken` those that cannot be read.
    std::vector<Row> _RowsOf(Leaf const& leaf, qint64& broken);
    std::optional<QByteArray> _Payload(QByteArray const& bytes, Cell const& cell, quint32 owner);

    void _ReadSchema();
    void _ReadSchemaRow(std::vector<QVariant> const& values);
    void _ReadTrees();
    void _ReadIndices();
    void _ReadSequence();
    void _ReadSequenceRow(std::vector<QVariant> const& values);
    void _MarkFreePages();
    bool _MarkTrunk(quint32 number, quint32& next, quint32& count);
    void _ReadOrphans();
    void _ReadOrphanSchema(std::vector<quint32> const& leaves);
    void _FindOrphanPages(std::vector<quint32>& interiors, std::vector<quint32>& leaves) const;
    Group _MakeGroup(std::vector<Leaf> const& leaves, bool hasParent);
    void _Place(Group const& group);
    bool _MayHoldRemovedRows();
    bool _HasRowsTwice(Table const& table);
    void _AddStrays(Table& table, bool mayHoldRemovedRows);
    qint64 _CountRows(Group const& group);
    bool _MayLack(Table const& table, Group const& group) const;
    double _Likelihood(std::size_t table, Group const& group) const;
    bool _HasNeighbour(Table const& table, Group const& group) const;
    std::optional<std::size_t> _TableNamed(QString const& name) const;

    PageFile const& _file;
    std::vector<TableForm> const& _forms;
    std::vector<Table> _tables;
    /// By page: the page whose tree or record it is part of; 0 for a page that nothing claims.
    std::vector<quint32> _owners;

    struct IndexRoot
    {
        std::size_t table;
        quint32 root;
        bool isPartial;
    };
    std::unordered_map<std::size_t, quint32> _roots;
    std::vector<quint32> _otherRoots;
    std::vector<IndexRoot> _indices;
    quint32 _sequenceRoot = 0;
    bool _schemaIsWhole = false;
    bool _freeListIsWhole = false;
};

} // namespace tandry::findings
