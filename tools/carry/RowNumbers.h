#pragma once

#include <QtGlobal>

#include <optional>
#include <vector>

namespace tandry::carry {

/// The numbers of rows, from 1 up in ascending order of their ids. Rows whose ids follow each other take no memory of
/// their own, and any others 8 bytes each.
class RowNumbers
{
public:
    /// Gives the next number to an id that is higher than all before.
    void Append(qint32 id);

    /// Returns nothing if there is no such row.
    [[nodiscard]] std::optional<qint32> Of(qint64 id) const;

    [[nodiscard]] qint32 count() const { return _count; }

private:
    /// Rows whose ids follow each other.
    struct Run
    {
        qint32 firstId;
        qint32 firstNumber;
    };

    std::vector<Run> _runs;
    qint32 _count = 0;
    qint64 _nextId = 0;
};

} // namespace tandry::carry
