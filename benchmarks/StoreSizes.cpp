#include "benchmarks/StoreSizes.h"

#include "benchmarks/SqliteEngine.h"

namespace sync::benchmarks {

namespace {

const StatementText Sizes(QStringLiteral("SELECT s.name, m.tbl_name, sum(s.pgsize) FROM dbstat s "
                                         "JOIN sqlite_schema m ON m.name = s.name GROUP BY s.name ORDER BY s.name"));

} // namespace

std::vector<StoreSize> SizesIn(QString const& path)
{
    std::vector<StoreSize> sizes;
    SqliteEngine engine(path);
    auto statement = engine.Use(Sizes);
    while (statement.Next())
        sizes.push_back({statement.Text(0), statement.Text(1), statement.Long(2)});
    return sizes;
}

qint64 BytesOf(QString const& table, std::vector<StoreSize> const& sizes)
{
    qint64 bytes = 0;
    for (StoreSize const& size : sizes)
        if (size.table == table)
            bytes += size.bytes;
    return bytes;
}

} // namespace sync::benchmarks
