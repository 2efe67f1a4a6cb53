#include "tools/carry/CarriedTables.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "tools/findings/IdColumns.h"

namespace tandry::carry {

using namespace sync::config;

namespace {

constexpr char const* AllRows = "TRUE";
constexpr char const* RootsOnly = "parentId = 0";

QString const Roots = QStringLiteral("roots");

char const* TargetOf(QString const& column)
{
    for (findings::IdColumn const& idColumn : findings::IdColumns) {
        if (column == QLatin1String(idColumn.column))
            return idColumn.target;
    }
    return nullptr;
}

template <class Record>
CarriedTable Describe(QString const& record, QString const& records, char const* table, char const* condition = AllRows)
{
    CarriedTable carried{record, records, table, condition, {}};
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        if (!column.isReadOnly())
            carried.columns.push_back({column.name(), column.kind(), TargetOf(column.name()), column.isSecret()});
    }
    return carried;
}

} // namespace

std::vector<CarriedTable> const& CarriedTables()
{
    auto const words = [](char const* text) { return QString::fromLatin1(text); };
    static std::vector<CarriedTable> const tables{
        Describe<ServerConfiguration>(words("server"), words("servers"), findings::Servers),
        Describe<AuthenticationConfiguration>(words("account"), words("accounts"), findings::Accounts),
        Describe<ProductConfiguration>(words("product"), words("products"), findings::Products),
        Describe<FolderConfiguration>(words("root"), Roots, findings::Folders, RootsOnly),
        Describe<FolderConfiguration>(words("folder"), words("folders"), findings::Folders),
        Describe<FileConfiguration>(words("file"), words("files"), findings::Files),
        Describe<FileConfiguration>(words("generatedFile"), words("generatedFiles"), findings::GeneratedFiles),
        Describe<FileConfiguration>(words("baseFile"), words("baseFiles"), findings::BaseFiles),
        Describe<ScheduleEntry>(words("schedule"), words("schedules"), findings::Schedules),
    };
    return tables;
}

QStringList const& ChosenRecords()
{
    static QStringList const records{QStringLiteral("servers"),
                                     QStringLiteral("accounts"),
                                     QStringLiteral("products"),
                                     Roots,
                                     QStringLiteral("schedules")};
    return records;
}

std::vector<CarriedTable const*> SelectTables(QStringList const& records)
{
    std::vector<CarriedTable const*> selected;
    for (CarriedTable const& table : CarriedTables()) {
        if (records.isEmpty() ? table.records != Roots : records.contains(table.records))
            selected.push_back(&table);
    }
    return selected;
}

} // namespace tandry::carry
