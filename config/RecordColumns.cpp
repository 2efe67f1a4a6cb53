#include "config/RecordColumns.h"

#include "config/account/AuthenticationColumns.h"
#include "config/columns/ColumnList.h"
#include "config/file/FileColumns.h"
#include "config/folder/FolderColumns.h"
#include "config/product/ProductColumns.h"
#include "config/schedule/ScheduleEntryColumns.h"
#include "config/server/ServerColumns.h"

#include <tuple>

namespace sync::config {

namespace {

template <class Record, class Column>
RecordColumn<Record> Describe(Column const& described)
{
    typename RecordColumn<Record>::Traits traits;
    traits.isReadOnly = (described.marks & column::GivenByStore) != 0 || !Column::isStored;
    traits.isReceived = (described.marks & column::NotCopied) == 0 && Column::isStored;
    traits.isSecret = (described.marks & column::Secret) != 0;
    traits.valueNames = ValueNames(described.firstValue, described.endOfValues, Column::kind == ColumnKind::BitField);
    return {QLatin1String(described.name), Column::kind, traits, &Column::Get, &Column::Set};
}

template <class Record>
QVector<RecordColumn<Record>> const& Described()
{
    static QVector<RecordColumn<Record>> const columns =
        std::apply([](auto const&... each) { return QVector<RecordColumn<Record>>{Describe<Record>(each)...}; },
                   TableColumns<Record>::list);
    return columns;
}

} // namespace

template <>
QVector<RecordColumn<AuthenticationConfiguration>> const& RecordColumns()
{
    return Described<AuthenticationConfiguration>();
}

template <>
QVector<RecordColumn<FileConfiguration>> const& RecordColumns()
{
    return Described<FileConfiguration>();
}

template <>
QVector<RecordColumn<FolderConfiguration>> const& RecordColumns()
{
    return Described<FolderConfiguration>();
}

template <>
QVector<RecordColumn<ProductConfiguration>> const& RecordColumns()
{
    return Described<ProductConfiguration>();
}

template <>
QVector<RecordColumn<ScheduleEntry>> const& RecordColumns()
{
    return Described<ScheduleEntry>();
}

template <>
QVector<RecordColumn<ServerConfiguration>> const& RecordColumns()
{
    return Described<ServerConfiguration>();
}

} // namespace sync::config
