#pragma once

#include <QVector>

#include <vector>

namespace sync::models {

/// A change of a list of ids, with one pair of signals of `QAbstractItemModel`.
struct ListStep
{
    enum class Kind
    {
        /// `count` ids from `first` on go.
        Remove,
        /// The id at `first` goes before the one at `to`.
        Move,
        /// `ids` come before the one at `first`.
        Insert,
        /// The ids from `first` on change their order: each goes to the place in `rows`, which makes them `ids`.
        Arrange,
    };

    Kind kind;
    int first = 0;
    int count = 0;
    int to = 0;
    QVector<int> ids;
    /// Counted from `first`.
    QVector<int> rows;
};

/// Returns the steps that turn one list of unique ids into another.
///
/// At most `maxSteps`, which must be 4 or more: a list that differs in more places is first arranged so that what goes
/// stands together, and last so that what came gets to its place. This takes about the time to sort both lists once.
std::vector<ListStep> StepsBetween(QVector<int> const& before, QVector<int> const& after, int maxSteps);

/// Applies a step to a list.
void Apply(ListStep const& step, QVector<int>& ids);

} // namespace sync::models
