#include "config/ServerConfigManager.h"

#include "config/ServerStatements.h"
#include "config/StoreOperations.h"

#include <QSettings>

#include <utility>

namespace sync::config {

namespace sql = server_sql;

ServerConfigManager::ServerConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ServerConfigManager::~ServerConfigManager() = default;

template <class Bind>
ServerConfiguration ServerConfigManager::_FindOne(QString const& statement, Bind const& bind)
{
    return store::FindOne<ServerConfiguration>(*_databaseFactory, statement, bind, [this](auto* query, auto& server) {
        _PopulateServerConfig(query, server);
    });
}

ServerConfiguration ServerConfigManager::GetServerConfigById(long long id)
{
    return _FindOne(sql::GetById, store::Values(bind::id(id)));
}

ServerConfiguration ServerConfigManager::GetServerConfigByServers(QString davUrl, QString webServiceUrl)
{
    return _FindOne(sql::GetByServers,
                    store::Values(bind::davUrl(_ChopUrl(davUrl)), bind::webServiceUrl(_ChopUrl(webServiceUrl))));
}

std::vector<ServerConfiguration> ServerConfigManager::GetAll()
{
    return store::FindAll<std::vector<ServerConfiguration>>(
        *_databaseFactory, sql::GetAll, store::Values(), [this](auto* query, auto& servers) {
            _PopulateServerConfigurations(query, servers);
        });
}

bool ServerConfigManager::Update(ServerConfiguration serverConfiguration)
{
    // The fields as they are: only Add derives an alias and cuts slashes.
    return store::Write(
        *_databaseFactory,
        sql::Update,
        store::Values(bind::id(serverConfiguration.id),
                      bind::alias(serverConfiguration.alias),
                      bind::davUrl(serverConfiguration.davUrl),
                      bind::webServiceUrl(serverConfiguration.webServiceUrl),
                      bind::nameValueProperties(ToNameValuePropertyString(serverConfiguration.nameValueProperties)),
                      bind::binaryDiffEncoder(serverConfiguration.binaryDiffEncoder)));
}

bool ServerConfigManager::Add(ServerConfiguration& serverConfiguration)
{
    return store::Insert(
        *_databaseFactory,
        sql::Add,
        store::Values(bind::alias(serverConfiguration.getAlias()),
                      bind::davUrl(_ChopUrl(serverConfiguration.davUrl)),
                      bind::webServiceUrl(_ChopUrl(serverConfiguration.webServiceUrl)),
                      bind::nameValueProperties(ToNameValuePropertyString(serverConfiguration.nameValueProperties)),
                      bind::binaryDiffEncoder(serverConfiguration.binaryDiffEncoder)),
        serverConfiguration.id);
}

bool ServerConfigManager::Remove(int serverConfigurationId)
{
    return store::Write(*_databaseFactory, sql::Remove, store::Values(bind::id(serverConfigurationId)));
}

ServerConfiguration ServerConfigManager::GetServerConfigByAuthenticationId(long long authenticationId)
{
    return _FindOne(sql::GetByAuthenticationId, store::Values(bind::id(authenticationId)));
}

ServerConfiguration ServerConfigManager::GetServerConfigByFolderId(long long folderId)
{
    return _FindOne(sql::GetByFolderId, store::Values(bind::id(folderId)));
}

ServerConfiguration ServerConfigManager::GetServerConfigByFileId(long long fileId)
{
    return _FindOne(sql::GetByFileId, store::Values(bind::id(fileId)));
}

ServerConfiguration ServerConfigManager::GetDefaultServerConfig()
{
    QSettings settings(QSettings::UserScope, QStringLiteral("Norvalis"), QStringLiteral("Norvalis Sync"));
    settings.beginGroup(QStringLiteral("Tandry"));
    return GetServerConfigById(settings.value(QStringLiteral("DefaultServerConfigurationId"), 1).toLongLong());
}

void ServerConfigManager::_PopulateServerConfig(sync::interf::IQSqlQueryWrapper* query,
                                                ServerConfiguration& serverConfiguration)
{
    if (!query->isValid())
        return;
    serverConfiguration.id = store::Int(query->value(0));
    serverConfiguration.alias = query->value(1).toString();
    serverConfiguration.davUrl = query->value(2).toString();
    serverConfiguration.webServiceUrl = query->value(3).toString();
    serverConfiguration.nameValueProperties = ToNameValuePropertyMap(query->value(4).toString());
    serverConfiguration.binaryDiffEncoder = query->value(5).toString();
}

void ServerConfigManager::_PopulateServerConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                        std::vector<ServerConfiguration>& serverConfigurations)
{
    store::AppendRows(
        query, serverConfigurations, [this](auto* row, auto& server) { _PopulateServerConfig(row, server); });
}

QString ServerConfigManager::_ChopUrl(QString url)
{
    if (url.endsWith(QLatin1Char('/')))
        url.chop(1);
    return url;
}

} // namespace sync::config
