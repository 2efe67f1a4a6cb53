#include "tools/findings/Examination.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/FindingTable.h"
#include "tools/findings/TableNames.h"

#include <QStringList>

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
    {Servers, "coalesce(nullif(bad.alias, ''), bad.webServiceUrl, bad.davUrl)"},
    {Accounts, "bad.userName"},
    {Products, "bad.name"},
    {Schedules, "NULL"},
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
        if (condition.readsWholeTable && !_HasSuspects(condition.table))
            continue;
        // The inner SELECT reads an index alone if one has the columns of the condition.
        QString const where = QStringLiteral("bad.id IN (SELECT bad.id FROM ") + QLatin1String(condition.table) +
                              QStringLiteral(" AS bad WHERE ") + condition.where + QLatin1Char(')');
        FindRows(condition.table, where, condition.detail, {}, rows);
    }
    if (entry.find != nullptr)
        entry.find(*this, rows);
    return rows;
}

std::vector<FoundRow> Examination::FindRow(FindingEntry const& entry, char const* table, int id)
{
    std::vector<FoundRow> rows;
    for (Condition const& condition : entry.conditions) {
        if (std::strcmp(condition.table, table) == 0)
            FindRows(table,
                     QStringLiteral("bad.id = :row AND (%1)").arg(condition.where),
                     condition.detail,
                     {{":row", id}},
                     rows);
    }
    return rows;
}

void Examination::ReadRows(char const* table,
                           QString const& where,
                           QString const& columns,
                           StoreStatements::Values const& values,
                           std::function<void(FoundRow const&, sync::interf::IQSqlQueryWrapper&)> const& take)
{
    QString const statement = QStringLiteral("SELECT bad.id, ") + NameOfRowsIn(table) + QStringLiteral(", ") + columns +
                              QStringLiteral(" FROM ") + QLatin1String(table) + QStringLiteral(" AS bad WHERE ") +
                              where + QStringLiteral(" ORDER BY bad.id");
    _statements.Read(statement, values, [&](sync::interf::IQSqlQueryWrapper& row) {
        take({QLatin1String(table), row.value(0).toInt(), row.value(1).toString(), QString()}, row);
    });
}

void Examination::FindRows(char const* table,
                           QString const& where,
                           QString const& detail,
                           StoreStatements::Values const& values,
                           std::vector<FoundRow>& rows)
{
    ReadRows(table, where, detail, values, [&](FoundRow const& found, sync::interf::IQSqlQueryWrapper& row) {
        rows.push_back(found);
        rows.back().detail = row.value(2).toString();
    });
}

DocumentFindings const& Examination::documents()
{
    if (!_documents)
        _documents = ExamineDocuments(*this);
    return *_documents;
}

PathSurvey const& Examination::paths()
{
    if (!_paths)
        _paths = SurveyPaths(_statements);
    return *_paths;
}

void Examination::Forget()
{
    _documents.reset();
    _paths.reset();
    _hasSuspects.clear();
}

bool Examination::_HasSuspects(char const* table)
{
    QString const name = QLatin1String(table);
    auto known = _hasSuspects.constFind(name);
    if (known != _hasSuspects.constEnd())
        return *known;
    QStringList conditions;
    for (FindingEntry const& entry : FindingTable()) {
        for (Condition const& condition : entry.conditions) {
            if (condition.readsWholeTable && name == QLatin1String(condition.table))
                conditions.append(QLatin1Char('(') + condition.where + QLatin1Char(')'));
        }
    }
    bool const hasSuspects = !_statements
                                  .Value(QStringLiteral("SELECT 1 FROM ") + name + QStringLiteral(" AS bad WHERE ") +
                                         conditions.join(QStringLiteral(" OR ")) + QStringLiteral(" LIMIT 1"))
                                  .isNull();
    _hasSuspects.insert(name, hasSuspects);
    return hasSuspects;
}

bool Examination::works() const
{
    return _statements.works() && !_store->LastError();
}

} // namespace tandry::findings
