#include "StoreQueries.h"

#include "config/RecordColumns.h"
#include "config/ScheduleEntry.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/PagedRows.h"
#include "tools/findings/StoreStatements.h"

#include <utility>

namespace tandryctl {

using sync::config::RecordColumn;
using sync::config::RecordColumns;
using sync::config::ScheduleEntry;
using tandry::findings::PagedRows;
using tandry::findings::StoreStatements;

StoreQueries::StoreQueries(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store, OriginRecords origins)
    : _store(std::move(store))
    , _origins(origins)
{}

int StoreQueries::CountReferences(char const* table, char const* column, int id)
{
    return _Count(
        QStringLiteral("SELECT count(*) FROM %1 WHERE %2 = :id").arg(QLatin1String(table), QLatin1String(column)), id);
}

int StoreQueries::CountReferencesToTree(char const* table, char const* column, int folderId)
{
    return _Count(QStringLiteral("WITH RECURSIVE tree(id) AS (SELECT CAST(:id AS bigint) UNION SELECT folder.id FROM "
                                 "FolderConfiguration AS folder JOIN tree ON folder.parentId = tree.id) "
                                 "SELECT count(*) FROM %1 WHERE %2 IN (SELECT id FROM tree)")
                      .arg(QLatin1String(table), QLatin1String(column)),
                  folderId);
}

ProductRemainder StoreQueries::RemainderOfProduct(int id)
{
    auto const query = _store->CreateQuery();
    static_cast<void>(query->prepare(
        QStringLiteral("SELECT consumerSecret, nameValueProperties FROM ProductConfiguration WHERE id = :id")));
    query->bindValue(QStringLiteral(":id"), id);
    if (!query->exec() || !query->next())
        return {};
    return {query->value(0), query->value(1)};
}

bool StoreQueries::WriteRemainderOfProduct(int id, ProductRemainder const& remainder)
{
    auto const query = _store->CreateQuery();
    static_cast<void>(query->prepare(QStringLiteral("UPDATE ProductConfiguration SET consumerSecret = :consumerSecret, "
                                                    "nameValueProperties = :nameValueProperties WHERE id = :id")));
    query->bindValue(QStringLiteral(":consumerSecret"), remainder.consumerSecret);
    query->bindValue(QStringLiteral(":nameValueProperties"), remainder.nameValueProperties);
    query->bindValue(QStringLiteral(":id"), id);
    return query->exec();
}

bool StoreQueries::Matches(QString const& text, QString const& glob)
{
    auto const query = _store->CreateQuery();
    static_cast<void>(query->prepare(QStringLiteral("SELECT :text GLOB :glob")));
    query->bindValue(QStringLiteral(":text"), text);
    query->bindValue(QStringLiteral(":glob"), glob);
    return query->exec() && query->next() && query->value(0).toBool();
}

QVector<int> StoreQueries::ScheduleIds()
{
    return _Integers(QStringLiteral("SELECT id FROM Schedules ORDER BY id"));
}

int StoreQueries::AddSchedule(ScheduleEntry const& schedule)
{
    auto const query = _store->CreateQuery();
    static_cast<void>(
        query->prepare(QStringLiteral("INSERT INTO Schedules (folderConfigurationId, startTime, expireTime, "
                                      "syncScheduleType, syncInterval) VALUES (:folderConfigurationId, :startTime, "
                                      ":expireTime, :syncScheduleType, :syncInterval)")));
    for (RecordColumn<ScheduleEntry> const& column : RecordColumns<ScheduleEntry>()) {
        if (column.name() != QLatin1String("id"))
            query->bindValue(QLatin1Char(':') + column.name(), column.Get(schedule));
    }
    return query->exec() ? query->lastInsertId().toInt() : -1;
}

bool StoreQueries::ReadFoldersOf(int rootId, std::function<void(int id, QString const& clientPath)> const& take)
{
    StoreStatements statements(_store);
    PagedRows<QString> const paths(
        QStringLiteral("SELECT id, clientPath FROM FolderConfiguration WHERE rootId = :root AND id >= :firstId "
                       "ORDER BY id LIMIT :limit"),
        {{":root", rootId}},
        [](sync::interf::IQSqlQueryWrapper& query, QString& path) { path = query.value(1).toString(); });
    paths.Read(statements, [&take](qint64 id, QString const& path) { take(int(id), path); });
    return statements.works();
}

QHash<int, FolderOrigin> StoreQueries::FolderOrigins()
{
    QHash<int, FolderOrigin> origins;
    if (_origins == OriginRecords::NotKept)
        return origins;
    auto const query = _store->CreateQuery();
    static_cast<void>(
        query->prepare(QStringLiteral("SELECT folderConfigurationId, fileSystem, inode FROM FolderFileSystem")));
    if (query->exec()) {
        while (query->next())
            origins.insert(query->value(0).toInt(), {query->value(1).toString(), query->value(2).toLongLong()});
    }
    return origins;
}

bool StoreQueries::SetFolderOrigin(int folderId, std::optional<FolderOrigin> const& origin)
{
    if (_origins == OriginRecords::NotKept)
        return true;
    QString const folder = QStringLiteral(":folder");
    auto const removal = _store->CreateQuery();
    static_cast<void>(
        removal->prepare(QStringLiteral("DELETE FROM FolderFileSystem WHERE folderConfigurationId = :folder")));
    removal->bindValue(folder, folderId);
    bool const isRemoved = removal->exec();
    if (!isRemoved || !origin)
        return isRemoved;

    auto const insertion = _store->CreateQuery();
    static_cast<void>(insertion->prepare(QStringLiteral("INSERT INTO FolderFileSystem (folderConfigurationId, "
                                                        "fileSystem, inode) VALUES (:folder, :fileSystem, :inode)")));
    insertion->bindValue(folder, folderId);
    insertion->bindValue(QStringLiteral(":fileSystem"), origin->fileSystem);
    insertion->bindValue(QStringLiteral(":inode"), origin->inode);
    return insertion->exec();
}

bool StoreQueries::RemoveOriginsOfMissingFolders()
{
    if (_origins == OriginRecords::NotKept)
        return true;
    auto const query = _store->CreateQuery();
    static_cast<void>(query->prepare(QStringLiteral(
        "DELETE FROM FolderFileSystem WHERE folderConfigurationId NOT IN (SELECT id FROM FolderConfiguration)")));
    return query->exec();
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
