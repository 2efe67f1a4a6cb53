#include "tools/findings/Twins.h"

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/Examination.h"
#include "tools/findings/TableNames.h"

namespace tandry::findings {

namespace {

/// What twins have in common besides their path.
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

} // namespace

std::vector<Twin> FindTwins(Examination& examination)
{
    std::vector<Twin> twins;
    for (TwinKey const& key : TwinKeys) {
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

} // namespace tandry::findings
