#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <ostream>
#include <string>
#include <vector>

namespace tandry::test {

/// Creates a store with rows in every table and without a finding, although many of its enumerations have values that
/// the library does not name.
void CreateCleanStore(QString const& path);

/// A defect that a test puts into the clean store.
struct Defect
{
    /// The kind of finding that it is made for.
    char const* code;
    /// The statements that put it into the store.
    char const* statements;
    /// All findings of the store with the defect: by code the rows, such as "FolderConfiguration 3: parentId 99".
    QMap<QString, QStringList> findings;
    /// The statements that turn the store with the defect into the one that the fix must leave; null if there is no
    /// fix.
    char const* fixed = nullptr;
};

void PrintTo(Defect const& defect, std::ostream* out);

/// At least one defect for each kind of finding.
std::vector<Defect> const& AllDefects();

} // namespace tandry::test
