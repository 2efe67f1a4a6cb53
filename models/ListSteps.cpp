#include "models/ListSteps.h"

#include "models/RowDifference.h"

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <numeric>
#include <utility>

namespace sync::models {

namespace {

using Kind = ListStep::Kind;

/// Lists up to this size are compared row by row.
constexpr int SmallSize = 4096;

/// A list for `ApplyDifference` that records what is done to it.
class RecordingList
{
public:
    RecordingList(QVector<int> ids, int first)
        : _ids(std::move(ids))
        , _first(first)
    {}

    int size() const { return static_cast<int>(_ids.size()); }
    int id(int at) const { return _ids.at(at); }
    void Remove(int first, int last) { Do({Kind::Remove, first, last - first + 1, 0, {}, {}}); }
    void Move(int from, int to) { Do({Kind::Move, from, 0, to, {}, {}}); }
    void Insert(int at, int const* first, int count)
    {
        QVector<int> ids(count);
        std::copy(first, first + count, ids.begin());
        Do({Kind::Insert, at, 0, 0, ids, {}});
    }
    void Update(int, int) {}

    /// The steps, in a list that has as many more ids before these.
    std::vector<ListStep> TakeSteps() { return std::move(_steps); }

private:
    void Do(ListStep step)
    {
        Apply(step, _ids);
        step.first += _first;
        if (step.kind == Kind::Move)
            step.to += _first;
        _steps.push_back(std::move(step));
    }

    QVector<int> _ids;
    int const _first;
    std::vector<ListStep> _steps;
};

/// A range of rows.
struct Range
{
    int first;
    int count;
};

void Extend(std::vector<Range>& ranges, int row)
{
    if (!ranges.empty() && ranges.back().first + ranges.back().count == row)
        ++ranges.back().count;
    else
        ranges.push_back({row, 1});
}

/// Returns for each id of one list its row in the other, and -1 if it is not there.
QVector<int> RowsIn(QVector<int> const& other, QVector<int> const& ids)
{
    QVector<int> rows(ids.size(), -1);
    if (other.isEmpty() || ids.isEmpty())
        return rows;
    auto const rowsById = [](QVector<int> const& list) {
        std::vector<int> order(static_cast<std::size_t>(list.size()));
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(), [&list](int left, int right) { return list.at(left) < list.at(right); });
        return order;
    };
    std::vector<int> const theirs = rowsById(other);
    auto next = theirs.begin();
    for (int const row : rowsById(ids)) {
        while (next != theirs.end() && other.at(*next) < ids.at(row))
            ++next;
        if (next != theirs.end() && other.at(*next) == ids.at(row))
            rows[row] = *next;
    }
    return rows;
}

/// The steps between two lists of any size, which stand behind `first` other ids.
std::vector<ListStep> StepsOfLargeLists(QVector<int> const& before, QVector<int> const& after, int first, int maxSteps)
{
    QVector<int> const rowsAfter = RowsIn(after, before);
    std::vector<bool> isOld(static_cast<std::size_t>(after.size()));
    std::vector<Range> removed;
    QVector<int> kept; // rows in the new list, in the old order
    QVector<int> gone; // ids
    kept.reserve(after.size());
    for (int row = 0; row < before.size(); ++row) {
        int const rowAfter = rowsAfter.at(row);
        if (rowAfter < 0) {
            Extend(removed, row);
            gone.append(before.at(row));
        }
        else {
            isOld[static_cast<std::size_t>(rowAfter)] = true;
            kept.append(rowAfter);
        }
    }
    std::vector<Range> inserted;
    for (int row = 0; row < after.size(); ++row) {
        if (!isOld[static_cast<std::size_t>(row)])
            Extend(inserted, row);
    }
    bool const keepsOrder = std::is_sorted(kept.cbegin(), kept.cend());
    bool const isFew = keepsOrder && removed.size() + inserted.size() <= static_cast<std::size_t>(maxSteps);
    auto const keptCount = static_cast<int>(kept.size());

    std::vector<ListStep> steps;
    if (isFew || removed.size() <= 1) {
        for (auto range = removed.rbegin(); range != removed.rend(); ++range)
            steps.push_back({Kind::Remove, first + range->first, range->count, 0, {}, {}});
    }
    else {
        ListStep together{Kind::Arrange, first, 0, 0, {}, QVector<int>(before.size())};
        together.ids.reserve(before.size());
        int stays = 0;
        int goes = keptCount;
        for (int row = 0; row < before.size(); ++row) {
            if (rowsAfter.at(row) < 0) {
                together.rows[row] = goes++;
            }
            else {
                together.rows[row] = stays++;
                together.ids.append(before.at(row));
            }
        }
        together.ids += gone;
        steps.push_back(std::move(together));
        steps.push_back({Kind::Remove, first + keptCount, static_cast<int>(gone.size()), 0, {}, {}});
    }

    auto const idsOf = [&after](Range const& range) { return after.mid(range.first, range.count); };
    if (isFew || (keepsOrder && inserted.size() <= 1)) {
        for (Range const& range : inserted)
            steps.push_back({Kind::Insert, first + range.first, 0, 0, idsOf(range), {}});
        return steps;
    }
    ListStep last{Kind::Arrange, first, 0, 0, after, kept};
    QVector<int> come;
    for (Range const& range : inserted) {
        come += idsOf(range);
        for (int row = range.first; row < range.first + range.count; ++row)
            last.rows.append(row);
    }
    if (!come.isEmpty())
        steps.push_back({Kind::Insert, first + keptCount, 0, 0, come, {}});
    steps.push_back(std::move(last));
    return steps;
}

} // namespace

std::vector<ListStep> StepsBetween(QVector<int> const& before, QVector<int> const& after, int maxSteps)
{
    Q_ASSERT(maxSteps >= 4);
    auto const [from, to] = std::mismatch(before.cbegin(), before.cend(), after.cbegin(), after.cend());
    auto const first = static_cast<int>(from - before.cbegin());
    auto const ends = std::mismatch(
        before.crbegin(), std::make_reverse_iterator(from), after.crbegin(), std::make_reverse_iterator(to));
    auto const sameAtEnd = static_cast<int>(ends.first - before.crbegin());
    QVector<int> const middleBefore = before.mid(first, static_cast<int>(before.size()) - first - sameAtEnd);
    QVector<int> const middleAfter = after.mid(first, static_cast<int>(after.size()) - first - sameAtEnd);
    if (middleBefore.size() <= SmallSize && middleAfter.size() <= SmallSize) {
        RecordingList list(middleBefore, first);
        ApplyDifference(list, middleAfter, [](int id) { return id; });
        std::vector<ListStep> steps = list.TakeSteps();
        if (steps.size() <= static_cast<std::size_t>(maxSteps))
            return steps;
    }
    return StepsOfLargeLists(middleBefore, middleAfter, first, maxSteps);
}

void Apply(ListStep const& step, QVector<int>& ids)
{
    switch (step.kind) {
    case Kind::Remove:
        ids.remove(step.first, step.count);
        break;
    case Kind::Move:
        MoveElement(ids.begin(), step.first, step.to);
        break;
    case Kind::Insert:
        ids.insert(step.first, static_cast<int>(step.ids.size()), 0);
        Q_FALLTHROUGH();
    case Kind::Arrange:
        std::copy(step.ids.cbegin(), step.ids.cend(), ids.begin() + step.first);
        break;
    }
}

} // namespace sync::models
