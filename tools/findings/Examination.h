#pragma once

#include "tools/findings/Documents.h"
#include "tools/findings/Findings.h"
#include "tools/findings/PathNotes.h"
#include "tools/findings/StoreStatements.h"

#include <QHash>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tandry::findings {

struct FindingEntry;

/// A store that is looked at, with what several kinds of findings share.
class Examination
{
public:
    explicit Examination(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store);

    std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store() { return _store; }
    StoreStatements& statements() { return _statements; }

    /// Returns the rows of one kind. If the store fails, some may be missing.
    std::vector<FoundRow> Find(FindingEntry const& entry);

    /// Returns the row if one of the conditions of the kind holds for it.
    std::vector<FoundRow> FindRow(FindingEntry const& entry, char const* table, int id);

    /// Calls `take` for each row of the table, which is called `bad` in the condition and in the columns. The columns
    /// are those of the query from 2 on.
    void ReadRows(char const* table,
                  QString const& where,
                  QString const& columns,
                  StoreStatements::Values const& values,
                  std::function<void(FoundRow const& found, sync::interf::IQSqlQueryWrapper& row)> const& take);
    /// Appends the rows; `detail` is an expression.
    void FindRows(char const* table,
                  QString const& where,
                  QString const& detail,
                  StoreStatements::Values const& values,
                  std::vector<FoundRow>& rows);

    /// Returns what is wrong with the documents. Reads them at the first call only: several kinds come from them.
    DocumentFindings const& documents();
    /// Returns what a pass over the paths tells, also made at the first call only.
    PathSurvey const& paths();
    /// Has these look again, after a change.
    void Forget();

    /// Returns whether everything worked until now; the store's `LastError` tells what did not.
    bool works() const;

private:
    /// Returns whether any of the conditions that read the whole table holds for a row; asked at the first call only.
    bool _HasSuspects(char const* table);

    std::shared_ptr<sync::database::SqliteDatabaseFactory> const _store;
    StoreStatements _statements;
    std::optional<DocumentFindings> _documents;
    std::optional<PathSurvey> _paths;
    QHash<QString, bool> _hasSuspects;
};

} // namespace tandry::findings
