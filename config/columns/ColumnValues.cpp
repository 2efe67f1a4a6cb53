#include "config/columns/ColumnValues.h"

#include <QMetaType>
#include <QVariantList>
#include <QVariantMap>

#include <cmath>
#include <limits>
#include <utility>

namespace sync::config::column {

namespace {

const QString FileDate = QStringLiteral("fileDate");
const QString FileLinks = QStringLiteral("fileLinks");
const QString FileId = QStringLiteral("fileId");
const QString Path = QStringLiteral("path");
const QString RefId = QStringLiteral("refId");
const QString ServerFileId = QStringLiteral("serverFileId");

/// 2^63. Each whole `double` from -2^63 up to but excluding 2^63 has a `qint64`.
constexpr double LongIntegerBound = 9223372036854775808.0;

std::optional<qint64> FromUnsigned(quint64 value)
{
    if (value > static_cast<quint64>(std::numeric_limits<qint64>::max()))
        return std::nullopt;
    return static_cast<qint64>(value);
}

std::optional<qint64> FromReal(double value)
{
    if (std::trunc(value) != value || value < -LongIntegerBound || value >= LongIntegerBound)
        return std::nullopt;
    return static_cast<qint64>(value);
}

std::optional<qint64> FromDecimal(QString const& text)
{
    bool isNumber = false;
    qint64 const number = text.toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<FileLink> ToLink(QVariant const& value)
{
    if (value.userType() != QMetaType::QVariantMap)
        return std::nullopt;
    QVariantMap map = value.toMap();
    FileLink link;
    QVariant const fileId = map.take(FileId);
    std::optional<int> const number = fileId.isValid() ? ToInteger(fileId) : std::optional(link.fileId);
    std::optional<QString> path = ToText(map.take(Path));
    std::optional<QString> refId = ToText(map.take(RefId));
    std::optional<QString> serverFileId = ToText(map.take(ServerFileId));
    if (!number || !path || !refId || !serverFileId || !map.isEmpty())
        return std::nullopt;
    link.fileId = *number;
    link.path = std::move(*path);
    link.refId = std::move(*refId);
    link.serverFileId = std::move(*serverFileId);
    return link;
}

} // namespace

std::optional<qint64> ToLongInteger(QVariant const& value)
{
    switch (value.userType()) {
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return FromUnsigned(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double: // every number that comes from JSON
        return FromReal(value.toDouble());
    case QMetaType::QString:
        return FromDecimal(value.toString());
    default:
        if (QMetaType(value.userType()).flags().testFlag(QMetaType::IsEnumeration))
            return value.toLongLong();
        return std::nullopt;
    }
}

std::optional<int> ToInteger(QVariant const& value)
{
    std::optional<qint64> const number = ToLongInteger(value);
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<QString> ToText(QVariant const& value)
{
    if (value.isValid() && value.userType() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<QDateTime> ToTime(QVariant const& value, Qt::TimeSpec timeSpec)
{
    QDateTime time;
    if (value.userType() == QMetaType::QDateTime) {
        time = value.toDateTime();
    }
    else {
        std::optional<QString> const text = ToText(value);
        if (!text)
            return std::nullopt;
        time = QDateTime::fromString(*text, Qt::ISODateWithMs);
        if (!text->isEmpty() && !time.isValid())
            return std::nullopt;
    }
    time.setTimeSpec(timeSpec);
    return time;
}

QVariant FromProperties(QMap<QString, QString> const& properties)
{
    QVariantMap map;
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry)
        map.insert(entry.key(), entry.value());
    return map;
}

std::optional<QMap<QString, QString>> ToProperties(QVariant const& value)
{
    if (value.isValid() && value.userType() != QMetaType::QVariantMap)
        return std::nullopt;
    QMap<QString, QString> properties;
    QVariantMap const map = value.toMap();
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        std::optional<QString> const text = ToText(entry.value());
        if (!text)
            return std::nullopt;
        properties.insert(entry.key(), *text);
    }
    return properties;
}

QVariant FromLinks(QList<FileLink> const& links, QDateTime const& date)
{
    QVariantList list;
    for (FileLink const& link : links) {
        list.append(QVariantMap{
            {FileId, link.fileId}, {Path, link.path}, {RefId, link.refId}, {ServerFileId, link.serverFileId}});
    }
    return QVariantMap{{FileDate, date}, {FileLinks, list}};
}

bool ToLinks(QVariant const& value, QList<FileLink>& links, QDateTime& date)
{
    if (value.isValid() && value.userType() != QMetaType::QVariantMap)
        return false;
    QVariantMap map = value.toMap();
    std::optional<QDateTime> takenDate = ToTime(map.take(FileDate), Qt::UTC);
    QVariant const list = map.take(FileLinks);
    if (!takenDate || (list.isValid() && list.userType() != QMetaType::QVariantList) || !map.isEmpty())
        return false;

    QList<FileLink> takenLinks;
    for (QVariant const& element : list.toList()) {
        std::optional<FileLink> const link = ToLink(element);
        if (!link)
            return false;
        takenLinks.append(*link);
    }
    links = std::move(takenLinks);
    date = std::move(*takenDate);
    return true;
}

} // namespace sync::config::column
