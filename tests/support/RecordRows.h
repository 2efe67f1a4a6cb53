#pragma once

#include "config/RecordColumns.h"
#include "support/Conversation.h"
#include "support/RecordingStore.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace tandry::test {

/// Returns the form in which a row has the value of a column: documents for properties and links, whose texts must
/// contain nothing that XML escapes.
QVariant ToStored(sync::config::ColumnKind kind, QVariant const& value);

/// Returns the row in which a store gives a record back, its columns in the order of the SELECT list.
template <class Record>
Row ToRow(Record const& record)
{
    Row row;
    for (sync::config::RecordColumn<Record> const& column : sync::config::RecordColumns<Record>())
        row.append(ToStored(column.kind(), column.Get(record)));
    return row;
}

/// Returns what an INSERT of the record binds: all columns except "id".
template <class Record>
std::vector<Bound> ToBindings(Record const& record)
{
    Row const row = ToRow(record);
    auto const& columns = sync::config::RecordColumns<Record>();
    std::vector<Bound> bindings;
    for (int position = 1; position < row.size(); ++position) {
        bindings.emplace_back(qPrintable(QLatin1Char(':') + columns[position].name()));
        bindings.back().value = row[position];
    }
    return bindings;
}

} // namespace tandry::test
