#pragma once

#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandry::findings {

/// A row that has come or gone, or whose status has changed.
struct RowChange
{
    enum class Kind
    {
        Added,
        Removed,
        Status
    };

    Kind kind;
    char const* table;
    int id;
    /// The row's `syncStatus`; nothing where the table has none.
    std::optional<int> before;
    std::optional<int> after;
};

/// The ids of all rows of a store and their statuses, to be compared with those of a later moment.
///
/// The id of a removed row is not given again, so ids tell which rows have come and gone. Takes 8 bytes of memory for
/// each row, and for those of the largest table 16 during a look.
class RowStates
{
public:
    explicit RowStates(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store);

    /// Reads all rows and passes what has changed since the last look to `take`, table by table in the order of the
    /// ids; nothing at the first look. No statement reads while `take` runs. Returns false if the store has failed; the
    /// rest is then part of the next look.
    [[nodiscard]] bool Look(std::function<void(RowChange const&)> const& take);

    /// Returns a row's path or other name; a null text if there is none, or no such row any more.
    QString NameOf(char const* table, int id);

private:
    struct Row
    {
        int id;
        int status;
    };
    using Rows = std::vector<Row>;

    [[nodiscard]] bool _Read(std::size_t table, Rows& rows);

    std::shared_ptr<sync::interf::factory::IDatabaseFactory> const _store;
    /// By table; nothing before the first look.
    std::vector<std::optional<Rows>> _rows;
};

} // namespace tandry::findings
