#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>
#include <vector>

namespace tandry::findings {

/// The recovered rows of one table.
struct RecoveredTable
{
    QString name;
    qint64 recovered = 0;
    /// Rows that are known to be missing: an index names them, or they were found but cannot be read. Without an index
    /// there may be more.
    qint64 lost = 0;
    /// Recovered rows that may belong to another table with the same columns.
    qint64 ambiguous = 0;
    /// Recovered rows that may have been removed before the damage, or be older versions of rows.
    qint64 doubtful = 0;
};

/// The result of a recovery.
struct RecoveryReport
{
    std::vector<RecoveredTable> tables;
    /// Remarks for the user, a sentence each.
    QStringList remarks;
};

enum class RecoveryMode
{
    Recover,
    /// Does the same in the temporary folder, and leaves no file.
    DryRun,
};

/// Copies whatever can still be read of a damaged store into a new one, with the rows' ids.
///
/// The damaged store, its log and its journal are read as bytes; nothing is written to them, locked or created beside
/// them, and no other program may write to them meanwhile. Deleted rows do not come back, apart from those that are
/// counted as doubtful. The new store appears whole, and an existing file is never replaced. Returns nothing on
/// failure; `error` then names the file and the reason.
[[nodiscard]] std::optional<RecoveryReport>
RecoverStore(QString const& damagedPath, QString const& newPath, RecoveryMode mode, QString& error);

} // namespace tandry::findings
