#pragma once

#include "tools/findings/Findings.h"

#include <QString>

#include <vector>

namespace tandry::findings {

class Examination;
struct FixedRow;

/// The rows of one table that a kind of finding is about, in SQL. The table's name there is `bad`.
struct Condition
{
    char const* table;
    QString where;
    /// An expression for `FoundRow::detail`.
    QString detail;
    /// No index has its columns: one pass over the table asks for all such conditions together whether any holds.
    bool readsWholeTable = false;
};

/// How the rows of a kind of finding are found and fixed.
struct FindingEntry
{
    FindingKind kind;
    std::vector<Condition> conditions;
    /// Fixes the rows and appends what it did; null if nothing can be done. Runs in a client transaction.
    void (*fix)(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed) = nullptr;
    /// Finds what no condition can say; null if there is no such thing.
    void (*find)(Examination& examination, std::vector<FoundRow>& rows) = nullptr;
};

/// The table of all kinds, in the order in which they are looked for.
std::vector<FindingEntry> const& FindingTable();

} // namespace tandry::findings
