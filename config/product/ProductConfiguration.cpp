#include "config/ProductConfiguration.h"

#include "config/columns/ColumnList.h"
#include "config/product/ProductColumns.h"

#include <utility>

namespace sync::config {

ProductConfiguration::ProductConfiguration() = default;

ProductConfiguration::ProductConfiguration(ProductConfiguration const& other)
    : QObject()
{
    _CopyMembers(other);
}

ProductConfiguration& ProductConfiguration::operator=(ProductConfiguration const& other)
{
    _CopyMembers(other);
    return *this;
}

ProductConfiguration::~ProductConfiguration() = default;

void ProductConfiguration::_CopyMembers(ProductConfiguration const& other)
{
    column::CopyAll(*this, other);
}

int ProductConfiguration::getId() const
{
    return id;
}

QString ProductConfiguration::getName() const
{
    return name;
}

QString ProductConfiguration::getConsumerKey() const
{
    return consumerKey;
}

QString ProductConfiguration::getConsumerSecret() const
{
    return consumerSecret;
}

int ProductConfiguration::getServerId() const
{
    return id; // clients know it so
}

void ProductConfiguration::setName(QString value)
{
    name = std::move(value);
}

void ProductConfiguration::setConsumerKey(QString value)
{
    consumerKey = std::move(value);
}

void ProductConfiguration::setConsumerSecret(QString value)
{
    consumerSecret = std::move(value);
}

void ProductConfiguration::setServerId(int value)
{
    serverId = value;
}

} // namespace sync::config
