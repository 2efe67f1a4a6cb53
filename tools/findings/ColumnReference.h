#pragma once

#include "config/RecordColumns.h"
#include "tools/findings/ValueNames.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tandry::findings {

/// The description of a column of a store.
struct DescribedColumn
{
    QString name;
    sync::config::ColumnKind kind;
    /// The contents and their unit, as a sentence.
    QString meaning;
    /// Only for an enumeration or a bit field with names.
    std::optional<ValueNames> names;
};

/// The columns that one or more tables have.
struct DescribedTables
{
    QStringList tables;
    std::vector<DescribedColumn> columns;
};

/// Returns all tables of a store with all columns, in their order. The library's list of columns gives the names and
/// kinds. Made at the first call and kept.
std::vector<DescribedTables> const& ColumnReference();

/// Returns the tables of a kind of record.
template <class Record>
DescribedTables const& ReferenceOf();

template <>
DescribedTables const& ReferenceOf<sync::config::AuthenticationConfiguration>();
template <>
DescribedTables const& ReferenceOf<sync::config::FileConfiguration>();
template <>
DescribedTables const& ReferenceOf<sync::config::FolderConfiguration>();
template <>
DescribedTables const& ReferenceOf<sync::config::ProductConfiguration>();
template <>
DescribedTables const& ReferenceOf<sync::config::ScheduleEntry>();
template <>
DescribedTables const& ReferenceOf<sync::config::ServerConfiguration>();

/// Returns the names of a column's values; null if it has none.
template <class Record>
ValueNames const* NamesOfValues(QString const& column)
{
    for (DescribedColumn const& described : ReferenceOf<Record>().columns) {
        if (described.name == column)
            return described.names ? &*described.names : nullptr;
    }
    return nullptr;
}

} // namespace tandry::findings
