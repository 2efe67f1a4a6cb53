#include "models/RecentRows.h"

namespace sync::models {

RecentRows::RecentRows(int capacity)
    : _capacity(capacity)
{}

RecordRow const* RecentRows::Use(int id)
{
    auto const place = _places.constFind(id);
    if (place == _places.constEnd())
        return nullptr;
    _rows.splice(_rows.begin(), _rows, *place);
    return &_rows.front();
}

bool RecentRows::Put(RecordRow const& row)
{
    auto const place = _places.constFind(row.id);
    if (place != _places.constEnd()) {
        bool const differs = (*place)->values != row.values;
        (*place)->values = row.values;
        return differs;
    }
    if (_places.size() == _capacity) {
        _places.remove(_rows.back().id);
        _rows.pop_back();
    }
    _rows.push_front(row);
    _places.insert(row.id, _rows.begin());
    return true;
}

QVector<int> RecentRows::ids() const
{
    QVector<int> ids;
    ids.reserve(static_cast<int>(_places.size()));
    for (RecordRow const& row : _rows)
        ids.append(row.id);
    return ids;
}

void RecentRows::Clear()
{
    _rows.clear();
    _places.clear();
}

} // namespace sync::models
