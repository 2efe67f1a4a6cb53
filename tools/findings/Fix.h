#pragma once

#include "tools/findings/Findings.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace tandry::findings {

/// A row that was changed, removed or added.
struct FixedRow
{
    FoundRow row;
    /// The change, such as "removed".
    QString action;
};

/// The result of a fix or of a dry run.
struct FixReport
{
    /// The path of the copy made before the fix; null if there was nothing to fix, and in `FixMode::DryRun`.
    QString backup;
    std::vector<FixedRow> fixed;
    /// Rows of this kind that are still there.
    std::vector<FoundRow> left;
};

enum class FixMode
{
    /// Copies the store to a new file beside it, named after it with the date and the code appended; then fixes.
    BackUpAndFix,
    /// Does the same in a transaction that is rolled back, and makes no copy.
    DryRun,
};

/// Fixes all rows of one fixable kind and nothing else, in one client transaction. Does nothing if there is no such
/// row.
///
/// Returns nothing on failure; the store is then unchanged, and its `LastError` has the reason.
[[nodiscard]] std::optional<FixReport>
Fix(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store, FindingKind const& kind, FixMode mode);

} // namespace tandry::findings
