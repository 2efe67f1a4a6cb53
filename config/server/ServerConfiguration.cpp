#include "config/ServerConfiguration.h"

#include "config/columns/ColumnList.h"
#include "config/server/ServerColumns.h"

#include <QUrl>

#include <utility>

namespace sync::config {

ServerConfiguration::ServerConfiguration() = default;

ServerConfiguration::ServerConfiguration(ServerConfiguration const& other)
    : QObject()
{
    _CopyMembers(other);
}

ServerConfiguration& ServerConfiguration::operator=(ServerConfiguration const& other)
{
    _CopyMembers(other);
    return *this;
}

ServerConfiguration::~ServerConfiguration() = default;

void ServerConfiguration::_CopyMembers(ServerConfiguration const& other)
{
    column::CopyAll(*this, other);
    if (this == &other)
        nameValueProperties.clear(); // clients know it so
}

QString ServerConfiguration::_GetHost(QString url) const
{
    QString const authority = QUrl(url, QUrl::TolerantMode).authority();
    return authority.left(authority.indexOf(QLatin1Char('.'))); // the whole of it when there is no dot
}

int ServerConfiguration::getId() const
{
    return id;
}

QString ServerConfiguration::getAlias() const
{
    return alias.isEmpty() ? _GetHost(webServiceUrl) : alias;
}

QString ServerConfiguration::getDavUrl() const
{
    return davUrl;
}

QString ServerConfiguration::getWebServiceUrl() const
{
    return webServiceUrl;
}

QString ServerConfiguration::getBinaryDiffEncoder() const
{
    return binaryDiffEncoder;
}

void ServerConfiguration::setId(int value)
{
    id = value;
}

void ServerConfiguration::setAlias(QString value)
{
    alias = std::move(value);
}

void ServerConfiguration::setDavUrl(QString value)
{
    davUrl = std::move(value);
}

void ServerConfiguration::setWebServiceUrl(QString value)
{
    webServiceUrl = std::move(value);
}

void ServerConfiguration::setBinaryDiffEncoder(QString value)
{
    binaryDiffEncoder = std::move(value);
}

} // namespace sync::config
