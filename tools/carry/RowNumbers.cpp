#include "tools/carry/RowNumbers.h"

#include <algorithm>
#include <iterator>

namespace tandry::carry {

void RowNumbers::Append(qint32 id)
{
    ++_count;
    if (_runs.empty() || id != _nextId)
        _runs.push_back({id, _count});
    _nextId = qint64(id) + 1;
}

std::optional<qint32> RowNumbers::Of(qint64 id) const
{
    auto const behind = std::upper_bound(
        _runs.begin(), _runs.end(), id, [](qint64 wanted, Run const& run) { return wanted < run.firstId; });
    if (behind == _runs.begin())
        return std::nullopt;
    Run const& run = *std::prev(behind);
    qint64 const number = run.firstNumber + (id - run.firstId);
    qint64 const last = behind == _runs.end() ? _count : behind->firstNumber - 1;
    if (number > last)
        return std::nullopt;
    return qint32(number);
}

} // namespace tandry::carry
