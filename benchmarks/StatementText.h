#pragma once

#include <QString>

#include <cstddef>
#include <utility>

namespace sync::benchmarks {

/// A statement with a number of its own, by which an engine finds what it has prepared for it.
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
