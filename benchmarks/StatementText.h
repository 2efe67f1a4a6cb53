#pragma once

#include <QString>

#include <cstddef>
#include <utility>

namespace sync::benchmarks {

/// A statement's text and a number unique in the process, the index under which connections keep the prepared
/// statement.
class StatementText
{
public:
    explicit StatementText(QString text)
        : sql(std::move(text))
        , number(_count++)
    {}

    QString const sql;
    std::size_t const number;

private:
    inline static std::size_t _count = 0;
};

} // namespace sync::benchmarks
