#include "tools/carry/Bundle.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/carry/CarriedRows.h"
#include "tools/carry/Pseudonyms.h"

namespace tandry::carry {

using findings::StoreStatements;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

std::optional<RecordCounts> CopyWithPseudonyms(std::shared_ptr<IDatabaseFactory> const& from,
                                               std::shared_ptr<IDatabaseFactory> const& to,
                                               Pseudonyms& pseudonyms,
                                               CarryProgress const& progress)
{
    auto const database = to->CreateDatabase();
    if (!database->transaction())
        return std::nullopt;
    StoreStatements reading(from);
    StoreStatements writing(to);
    writing.Write(QStringLiteral("DELETE FROM Schedules")); // the default one of a new store
    bool isWritten = true;
    RecordCounts counts;
    for (CarriedTable const* table : SelectTables({})) {
        RowWriter writer(to, *table);
        std::vector<QVariant> values(table->columns.size());
        qint64 count = 0;
        ReadRows(reading, *table, [&](IQSqlQueryWrapper& row) {
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = pseudonyms.Of(table->columns[i].kind, row.value(int(i) + 1));
            isWritten = isWritten && writer.Insert(row.value(0).toInt(), values);
            ++count;
            if (progress)
                progress();
        });
        counts.emplace_back(table->records, count);
    }
    if (reading.works() && writing.works() && isWritten)
        return database->commit() ? std::optional<RecordCounts>(counts) : std::nullopt;
    static_cast<void>(database->rollback()); // the failure is being reported
    return std::nullopt;
}

} // namespace tandry::carry
