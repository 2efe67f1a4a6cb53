#include "config/DatabaseConfigurationManager.h"

#include "config/StoredDocument.h"
#include "interf/IDatabaseFactory.h"

#include <QDomDocument>

#include <utility>

namespace sync::config {

namespace {

const QString NameValueXml = QStringLiteral("NameValueXml");
/// What most rows hold: no document is made for it, neither to write nor to read it.
const QString EmptyDocument = QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml/>\n");

} // namespace

DatabaseConfigurationManager::DatabaseConfigurationManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : _databaseFactory(std::move(databaseFactory))
{}

DatabaseConfigurationManager::DatabaseConfigurationManager(DatabaseConfigurationManager const& other) = default;

DatabaseConfigurationManager&
DatabaseConfigurationManager::operator=(DatabaseConfigurationManager const& other) = default;

DatabaseConfigurationManager::~DatabaseConfigurationManager() = default;

QMap<QString, QString> DatabaseConfigurationManager::ToNameValuePropertyMap(QString text) const
{
    QMap<QString, QString> properties;
    if (text.isEmpty() || text == EmptyDocument)
        return properties;

    QDomDocument document(NameValueXml);
    LoadStoredDocument(text, document);

    for (QDomNode node = document.documentElement().firstChild(); !node.isNull(); node = node.nextSibling())
        properties[node.nodeName()] = node.childNodes().at(0).nodeValue();
    return properties;
}

QString DatabaseConfigurationManager::ToNameValuePropertyString(QMap<QString, QString> properties)
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

} // namespace sync::config
