#pragma once

#include <QString>

#include <vector>

namespace sync::benchmarks {

/// A table or an index, and how much of the store's file it takes.
struct StoreSize
{
    QString name;
    /// The table that an index belongs to, or the table itself.
    QString table;
    qint64 bytes = 0;

    bool isIndex() const { return name != table; }
};

std::vector<StoreSize> SizesIn(QString const& path);

/// What the table takes with all its indices.
qint64 BytesOf(QString const& table, std::vector<StoreSize> const& sizes);

} // namespace sync::benchmarks
