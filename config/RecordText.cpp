#include "config/RecordText.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FileLink.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/RecordColumns.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QStringList>
#include <QVariantMap>

namespace sync::config {

namespace {

QString Hidden()
{
    return QStringLiteral("***");
}

/// A URL may have secrets in it, and so may what is derived from it. A user without a password may be a token.
QString Quoted(QString text)
{
    static QRegularExpression const password(QStringLiteral(":[^/\\s]+@"));
    static QRegularExpression const loneUser(QStringLiteral("://[^:/@\\s]+@"));
    static QRegularExpression const query(QStringLiteral("(://[^?#\\s]*[?#])\\S+"));
    text.replace(password, QStringLiteral(":%1@").arg(Hidden()));
    text.replace(loneUser, QStringLiteral("://%1@").arg(Hidden()));
    text.replace(query, QStringLiteral("\\1") + Hidden());
    QString quoted;
    QDebug(&quoted).nospace() << text;
    return quoted;
}

QString TimeText(QDateTime const& time)
{
    return time.isValid() ? time.toString(Qt::ISODateWithMs) : QStringLiteral("none");
}

QString LinkText(int fileId, QString const& path, QString const& refId, QString const& serverFileId)
{
    return QStringLiteral("FileLink(fileId=%1, path=%2, refId=%3, serverFileId=%4)")
        .arg(QString::number(fileId), Quoted(path), Quoted(refId), Quoted(serverFileId));
}

QString LinksText(QVariantMap const& links)
{
    QStringList texts;
    for (QVariant const& link : links.value(QStringLiteral("fileLinks")).toList()) {
        QVariantMap const members = link.toMap();
        texts.append(LinkText(members.value(QStringLiteral("fileId")).toInt(),
                              members.value(QStringLiteral("path")).toString(),
                              members.value(QStringLiteral("refId")).toString(),
                              members.value(QStringLiteral("serverFileId")).toString()));
    }
    return QStringLiteral("[%1], fileDate=%2")
        .arg(texts.join(QStringLiteral(", ")), TimeText(links.value(QStringLiteral("fileDate")).toDateTime()));
}

QString NumberText(int value, ValueNames const& names)
{
    QString const number = QString::number(value);
    QStringList const words = names.Of(value);
    return words.isEmpty() ? number : QStringLiteral("%1 (%2)").arg(number, words.join(QStringLiteral(", ")));
}

QString ValueText(ColumnKind kind, ValueNames const& names, QVariant const& value)
{
    switch (kind) {
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return NumberText(value.toInt(), names);
    case ColumnKind::Text:
        return Quoted(value.toString());
    case ColumnKind::Time:
        return TimeText(value.toDateTime());
    case ColumnKind::Properties:
        return QStringLiteral("{%1}").arg(QStringList(value.toMap().keys()).join(QStringLiteral(", ")));
    case ColumnKind::Links:
        return LinksText(value.toMap());
    case ColumnKind::Integer:
    case ColumnKind::LongInteger:
        break;
    }
    return value.toString();
}

template <class Record>
QString TextOf(char const* kind, Record const& record)
{
    QStringList columns;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        QString const value =
            column.isSecret() ? Hidden() : ValueText(column.kind(), column.valueNames(), column.Get(record));
        columns.append(column.name() + QLatin1Char('=') + value);
    }
    return QStringLiteral("%1(%2)").arg(QLatin1String(kind), columns.join(QStringLiteral(", ")));
}

} // namespace

template <>
QString RecordText(AuthenticationConfiguration const& record)
{
    return TextOf("AuthenticationConfiguration", record);
}

template <>
QString RecordText(FileConfiguration const& record)
{
    return TextOf("FileConfiguration", record);
}

template <>
QString RecordText(FileLink const& record)
{
    return LinkText(record.fileId, record.path, record.refId, record.serverFileId);
}

template <>
QString RecordText(FolderConfiguration const& record)
{
    return TextOf("FolderConfiguration", record);
}

template <>
QString RecordText(ProductConfiguration const& record)
{
    return TextOf("ProductConfiguration", record);
}

template <>
QString RecordText(ScheduleEntry const& record)
{
    return TextOf("ScheduleEntry", record);
}

template <>
QString RecordText(ServerConfiguration const& record)
{
    return TextOf("ServerConfiguration", record);
}

} // namespace sync::config
