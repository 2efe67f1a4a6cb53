#pragma once

#include "models/RecordRows.h"

#include <QHash>
#include <QVector>

#include <list>

namespace sync::models {

/// The rows that were used last, up to a number of them.
class RecentRows
{
public:
    explicit RecentRows(int capacity);

    /// Returns the row with this id, which counts as a use of it; null if it is not there.
    RecordRow const* Use(int id);
    bool contains(int id) const { return _places.contains(id); }
    /// Replaces the values of a row, or adds it as the one that was used last. Returns whether it had other values or
    /// was not there.
    bool Put(RecordRow const& row);
    /// The ids of the rows, that of the last used first.
    QVector<int> ids() const;
    void Clear();

private:
    int const _capacity;
    /// The last used first.
    std::list<RecordRow> _rows;
    QHash<int, std::list<RecordRow>::iterator> _places;
};

} // namespace sync::models
