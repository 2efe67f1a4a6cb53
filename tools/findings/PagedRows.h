#pragma once

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/StoreStatements.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace tandry::findings {

/// Reads the rows of a statement in pages, in ascending order of ids, and lets the store go before it hands the rows of
/// a page out: memory does not grow with the rows, and a reader that pauses locks no writer out. So rows that change
/// meanwhile are handed out as they were before or as they are after.
template <class Row>
class PagedRows
{
public:
    /// Where a page begins: no id is less.
    static constexpr qint64 FirstId = std::numeric_limits<qint64>::min();

    /// The statement has the id as its first column, and the placeholders ":firstId", for the least id that it returns,
    /// and ":limit". `read` takes the values of the other columns.
    PagedRows(QString statement,
              StoreStatements::Values values,
              std::function<void(sync::interf::IQSqlQueryWrapper& query, Row& row)> read)
        : _statement(std::move(statement))
        , _values(std::move(values))
        , _read(std::move(read))
    {}

    /// Calls `take` with each row, or with the first ones up to a limit. A failure is in the statements.
    void Read(StoreStatements& statements,
              std::function<void(qint64 id, Row& row)> const& take,
              std::optional<int> limit = {}) const
    {
        struct NumberedRow
        {
            qint64 id;
            Row row;
        };
        std::vector<NumberedRow> page(RowsOfAPage);
        qint64 firstId = FirstId;
        qint64 left = limit ? *limit : std::numeric_limits<qint64>::max();
        bool isLast = false;
        while (!isLast && left > 0) {
            qint64 const wanted = std::min(left, qint64(RowsOfAPage));
            StoreStatements::Values values = _values;
            values.emplace_back(":firstId", firstId);
            values.emplace_back(":limit", wanted);
            std::size_t read = 0;
            statements.Read(_statement, values, [&](sync::interf::IQSqlQueryWrapper& query) {
                page[read].id = query.value(0).toLongLong();
                _read(query, page[read].row);
                ++read;
            });
            for (std::size_t i = 0; i < read; ++i)
                take(page[i].id, page[i].row);
            left -= static_cast<qint64>(read);
            isLast = static_cast<qint64>(read) < wanted || page[read - 1].id == std::numeric_limits<qint64>::max();
            if (!isLast)
                firstId = page[read - 1].id + 1;
        }
    }

private:
    static constexpr int RowsOfAPage = 1000;

    QString const _statement;
    StoreStatements::Values const _values;
    std::function<void(sync::interf::IQSqlQueryWrapper&, Row&)> const _read;
};

} // namespace tandry::findings
