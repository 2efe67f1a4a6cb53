#include "config/AuthenticationConfigManager.h"

#include "config/account/AuthenticationColumns.h"
#include "config/account/AuthenticationStatements.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"

#include <utility>

namespace sync::config {

AuthenticationConfigManager::AuthenticationConfigManager(
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

AuthenticationConfigManager::~AuthenticationConfigManager() = default;

auto AuthenticationConfigManager::_Rows() const
{
    return store::Rows<&AuthenticationConfigManager::_PopulateAuthenticationConfiguration,
                       &AuthenticationConfigManager::_PopulateAuthenticationConfigurations>(*_databaseFactory, *this);
}

AuthenticationConfiguration
AuthenticationConfigManager::GetAuthenticationConfigurationById(int authenticationConfigurationId) const
{
    return _Rows().First(authentication_sql::GetById, bind::id(authenticationConfigurationId));
}

AuthenticationConfiguration
AuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName) const
{
    return _Rows().First(authentication_sql::GetByDomainAndUser, bind::domain(domain), bind::userName(userName));
}

QVector<AuthenticationConfiguration> AuthenticationConfigManager::GetAll() const
{
    return _Rows().All(authentication_sql::GetAll);
}

QVector<AuthenticationConfiguration> AuthenticationConfigManager::GetDistinctAuthenticationConfigurations()
{
    QVector<AuthenticationConfiguration> accounts;
    store::Run(*_databaseFactory, authentication_sql::GetDistinct, store::Values(), [&](auto& query) {
        store::AppendRows(query, accounts, [&](auto& account) {
            account.domain = query.value(0).toString();
            account.userName = query.value(1).toString();
        });
    });
    return accounts;
}

bool AuthenticationConfigManager::Update(AuthenticationConfiguration authenticationConfiguration)
{
    return store::Write(*_databaseFactory,
                        authentication_sql::Update,
                        store::ColumnsForUpdate(authenticationConfiguration, store::Documents(*this)));
}

int AuthenticationConfigManager::UpdatePassword(QString domain, QString userName, QString)
{
    int clearedRows = -1;
    store::Write(*_databaseFactory,
                 authentication_sql::UpdatePassword,
                 store::Values(bind::domain(domain), bind::userName(userName), bind::encryptedPassword()),
                 [&](auto& query) { clearedRows = query.numRowsAffected(); });
    return clearedRows;
}

bool AuthenticationConfigManager::Add(AuthenticationConfiguration& authenticationConfiguration)
{
    return store::Insert(*_databaseFactory,
                         authentication_sql::Add,
                         store::ColumnsForInsert(authenticationConfiguration, store::Documents(*this)),
                         authenticationConfiguration.id);
}

bool AuthenticationConfigManager::Remove(int authenticationConfigurationId)
{
    return store::Write(
        *_databaseFactory, authentication_sql::Remove, store::Values(bind::id(authenticationConfigurationId)));
}

void AuthenticationConfigManager::_PopulateAuthenticationConfiguration(
    sync::interf::IQSqlQueryWrapper* query, AuthenticationConfiguration& authenticationConfiguration) const
{
    store::Populate(*query, authenticationConfiguration, store::Documents(*this));
}

void AuthenticationConfigManager::_PopulateAuthenticationConfigurations(
    sync::interf::IQSqlQueryWrapper* query, QVector<AuthenticationConfiguration>& authenticationConfigurations) const
{
    store::AppendRows(*query, authenticationConfigurations, [&](auto& account) {
        _PopulateAuthenticationConfiguration(query, account);
    });
}

} // namespace sync::config
