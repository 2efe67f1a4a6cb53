#pragma once

#include "../interf/IAuthenticationConfigManager.h"
#include "AuthenticationConfiguration.h"
#include "DatabaseConfigurationManager.h"
#include "TandryConfigurationExport.h"

#include <QString>
#include <QVector>

#include <memory>

namespace sync::interf {
class IQSqlQueryWrapper;
}

namespace sync::config {

/// The accounts of a store. The interface documents what each operation returns on failure.
class TANDRY_CONFIGURATION_EXPORT AuthenticationConfigManager : public sync::interf::IAuthenticationConfigManager,
                                                                public DatabaseConfigurationManager
{
    Q_OBJECT

public:
    /// Keeps a share of the factory, which must not be null, and makes no call on it.
    explicit AuthenticationConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    ~AuthenticationConfigManager() override;

    // Clients call these by name and by index, so their order here stays.
    Q_INVOKABLE sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationById(int authenticationConfigurationId) const override;
    Q_INVOKABLE sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName) const override;
    Q_INVOKABLE QVector<sync::config::AuthenticationConfiguration> GetAll() const override;

    bool Update(AuthenticationConfiguration authenticationConfiguration) override;
    bool Add(AuthenticationConfiguration& authenticationConfiguration) override;
    bool Remove(int authenticationConfigurationId) override;
    QVector<AuthenticationConfiguration> GetDistinctAuthenticationConfigurations() override;
    int UpdatePassword(QString domain, QString userName, QString newPassword) override;

private:
    auto _Rows() const;

    void _PopulateAuthenticationConfiguration(sync::interf::IQSqlQueryWrapper* query,
                                              AuthenticationConfiguration& authenticationConfiguration) const;
    void
    _PopulateAuthenticationConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                          QVector<AuthenticationConfiguration>& authenticationConfigurations) const;
};

} // namespace sync::config
