#include "tools/findings/Twins.h"

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/Documents.h"
#include "tools/findings/Examination.h"
#include "tools/findings/Fix.h"
#include "tools/findings/TableNames.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace tandry::findings {

namespace {

/// The columns in which twins agree, besides the path.
struct TwinKey
{
    char const* table;
    char const* columns;
};

constexpr TwinKey TwinKeys[] = {
    // Several accounts may synchronise one path.
    {Folders, "parentId, CASE parentId WHEN 0 THEN authenticationId END"},
    {Files, "folderConfigurationId"},
    {GeneratedFiles, "folderConfigurationId, parentFileId"},
    {BaseFiles, "folderConfigurationId, parentFileId"},
};

/// Sorts the paths that occur more than once, and no others.
QString SelectOf(TwinKey const& key)
{
    return QStringLiteral("SELECT id, keptId, clientPath FROM (SELECT id, clientPath, min(id) OVER "
                          "(PARTITION BY clientPath, %2) AS keptId FROM %1 WHERE clientPath IN "
                          "(SELECT clientPath FROM %1 WHERE clientPath <> '' GROUP BY clientPath HAVING count(*) > 1)) "
                          "WHERE id <> keptId ORDER BY id")
        .arg(QLatin1String(key.table), QLatin1String(key.columns));
}

/// A column that names rows of the target by their ids.
struct Reference
{
    char const* target;
    char const* table;
    char const* column;
};

constexpr Reference References[] = {
    {Folders, Folders, "parentId"},
    {Folders, Folders, "rootId"},
    {Folders, Files, "folderConfigurationId"},
    {Folders, Files, "rootFolderId"},
    {Folders, GeneratedFiles, "folderConfigurationId"},
    {Folders, GeneratedFiles, "rootFolderId"},
    {Folders, BaseFiles, "folderConfigurationId"},
    {Folders, BaseFiles, "rootFolderId"},
    {Folders, Schedules, "folderConfigurationId"},
    {Files, GeneratedFiles, "parentFileId"},
    {Files, BaseFiles, "parentFileId"},
};

/// The pairs of ids in ":twins".
constexpr char const* TwinIds = "(SELECT json_extract(value, '$[0]') AS id, json_extract(value, '$[1]') AS keptId "
                                "FROM json_each(:twins))";

/// Merges the twins of one table.
void Merge(Examination& examination, char const* table, QHash<int, int> const& keptIds)
{
    QJsonArray pairs;
    for (auto twin = keptIds.begin(); twin != keptIds.end(); ++twin)
        pairs.append(QJsonArray{twin.key(), twin.value()});
    StoreStatements::Values const values{
        {":twins", QString::fromUtf8(QJsonDocument(pairs).toJson(QJsonDocument::Compact))}};
    for (Reference const& reference : References) {
        if (reference.target == table)
            examination.statements().Write(
                QStringLiteral("UPDATE %1 AS naming SET %2 = twin.keptId FROM %3 AS twin WHERE naming.%2 = twin.id")
                    .arg(QLatin1String(reference.table), QLatin1String(reference.column), QLatin1String(TwinIds)),
                values);
    }
    examination.statements().Write(QStringLiteral("DELETE FROM %1 WHERE id IN (SELECT id FROM %2)")
                                       .arg(QLatin1String(table), QLatin1String(TwinIds)),
                                   values);
}

/// Lets the links that named removed files name the kept ones.
void FollowLinks(Examination& examination, QHash<int, int> const& keptIds, std::vector<FixedRow>& fixed)
{
    for (FoundRow const& row : ExamineDocuments(examination).linksToNothing) {
        if (ChangeLinks(examination, row, [&](int fileId, QString const&) { return keptIds.value(fileId, fileId); }))
            fixed.push_back({row, QStringLiteral("links set to the rows that stay")});
    }
}

} // namespace

std::vector<Twin> FindTwins(Examination& examination)
{
    std::vector<Twin> twins;
    for (TwinKey const& key : TwinKeys) {
        if (key.table != BaseFiles && !examination.paths().hasRepeated)
            continue; // what is asked for the notes on paths anyway answers for these tables
        examination.statements().Read(SelectOf(key), {}, [&](sync::interf::IQSqlQueryWrapper& row) {
            twins.push_back({key.table, row.value(0).toInt(), row.value(1).toInt(), row.value(2).toString()});
        });
    }
    return twins;
}

void FindTwinRows(Examination& examination, std::vector<FoundRow>& rows)
{
    for (Twin const& twin : FindTwins(examination))
        rows.push_back({QLatin1String(twin.table), twin.id, twin.path, QStringLiteral("twin of %1").arg(twin.keptId)});
}

void MergeTwins(Examination& examination, std::vector<FoundRow> const&, std::vector<FixedRow>& fixed)
{
    for (std::vector<Twin> twins = FindTwins(examination); !twins.empty(); twins = FindTwins(examination)) {
        QHash<char const*, QHash<int, int>> keptIds;
        for (Twin const& twin : twins) {
            keptIds[twin.table].insert(twin.id, twin.keptId);
            fixed.push_back({{QLatin1String(twin.table), twin.id, twin.path, QString()},
                             QStringLiteral("merged into %1").arg(twin.keptId)});
        }
        for (TwinKey const& key : TwinKeys) {
            if (keptIds.contains(key.table))
                Merge(examination, key.table, keptIds.value(key.table));
        }
        if (keptIds.contains(Files))
            FollowLinks(examination, keptIds.value(Files), fixed);
    }
}

} // namespace tandry::findings
