#pragma once

#include <QString>
#include <QStringList>

namespace tandryctl {

/// Describes what a removal removes and which rows it orphans, for the confirmation and for the report.
class Removal
{
public:
    /// `label` describes the record itself, as `Label` does.
    explicit Removal(QString const& label);

    /// Adds rows that are removed with the record. Ignores counts of zero or less.
    void AddRemoved(int count, char const* singular, char const* plural);

    /// Adds rows that stay and then refer to a missing row; `names` lists those that have a name. Ignores counts of
    /// zero or less.
    void AddOrphaned(int count, char const* singular, char const* plural, QStringList const& names = {});

    /// Adds rows that stay and keep their parents, but lose `what`, such as "a server", with the record. Ignores counts
    /// of zero or less.
    void AddDeprived(int count, char const* singular, char const* plural, QStringList const& names, char const* what);

    /// Adds a clause about the record, such as "it is the default server".
    void AddRemark(QString const& remark);

    /// Returns the description, such as "root 1 '/a' with 2 folders and 1 file from the store, leaving 1 schedule that
    /// belongs to nothing".
    QString text() const;

private:
    QString const _label;
    QStringList _removed;
    QStringList _orphaned;
    int _orphanedRows = 0;
    QStringList _deprived;
    QStringList _remarks;
};

} // namespace tandryctl
