#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <optional>

/// Conversions between the values of columns and the `QVariant`s of `RecordColumn`. `ColumnKind` lists the types that
/// each kind takes; values of other types give nothing.
namespace sync::config::column {

std::optional<int> ToInteger(QVariant const& value);
std::optional<qint64> ToLongInteger(QVariant const& value);
std::optional<QString> ToText(QVariant const& value);
/// Returns the clock reading of the value, in this time spec.
std::optional<QDateTime> ToTime(QVariant const& value, Qt::TimeSpec timeSpec);

QVariant FromProperties(QMap<QString, QString> const& properties);
std::optional<QMap<QString, QString>> ToProperties(QVariant const& value);

QVariant FromLinks(QList<FileLink> const& links, QDateTime const& date);
/// Returns false, and changes neither links nor date, if the value has another form.
[[nodiscard]] bool ToLinks(QVariant const& value, QList<FileLink>& links, QDateTime& date);

} // namespace sync::config::column
