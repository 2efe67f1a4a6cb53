#include "tools/carry/CarriedRows.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <limits>

namespace tandry::carry {

using findings::StoreStatements;
using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr int PageRows = 1000;

QString const Id = QStringLiteral("id");
QString const Separator = QStringLiteral(", ");

void ReadPages(StoreStatements& statements,
               CarriedTable const& table,
               QStringList const& columns,
               StoreStatements::TakeRow const& take)
{
    QString const statement =
        QStringLiteral("SELECT %1 FROM %2 WHERE id > :last AND %3 ORDER BY id LIMIT :rows")
            .arg(columns.join(Separator), QLatin1String(table.table), QLatin1String(table.condition));
    qint64 last = qint64(std::numeric_limits<qint32>::min()) - 1; // ids have 32 bits
    int rows = PageRows;
    while (rows == PageRows && statements.works()) {
        rows = 0;
        statements.Read(statement, {{":last", last}, {":rows", PageRows}}, [&](IQSqlQueryWrapper& row) {
            ++rows;
            last = row.value(0).toLongLong();
            take(row);
        });
    }
}

} // namespace

void ReadRows(StoreStatements& statements, CarriedTable const& table, StoreStatements::TakeRow const& take)
{
    QStringList columns{Id};
    for (CarriedColumn const& column : table.columns)
        columns.append(column.name);
    ReadPages(statements, table, columns, take);
}

void ReadIds(StoreStatements& statements, CarriedTable const& table, StoreStatements::TakeRow const& take)
{
    ReadPages(statements, table, {Id}, take);
}

RowWriter::RowWriter(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& store, CarriedTable const& table)
    : _insert(store->CreateQuery())
{
    QStringList columns{Id};
    _placeholders.push_back(QLatin1Char(':') + Id);
    for (CarriedColumn const& column : table.columns) {
        columns.append(column.name);
        _placeholders.push_back(QLatin1Char(':') + column.name);
    }
    static_cast<void>(_insert->prepare( // `exec` fails too
        QStringLiteral("INSERT INTO %1 (%2) VALUES (:%3)")
            .arg(QLatin1String(table.table), columns.join(Separator), columns.join(QStringLiteral(", :")))));
}

RowWriter::~RowWriter() = default;

bool RowWriter::Insert(qint32 id, std::vector<QVariant> const& values)
{
    _insert->bindValue(_placeholders.front(), id);
    for (std::size_t i = 0; i < values.size(); ++i)
        _insert->bindValue(_placeholders[i + 1], values[i]);
    return _insert->exec();
}

} // namespace tandry::carry
