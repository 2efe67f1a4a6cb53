#pragma once

#include "../interf/IServerConfigManager.h"
#include "DatabaseConfigurationManager.h"
#include "ServerConfiguration.h"
#include "TandryConfigurationExport.h"

#include <QString>

#include <memory>
#include <vector>

namespace sync::interf {
class IQSqlQueryWrapper;
}

namespace sync::config {

/// The servers of a store. The interface documents what each operation returns on failure.
class TANDRY_CONFIGURATION_EXPORT ServerConfigManager : public sync::interf::IServerConfigManager,
                                                        public DatabaseConfigurationManager
{
    Q_OBJECT

public:
    /// Keeps a share of the factory, which must not be null, and makes no call on it.
    explicit ServerConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    ~ServerConfigManager() override;

    ServerConfiguration GetServerConfigById(long long id) override;
    ServerConfiguration GetServerConfigByServers(QString davUrl, QString webServiceUrl) override;
    std::vector<ServerConfiguration> GetAll() override;
    bool Update(ServerConfiguration serverConfiguration) override;
    bool Add(ServerConfiguration& serverConfiguration) override;
    bool Remove(int serverConfigurationId) override;
    ServerConfiguration GetServerConfigByAuthenticationId(long long authenticationId) override;
    ServerConfiguration GetServerConfigByFolderId(long long folderId) override;
    ServerConfiguration GetServerConfigByFileId(long long fileId) override;

    /// Reads the user's setting that `DefaultServerSetting` names on each call, and never writes it. Returns the
    /// default record if no server has that id.
    ServerConfiguration GetDefaultServerConfig() override;

private:
    auto _Rows();

    void _PopulateServerConfig(sync::interf::IQSqlQueryWrapper* query, ServerConfiguration& serverConfiguration);
    void _PopulateServerConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                       std::vector<ServerConfiguration>& serverConfigurations);
    QString _ChopUrl(QString url);
};

} // namespace sync::config
