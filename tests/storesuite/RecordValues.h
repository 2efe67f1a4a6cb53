#pragma once

#include <tandry/config/AuthenticationConfiguration.h>
#include <tandry/config/FileConfiguration.h>
#include <tandry/config/FolderConfiguration.h>
#include <tandry/config/ProductConfiguration.h>
#include <tandry/config/RecordColumns.h>
#include <tandry/config/ScheduleEntry.h>
#include <tandry/config/ServerConfiguration.h>

#include <QDateTime>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>

#include <algorithm>
#include <string>
#include <vector>

/// Values for all columns of a record, from the record's own list of columns: a column that is added is tested at once.
namespace tandry::storesuite {

using sync::config::AuthenticationConfiguration;
using sync::config::ColumnKind;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::config::ProductConfiguration;
using sync::config::RecordColumn;
using sync::config::RecordColumns;
using sync::config::ScheduleEntry;
using sync::config::ServerConfiguration;

/// Returns a value that differs from those of all other positions, in the type in which a column of this kind returns
/// it.
inline QVariant DistinctValue(ColumnKind kind, int position)
{
    QString const text = QStringLiteral("value %1").arg(position);
    QDateTime const time(QDate(2024, 7, 1), QTime(1, 2, position), Qt::UTC); // whole seconds, as links have them
    switch (kind) {
    case ColumnKind::Integer:
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return 1000 + position;
    case ColumnKind::LongInteger:
        return 5'000'000'000LL + position;
    case ColumnKind::Text:
        return text;
    case ColumnKind::Time:
        return time.addMSecs(100 + position);
    case ColumnKind::Properties:
        return QVariantMap{{QStringLiteral("Key"), text}};
    case ColumnKind::Links:
        return QVariantMap{
            {QStringLiteral("fileDate"), time},
            {QStringLiteral("fileLinks"),
             QVariantList{QVariantMap{{QStringLiteral("fileId"), 2000 + position},
                                      {QStringLiteral("path"), text + QStringLiteral(" path")},
                                      {QStringLiteral("refId"), text + QStringLiteral(" reference")},
                                      {QStringLiteral("serverFileId"), text + QStringLiteral(" server")}}}}};
    }
    return {};
}

/// Returns a record in which each column that a client may set has its `DistinctValue`.
template <class Record>
Record DistinctRecord()
{
    Record record;
    auto const& columns = RecordColumns<Record>();
    for (int position = 0; position < columns.size(); ++position)
        static_cast<void>(columns[position].Set(record, DistinctValue(columns[position].kind(), position)));
    return record;
}

/// Whether two values are equal. Null and empty texts differ, and so do times of one instant in different time specs.
inline bool IsSame(QVariant const& left, QVariant const& right)
{
    if (left.userType() != right.userType())
        return false;
    switch (left.userType()) {
    case QMetaType::QString:
        return left.toString() == right.toString() && left.toString().isNull() == right.toString().isNull();
    case QMetaType::QDateTime: {
        QDateTime const one = left.toDateTime();
        QDateTime const other = right.toDateTime();
        return one.isValid() == other.isValid() && (!one.isValid() || one == other) &&
               one.timeSpec() == other.timeSpec();
    }
    case QMetaType::QVariantList: {
        QVariantList const one = left.toList();
        QVariantList const other = right.toList();
        return std::equal(one.begin(), one.end(), other.begin(), other.end(), IsSame);
    }
    case QMetaType::QVariantMap: {
        QVariantMap const one = left.toMap();
        QVariantMap const other = right.toMap();
        return one.keys() == other.keys() && std::equal(one.begin(), one.end(), other.begin(), other.end(), IsSame);
    }
    default:
        return left == right;
    }
}

/// Returns the names of the columns whose values differ in the sense of `IsSame`.
template <class Record>
std::vector<std::string> DifferingColumns(Record const& left, Record const& right)
{
    std::vector<std::string> different;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        if (!IsSame(column.Get(left), column.Get(right)))
            different.push_back(column.name().toStdString());
    }
    return different;
}

} // namespace tandry::storesuite
