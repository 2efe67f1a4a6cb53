#include "config/AuthenticationConfiguration.h"

#include "config/account/AuthenticationColumns.h"
#include "config/columns/ColumnList.h"

#include <utility>

namespace sync::config {

AuthenticationConfiguration::AuthenticationConfiguration() = default;

AuthenticationConfiguration::AuthenticationConfiguration(AuthenticationConfiguration const& other)
    : QObject()
{
    _CopyMembers(other);
}

AuthenticationConfiguration& AuthenticationConfiguration::operator=(AuthenticationConfiguration const& other)
{
    _CopyMembers(other);
    return *this;
}

AuthenticationConfiguration::~AuthenticationConfiguration() = default;

void AuthenticationConfiguration::_CopyMembers(AuthenticationConfiguration const& other)
{
    column::CopyAll(*this, other);
    if (this == &other)
        nameValueProperties.clear(); // clients know it so
}

int AuthenticationConfiguration::getId() const
{
    return id;
}

QString AuthenticationConfiguration::getDomain() const
{
    return domain;
}

QString AuthenticationConfiguration::getDomainId() const
{
    return domainId;
}

QString AuthenticationConfiguration::getUserName() const
{
    return userName;
}

QString AuthenticationConfiguration::getPassword() const
{
    return password;
}

int AuthenticationConfiguration::getServerId() const
{
    return serverId;
}

void AuthenticationConfiguration::setId(int value)
{
    id = value;
}

void AuthenticationConfiguration::setDomain(QString value)
{
    domain = std::move(value);
}

void AuthenticationConfiguration::setDomainId(QString value)
{
    domainId = std::move(value);
}

void AuthenticationConfiguration::setUserName(QString value)
{
    userName = std::move(value);
}

void AuthenticationConfiguration::setPassword(QString value)
{
    password = std::move(value);
}

void AuthenticationConfiguration::setServerId(int value)
{
    serverId = value;
}

} // namespace sync::config
