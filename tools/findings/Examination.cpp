#include "tools/findings/Examination.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/FindingTable.h"

#include <cstring>

namespace tandry::findings {

namespace {

/// The column that a user knows a table's rows by.
struct NameColumn
{
    char const* table;
    char const* expression;
};

constexpr NameColumn NameColumns[] = {
    {"ServerConfiguration", "coalesce(nullif(bad.alias, ''), bad.webServiceUrl, bad.davUrl)"},
    {"AuthenticationConfiguration", "bad.userName"},
    {"ProductConfiguration", "bad.name"},
    {"Schedules", "NULL"},
};

/// Folders and files are known by their paths.
QString NameOfRowsIn(char const* table)
{
    for (NameColumn const& column : NameColumns) {
        if (std::strcmp(column.table, table) == 0)
            return QLatin1String(column.expression);
    }
    return QStringLiteral("bad.clientPath");
}

/// The inner SELECT reads an index alone if one has the columns of the condition.
QString SelectOf(Condition const& condition)
{
    QString const table = QLatin1String(condition.table);
    return QLatin1String("SELECT bad.id, ") + NameOfRowsIn(condition.table) + QLatin1String(", ") + condition.detail +
           QLatin1String(" FROM ") + table + QLatin1String(" AS bad WHERE bad.id IN (SELECT bad.id FROM ") + table +
           QLatin1String(" AS bad WHERE ") + condition.where + QLatin1String(") ORDER BY bad.id");
}

} // namespace

Examination::Examination(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store)
    : _store(store)
    , _statements(store)
{
    _store->ClearError();
}

std::vector<FoundRow> Examination::Find(FindingEntry const& entry)
{
    std::vector<FoundRow> rows;
    for (Condition const& condition : entry.conditions) {
        _statements.Read(SelectOf(condition), {}, [&](sync::interf::IQSqlQueryWrapper& row) {
            rows.push_back({QLatin1String(condition.table),
                            row.value(0).toInt(),
                            row.value(1).toString(),
                            row.value(2).toString()});
        });
    }
    if (entry.find != nullptr)
        entry.find(*this, rows);
    return rows;
}

bool Examination::works() const
{
    return _statements.works() && !_store->LastError();
}

} // namespace tandry::findings
