#pragma once

#include <QHash>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <vector>

namespace sync::models {

/// Marks the numbers of a longest rising subsequence.
inline std::vector<bool> LongestRising(std::vector<int> const& numbers)
{
    std::vector<std::size_t> ends; // of the rising subsequences of each length, the least last element's place
    std::vector<std::size_t> before(numbers.size());
    for (std::size_t place = 0; place < numbers.size(); ++place) {
        auto const end = std::lower_bound(
            ends.begin(), ends.end(), numbers[place], [&](std::size_t at, int number) { return numbers[at] < number; });
        before[place] = end == ends.begin() ? place : *(end - 1);
        if (end == ends.end())
            ends.push_back(place);
        else
            *end = place;
    }
    std::vector<bool> isRising(numbers.size());
    for (std::size_t length = ends.size(), place = ends.empty() ? 0 : ends.back(); length > 0; --length) {
        isRising[place] = true;
        place = before[place];
    }
    return isRising;
}

/// Moves an element of a list as `beginMoveRows` says: `to` is a place in the list as it is before the move.
template <class Iterator>
void MoveElement(Iterator begin, int from, int to)
{
    if (from < to)
        std::rotate(begin + from, begin + from + 1, begin + to);
    else
        std::rotate(begin + to, begin + from, begin + from + 1);
}

/// Turns a list of rows into another one by removing, moving, inserting and changing as few rows as possible.
///
/// `List` has these operations on the rows of the list that is shown; `Row` is what the new list holds:
///
///     int size() const;
///     int id(int at) const;                             // unique
///     void Remove(int first, int last);
///     void Move(int from, int to);                      // as `MoveElement` does
///     void Insert(int at, Row const* first, int count);
///     void Update(int at, Row const& row);              // called for every row that stays
///
/// REQUIRES: `idOf(row)` is unique among the new rows.
template <class List, class Row, class IdOf>
void ApplyDifference(List& list, QVector<Row> const& rows, IdOf const& idOf)
{
    QSet<int> wanted;
    for (Row const& row : rows)
        wanted.insert(idOf(row));
    for (int last = list.size() - 1; last >= 0; --last) {
        if (wanted.contains(list.id(last)))
            continue;
        int first = last;
        while (first > 0 && !wanted.contains(list.id(first - 1)))
            --first;
        list.Remove(first, last);
        last = first;
    }

    QHash<int, int> placeOf; // in the list, of the rows that stay
    for (int at = 0; at < list.size(); ++at)
        placeOf.insert(list.id(at), at);
    std::vector<int> places;
    for (Row const& row : rows) {
        if (placeOf.contains(idOf(row)))
            places.push_back(placeOf.value(idOf(row)));
    }
    // The most rows that need not move; each of the others goes behind its predecessor.
    std::vector<bool> const stays = LongestRising(places);
    std::size_t kept = 0;
    int at = 0;
    for (int next = 0; next < rows.size();) {
        int const id = idOf(rows.at(next));
        if (!placeOf.contains(id)) {
            int end = next + 1;
            while (end < rows.size() && !placeOf.contains(idOf(rows.at(end))))
                ++end;
            list.Insert(at, &rows.at(next), end - next);
            at += end - next;
            next = end;
            continue;
        }
        if (stays[kept++]) {
            while (list.id(at) != id)
                ++at; // rows that are still to be moved
        }
        else {
            int from = 0;
            while (list.id(from) != id)
                ++from;
            if (from != at && from != at - 1)
                list.Move(from, at);
            if (from < at)
                --at;
        }
        list.Update(at, rows.at(next));
        ++at;
        ++next;
    }
}

} // namespace sync::models
