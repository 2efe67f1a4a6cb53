#include "config/DatabaseConfigurationManager.h"

#include "config/MetaTypes.h"
#include "config/NameValueDocument.h"
#include "interf/IDatabaseFactory.h"

#include <utility>

namespace sync::config {

DatabaseConfigurationManager::DatabaseConfigurationManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : _databaseFactory(std::move(databaseFactory))
{
    RegisterMetaTypes();
}

DatabaseConfigurationManager::DatabaseConfigurationManager(DatabaseConfigurationManager const& other) = default;

DatabaseConfigurationManager&
DatabaseConfigurationManager::operator=(DatabaseConfigurationManager const& other) = default;

DatabaseConfigurationManager::~DatabaseConfigurationManager() = default;

QMap<QString, QString> DatabaseConfigurationManager::ToNameValuePropertyMap(QString text) const
{
    return ReadNameValues(text);
}

QString DatabaseConfigurationManager::ToNameValuePropertyString(QMap<QString, QString> properties)
{
    return WriteNameValues(properties);
}

} // namespace sync::config
