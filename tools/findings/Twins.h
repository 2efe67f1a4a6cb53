#pragma once

#include <QString>

#include <vector>

namespace tandry::findings {

class Examination;
struct FixedRow;
struct FoundRow;

/// A row that stands beside another one of its table with the same path, folder and, for generated and base files,
/// source; for roots, with the same account.
struct Twin
{
    char const* table;
    int id;
    /// The lowest id of these rows: the one that the client finds by path and keeps up to date.
    int keptId;
    QString path;
};

std::vector<Twin> FindTwins(Examination& examination);

/// The same as found rows.
void FindTwinRows(Examination& examination, std::vector<FoundRow>& rows);

/// Removes all twins, after it has let everything that named them name the kept rows. Rows in folders that were merged
/// may become twins themselves, and are merged too.
void MergeTwins(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);

} // namespace tandry::findings
