#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace tandry::findings {

/// A folder with dated backups of one store. Their names consist of the store's name, the time in UTC, and a number
/// where there are several of one second: `tandry-2026-11-22T02-30-00Z.db`, `tandry-2026-11-22T02-30-00Z-2.db`.
class BackupFolder
{
public:
    BackupFolder(QString const& folder, QString const& storePath);

    /// Returns the path for a backup made at this time; no file has it.
    QString NewPath(QDateTime const& now) const;

    /// Returns the paths of the backups besides `newest` and the `keep - 1` before it, the oldest first. A file counts
    /// if it has such a name and a store's mark, is no link, and has neither log nor journal beside it.
    QStringList OlderThanKept(QString const& newest, int keep) const;

private:
    QString const _folder;
    QString const _base;
};

} // namespace tandry::findings
