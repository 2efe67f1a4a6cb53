#include "StoreQueries.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <utility>

namespace tandryctl {

StoreQueries::StoreQueries(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store)
    : _store(std::move(store))
{}

int StoreQueries::CountReferences(char const* table, char const* column, int id)
{
    return _Count(
        QStringLiteral("SELECT count(*) FROM %1 WHERE %2 = :id").arg(QLatin1String(table), QLatin1String(column)), id);
}

int StoreQueries::CountReferencesToTree(char const* table, char const* column, int folderId)
{
    return _Count(QStringLiteral("WITH RECURSIVE tree(id) AS (SELECT :id UNION SELECT folder.id FROM "
                                 "FolderConfiguration AS folder JOIN tree ON folder.parentId = tree.id) "
                                 "SELECT count(*) FROM %1 WHERE %2 IN tree")
                      .arg(QLatin1String(table), QLatin1String(column)),
                  folderId);
}

QVector<int> StoreQueries::ScheduleIds()
{
    return _Integers(QStringLiteral("SELECT id FROM Schedules ORDER BY id"));
}

QVector<int> StoreQueries::_Integers(QString const& statement, std::optional<int> id)
{
    QVector<int> integers;
    auto const query = _store->CreateQuery();
    static_cast<void>(query->prepare(statement));
    if (id)
        query->bindValue(QStringLiteral(":id"), *id);
    if (query->exec()) {
        while (query->next())
            integers.append(query->value(0).toInt());
    }
    return integers;
}

int StoreQueries::_Count(QString const& statement, int id)
{
    QVector<int> const counts = _Integers(statement, id);
    return counts.isEmpty() ? 0 : counts.first();
}

} // namespace tandryctl
