#pragma once

#include <QString>
#include <QStringList>

namespace tandryctl {

/// What a removal takes away and what it leaves behind, in words for the question and for the report.
class Removal
{
public:
    /// `titled` names the record itself, as `Titled` does.
    explicit Removal(QString const& titled);

    /// Rows that go with it. Counts of zero or less are not mentioned.
    void Takes(int count, char const* singular, char const* plural);

    /// Rows that stay and then point at nothing; `names` says which, as far as they can be named.
    void Leaves(int count, char const* singular, char const* plural, QStringList const& names = {});

    /// "root 1 '/a' with 2 folders and 1 file from the store, leaving 1 account (3 'anna') that
    /// belongs to nothing".
    QString text() const;

private:
    QString const _titled;
    QStringList _takes;
    QStringList _leaves;
    int _leftRows = 0;
};

} // namespace tandryctl
