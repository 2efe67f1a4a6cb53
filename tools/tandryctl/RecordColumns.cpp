#include "RecordColumns.h"

#include "config/RecordColumns.h"
#include "tools/findings/ColumnReference.h"

#include <algorithm>
#include <initializer_list>

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
using sync::config::ColumnKind;
using sync::config::FileConfiguration;
using sync::config::FindRecordColumn;
using sync::config::FolderConfiguration;
using sync::config::ProductConfiguration;
using sync::config::RecordColumn;
using sync::config::RecordColumns;
using sync::config::ScheduleEntry;
using sync::config::ServerConfiguration;

namespace {

using Names = std::initializer_list<char const*>;

enum class PropertiesPrinted
{
    No,
    Yes
};

/// The columns of the table that are printed, with these names as part of plain listings.
template <class Record>
Columns<Record> TableColumns(Names always, PropertiesPrinted properties = PropertiesPrinted::No)
{
    Columns<Record> columns;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        bool const isHidden = column.kind() == ColumnKind::Properties && properties == PropertiesPrinted::No;
        if (isHidden || !column.isReceived())
            continue;
        bool const isAlways = std::any_of(
            always.begin(), always.end(), [&](char const* name) { return column.name() == QLatin1String(name); });
        columns.append({column.name(), isAlways ? Shown::Always : Shown::InFull, [&column](Record const& record) {
                            return column.Get(record);
                        }});
        columns.last().names = tandry::findings::NamesOfValues<Record>(column.name());
    }
    return columns;
}

/// Prints a column by this function instead of its value in the table.
template <class Record>
Columns<Record> With(Columns<Record> columns, char const* name, typename Column<Record>::Value const& value)
{
    for (Column<Record>& column : columns) {
        if (column.name == QLatin1String(name))
            column.value = value;
    }
    return columns;
}

template <class Record>
QVariant ValueOf(Record const& record, char const* name)
{
    RecordColumn<Record> const* column = FindRecordColumn<Record>(QLatin1String(name));
    return column == nullptr ? QVariant() : column->Get(record);
}

QVariant LinksOf(FileConfiguration const& file)
{
    return ValueOf(file, "fileLinks").toMap().value(QStringLiteral("fileLinks"));
}

QVariant HiddenSecretOf(ProductConfiguration const& product)
{
    QString const secret = product.getConsumerSecret();
    return secret.isEmpty() ? QVariant(secret) : QVariant::fromValue(Hidden());
}

} // namespace

Columns<FolderConfiguration> const& FolderColumns()
{
    static auto const columns = TableColumns<FolderConfiguration>(
        {"id", "authenticationId", "clientPath", "serverPath", "syncStatus", "parentId"});
    return columns;
}

Columns<FileConfiguration> const& FileColumns()
{
    static auto const columns =
        With(TableColumns<FileConfiguration>(
                 {"id", "folderConfigurationId", "clientPath", "lastModifiedDateTime", "syncStatus", "size"},
                 PropertiesPrinted::Yes),
             "fileLinks",
             LinksOf);
    return columns;
}

Columns<ServerConfiguration> const& ServerColumns()
{
    static auto const columns = With(TableColumns<ServerConfiguration>({"id", "alias", "davUrl", "webServiceUrl"}),
                                     "alias",
                                     [](ServerConfiguration const& server) { return server.getAlias(); });
    return columns;
}

Columns<AuthenticationConfiguration> const& AccountColumns()
{
    static auto const columns = TableColumns<AuthenticationConfiguration>({"id", "domain", "userName", "serverId"});
    return columns;
}

Columns<ProductConfiguration> ProductColumns(bool showSecret)
{
    auto const columns = TableColumns<ProductConfiguration>({"id", "name", "consumerKey", "serverId"});
    return showSecret ? columns : With(columns, "consumerSecret", HiddenSecretOf);
}

Columns<ScheduleEntry> const& ScheduleColumns()
{
    static auto const columns = TableColumns<ScheduleEntry>(
        {"id", "folderConfigurationId", "startTime", "expireTime", "syncScheduleType", "syncInterval"});
    return columns;
}

int ServerIdOf(ProductConfiguration const& product)
{
    return ValueOf(product, "serverId").toInt();
}

} // namespace tandryctl
