#include "config/ServerConfigManager.h"

#include "config/DefaultServerSetting.h"
#include "config/server/ServerColumns.h"
#include "config/server/ServerStatements.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"

#include <QSettings>

#include <utility>

namespace sync::config {

ServerConfigManager::ServerConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ServerConfigManager::~ServerConfigManager() = default;

auto ServerConfigManager::_Rows()
{
    return store::Rows<&ServerConfigManager::_PopulateServerConfig,
                       &ServerConfigManager::_PopulateServerConfigurations>(*_databaseFactory, *this);
}

ServerConfiguration ServerConfigManager::GetServerConfigById(long long id)
{
    return _Rows().First(server_sql::GetById, bind::id(id));
}

ServerConfiguration ServerConfigManager::GetServerConfigByServers(QString davUrl, QString webServiceUrl)
{
    return _Rows().First(
        server_sql::GetByServers, bind::davUrl(_ChopUrl(davUrl)), bind::webServiceUrl(_ChopUrl(webServiceUrl)));
}

std::vector<ServerConfiguration> ServerConfigManager::GetAll()
{
    return _Rows().All(server_sql::GetAll);
}

bool ServerConfigManager::Update(ServerConfiguration serverConfiguration)
{
    // The fields as they are: only Add derives an alias and cuts slashes.
    return store::Write(
        *_databaseFactory, server_sql::Update, store::ColumnsForUpdate(serverConfiguration, store::Documents(*this)));
}

bool ServerConfigManager::Add(ServerConfiguration& serverConfiguration)
{
    ServerConfiguration row(serverConfiguration);
    row.alias = serverConfiguration.getAlias();
    row.davUrl = _ChopUrl(serverConfiguration.davUrl);
    row.webServiceUrl = _ChopUrl(serverConfiguration.webServiceUrl);
    return store::Insert(*_databaseFactory,
                         server_sql::Add,
                         store::ColumnsForInsert(row, store::Documents(*this)),
                         serverConfiguration.id);
}

bool ServerConfigManager::Remove(int serverConfigurationId)
{
    return store::Write(*_databaseFactory, server_sql::Remove, store::Values(bind::id(serverConfigurationId)));
}

ServerConfiguration ServerConfigManager::GetServerConfigByAuthenticationId(long long authenticationId)
{
    return _Rows().First(server_sql::GetByAuthenticationId, bind::id(authenticationId));
}

ServerConfiguration ServerConfigManager::GetServerConfigByFolderId(long long folderId)
{
    return _Rows().First(server_sql::GetByFolderId, bind::id(folderId));
}

ServerConfiguration ServerConfigManager::GetServerConfigByFileId(long long fileId)
{
    return _Rows().First(server_sql::GetByFileId, bind::id(fileId));
}

ServerConfiguration ServerConfigManager::GetDefaultServerConfig()
{
    QSettings const settings(
        QSettings::UserScope, DefaultServerSetting::Organization, DefaultServerSetting::Application);
    return GetServerConfigById(settings.value(DefaultServerSetting::Key, 1).toLongLong());
}

void ServerConfigManager::_PopulateServerConfig(sync::interf::IQSqlQueryWrapper* query,
                                                ServerConfiguration& serverConfiguration)
{
    store::Populate(*query, serverConfiguration, store::Documents(*this));
}

void ServerConfigManager::_PopulateServerConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                        std::vector<ServerConfiguration>& serverConfigurations)
{
    store::AppendRows(*query, serverConfigurations, [&](auto& record) { _PopulateServerConfig(query, record); });
}

QString ServerConfigManager::_ChopUrl(QString url)
{
    if (url.endsWith(QLatin1Char('/')))
        url.chop(1);
    return url;
}

} // namespace sync::config
