#include "config/AuthenticationConfigManager.h"

#include "config/AuthenticationStatements.h"
#include "config/StoreOperations.h"

#include <utility>

namespace sync::config {

namespace sql = authentication_sql;

AuthenticationConfigManager::AuthenticationConfigManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

AuthenticationConfigManager::~AuthenticationConfigManager() = default;

template <class Bind>
AuthenticationConfiguration AuthenticationConfigManager::_FindOne(QString const& statement, Bind const& bind) const
{
    return store::FindOne<AuthenticationConfiguration>(
        *_databaseFactory, statement, bind, [this](auto* query, auto& account) {
            _PopulateAuthenticationConfiguration(query, account);
        });
}

AuthenticationConfiguration
AuthenticationConfigManager::GetAuthenticationConfigurationById(int authenticationConfigurationId) const
{
    return _FindOne(sql::GetById, store::Values(bind::id(authenticationConfigurationId)));
}

AuthenticationConfiguration
AuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName) const
{
    return _FindOne(sql::GetByDomainAndUser, store::Values(bind::domain(domain), bind::userName(userName)));
}

QVector<AuthenticationConfiguration> AuthenticationConfigManager::GetAll() const
{
    return store::FindAll<QVector<AuthenticationConfiguration>>(
        *_databaseFactory, sql::GetAll, store::Values(), [this](auto* query, auto& accounts) {
            _PopulateAuthenticationConfigurations(query, accounts);
        });
}

QVector<AuthenticationConfiguration> AuthenticationConfigManager::GetDistinctAuthenticationConfigurations()
{
    auto const populate = [](auto* row, AuthenticationConfiguration& account) {
        account.domain = row->value(0).toString();
        account.userName = row->value(1).toString();
    };
    return store::FindAll<QVector<AuthenticationConfiguration>>(
        *_databaseFactory, sql::GetDistinct, store::Values(), [&](auto* query, auto& accounts) {
            store::AppendRows(query, accounts, populate);
        });
}

bool AuthenticationConfigManager::Update(AuthenticationConfiguration authenticationConfiguration)
{
    return store::Write(*_databaseFactory,
                        sql::Update,
                        store::Values(bind::id(authenticationConfiguration.id),
                                      bind::domain(authenticationConfiguration.domain),
                                      bind::domainId(authenticationConfiguration.domainId),
                                      bind::userName(authenticationConfiguration.userName),
                                      bind::encryptedPassword(),
                                      bind::nameValueProperties(
                                          ToNameValuePropertyString(authenticationConfiguration.nameValueProperties)),
                                      bind::serverId(authenticationConfiguration.serverId)));
}

int AuthenticationConfigManager::UpdatePassword(QString domain, QString userName, QString)
{
    int clearedRows = -1;
    store::Write(*_databaseFactory,
                 sql::UpdatePassword,
                 store::Values(bind::domain(domain), bind::userName(userName), bind::encryptedPassword()),
                 [&](auto& query) { clearedRows = query.numRowsAffected(); });
    return clearedRows;
}

bool AuthenticationConfigManager::Add(AuthenticationConfiguration& authenticationConfiguration)
{
    return store::Insert(*_databaseFactory,
                         sql::Add,
                         store::Values(bind::domain(authenticationConfiguration.domain),
                                       bind::domainId(authenticationConfiguration.domainId),
                                       bind::userName(authenticationConfiguration.userName),
                                       bind::encryptedPassword(),
                                       bind::nameValueProperties(
                                           ToNameValuePropertyString(authenticationConfiguration.nameValueProperties)),
                                       bind::serverId(authenticationConfiguration.serverId)),
                         authenticationConfiguration.id);
}

bool AuthenticationConfigManager::Remove(int authenticationConfigurationId)
{
    return store::Write(*_databaseFactory, sql::Remove, store::Values(bind::id(authenticationConfigurationId)));
}

void AuthenticationConfigManager::_PopulateAuthenticationConfiguration(
    sync::interf::IQSqlQueryWrapper* query, AuthenticationConfiguration& authenticationConfiguration) const
{
    if (!query->isValid())
        return;
    authenticationConfiguration.id = store::Int(query->value(0));
    authenticationConfiguration.domain = query->value(1).toString();
    authenticationConfiguration.domainId = query->value(2).toString();
    authenticationConfiguration.userName = query->value(3).toString();
    authenticationConfiguration.password.clear(); // column 4 isn't read: no password leaves the store
    authenticationConfiguration.nameValueProperties = ToNameValuePropertyMap(query->value(5).toString());
    authenticationConfiguration.serverId = store::Int(query->value(6));
}

void AuthenticationConfigManager::_PopulateAuthenticationConfigurations(
    sync::interf::IQSqlQueryWrapper* query, QVector<AuthenticationConfiguration>& authenticationConfigurations) const
{
    store::AppendRows(query, authenticationConfigurations, [this](auto* row, auto& account) {
        _PopulateAuthenticationConfiguration(row, account);
    });
}

} // namespace sync::config
