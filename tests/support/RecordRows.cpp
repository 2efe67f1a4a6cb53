#include "support/RecordRows.h"

#include <QDateTime>
#include <QVariantList>
#include <QVariantMap>

namespace tandry::test {

using sync::config::ColumnKind;

namespace {

QString PropertiesDocument(QVariantMap const& properties)
{
    if (properties.isEmpty())
        return NoProperties();
    QString document = QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml>\n");
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry)
        document += QStringLiteral(" <%1><![CDATA[%2]]></%1>\n").arg(entry.key(), entry.value().toString());
    return document + QStringLiteral("</NameValueXml>\n");
}

QString LinksDocument(QVariantMap const& value)
{
    QVariantList const links = value.value(QStringLiteral("fileLinks")).toList();
    QDateTime const date = value.value(QStringLiteral("fileDate")).toDateTime();
    if (links.isEmpty() && !date.isValid())
        return QStringLiteral("");
    QString const root = QStringLiteral("<FileLinks FileDate=\"%1\"").arg(date.toString(Qt::ISODate));
    if (links.isEmpty())
        return root + QStringLiteral("/>\n");
    QString document = root + QStringLiteral(">\n");
    for (QVariant const& link : links) {
        QVariantMap const members = link.toMap();
        document += QStringLiteral(" <FileLink FileId=\"%1\" RefId=\"%2\" ServerFileId=\"%3\" Path=\"%4\"/>\n")
                        .arg(members.value(QStringLiteral("fileId")).toString(),
                             members.value(QStringLiteral("refId")).toString(),
                             members.value(QStringLiteral("serverFileId")).toString(),
                             members.value(QStringLiteral("path")).toString());
    }
    return document + QStringLiteral("</FileLinks>\n");
}

} // namespace

QVariant ToStored(ColumnKind kind, QVariant const& value)
{
    switch (kind) {
    case ColumnKind::Properties:
        return PropertiesDocument(value.toMap());
    case ColumnKind::Links:
        return LinksDocument(value.toMap());
    default:
        return value;
    }
}

} // namespace tandry::test
