#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <optional>

/// Between the values of columns and the `QVariant`s in which clients see them. `ColumnKind` tells what is taken for
/// each kind; what isn't gives nothing.
namespace sync::config::column {

std::optional<int> ToInteger(QVariant const& value);
std::optional<qint64> ToLongInteger(QVariant const& value);
std::optional<QString> ToText(QVariant const& value);
/// The clock reading of the value, in this time spec.
std::optional<QDateTime> ToTime(QVariant const& value, Qt::TimeSpec timeSpec);

QVariant FromProperties(QMap<QString, QString> const& properties);
std::optional<QMap<QString, QString>> ToProperties(QVariant const& value);

QVariant FromLinks(QList<FileLink> const& links, QDateTime const& date);
/// Returns false, and leaves links and date as they were, when the value can't be taken.
[[nodiscard]] bool ToLinks(QVariant const& value, QList<FileLink>& links, QDateTime& date);

} // namespace sync::config::column
