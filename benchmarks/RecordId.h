#pragma once

#include "config/columns/ColumnList.h"

namespace sync::benchmarks {

/// Gives a record the id of its row, which is the first column of each table.
template <class Record>
void GiveId(Record& record, int id)
{
    struct Row
    {
        int Int(int) const { return id; }

        int id;
    };
    Row const row{id};
    config::column::At<Record, 0>::Read(record, row, 0, row);
}

} // namespace sync::benchmarks
