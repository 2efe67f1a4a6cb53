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
using tandry::findings::FileRows;

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
        if (column.kind() == ColumnKind::Text)
            columns.last().cellWidth = CellWidth::MayBeShortened;
        columns.last().mayBeLeftOut = column.name() != QLatin1String("clientPath");
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

constexpr char const* Links = "fileLinks";

/// The links without their date.
QVariant LinksAlone(QVariant const& column)
{
    return column.toMap().value(QLatin1String(Links));
}

template <class Record>
auto FindStatus(Columns<Record>& columns)
{
    return std::find_if(columns.begin(), columns.end(), [](Column<Record> const& column) {
        return column.name == QLatin1String("syncStatus");
    });
}

/// Has one value of the status stand out.
template <int Value, class Record>
Columns<Record> WithAttentionTo(Columns<Record> columns)
{
    FindStatus(columns)->style = [](QVariant const& status) {
        return status.toInt() == Value ? Style::Attention : Style::None;
    };
    return columns;
}

template <class Record>
Columns<Record> WithStatusFirst(Columns<Record> columns)
{
    auto const status = FindStatus(columns);
    std::rotate(columns.begin(), status, status + 1);
    return columns;
}

QVariant HiddenSecretOf(ProductConfiguration const& product)
{
    QString const secret = product.getConsumerSecret();
    return secret.isEmpty() ? QVariant(secret) : QVariant::fromValue(Hidden());
}

} // namespace

Columns<FolderConfiguration> const& FolderColumns()
{
    static auto const columns =
        WithStatusFirst(WithAttentionTo<sync::config::FolderStatusOutOfSync>(TableColumns<FolderConfiguration>(
            {"id", "authenticationId", "clientPath", "serverPath", "syncStatus", "parentId"})));
    return columns;
}

Columns<FileConfiguration> const& FileColumns()
{
    static auto const columns = WithStatusFirst(WithAttentionTo<sync::config::FileSyncStatusNotSynced>(
        With(TableColumns<FileConfiguration>({"id", "clientPath", "lastModifiedDateTime", "syncStatus", "size"},
                                             PropertiesPrinted::Yes),
             Links,
             [](FileConfiguration const& file) { return LinksAlone(ValueOf(file, Links)); })));
    return columns;
}

Columns<FileRows::Row> FileRowColumns(Columns<FileConfiguration> const& columns)
{
    Columns<FileRows::Row> ofRows;
    for (Column<FileConfiguration> const& column : columns) {
        auto const position = static_cast<std::size_t>(ofRows.size());
        bool const isLinks = column.name == QLatin1String(Links);
        ofRows.append({column.name, column.shown, [position, isLinks](FileRows::Row const& row) {
                           return isLinks ? LinksAlone(row[position]) : row[position];
                       }});
        ofRows.last().names = column.names;
        ofRows.last().style = column.style;
        ofRows.last().cellWidth = column.cellWidth;
        ofRows.last().mayBeLeftOut = column.mayBeLeftOut;
    }
    return ofRows;
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
