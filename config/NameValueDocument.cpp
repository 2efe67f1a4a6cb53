#include "config/NameValueDocument.h"

#include "config/StoredDocument.h"
#include "config/WrittenDocument.h"

#include <QDomDocument>

namespace sync::config {

namespace {

const QString NameValueXml = QStringLiteral("NameValueXml");
/// The document in most rows.
const QString EmptyDocument = QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml/>\n");

} // namespace

QString WriteNameValues(QMap<QString, QString> const& properties)
{
    if (properties.isEmpty())
        return EmptyDocument;

    QDomDocument document(NameValueXml);
    QDomElement root = document.createElement(NameValueXml);
    document.appendChild(root);

    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry) {
        QDomElement element = document.createElement(entry.key());
        root.appendChild(element);
        element.appendChild(document.createCDATASection(entry.value()));
    }
    return document.toString(1);
}

QMap<QString, QString> ReadNameValues(QString const& text)
{
    if (text.isEmpty())
        return {};
    if (auto const written = ReadWrittenNameValues(text))
        return *written;

    QMap<QString, QString> properties;
    QDomDocument document(NameValueXml);
    LoadStoredDocument(text, document);
    for (QDomNode node = document.documentElement().firstChild(); !node.isNull(); node = node.nextSibling())
        properties[node.nodeName()] = node.firstChild().nodeValue();
    return properties;
}

std::optional<QMap<QString, QString>> ReadWrittenNameValues(QString const& text)
{
    QMap<QString, QString> properties;
    if (text == EmptyDocument)
        return properties;

    WrittenDocument document(text);
    if (!document.Take(QLatin1String("<!DOCTYPE NameValueXml>\n<NameValueXml>\n")))
        return std::nullopt;
    while (document.Take(QLatin1String(" <"))) {
        QStringView name;
        QString value;
        if (!document.TakeName(name) || !document.Take(QLatin1String("><![CDATA[")) || !document.TakeSection(value) ||
            !document.Take(QLatin1String("</")) || !document.Take(name) || !document.Take(QLatin1String(">\n")))
            return std::nullopt;
        if (!properties.isEmpty() && properties.lastKey() >= name)
            return std::nullopt; // the writer's keys ascend
        properties.insert(properties.cend(), name.toString(), value);
    }
    if (properties.isEmpty() || !document.Take(QLatin1String("</NameValueXml>\n")) || !document.isAtEnd())
        return std::nullopt;
    return properties;
}

} // namespace sync::config
