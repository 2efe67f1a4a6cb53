#pragma once

#include "../interf/IProductConfigManager.h"
#include "DatabaseConfigurationManager.h"
#include "ProductConfiguration.h"
#include "TandryConfigurationExport.h"

#include <QString>
#include <QVector>

#include <memory>

namespace sync::interf {
class IQSqlQueryWrapper;
}

namespace sync::config {

/// The consumer products of a store. The interface documents what each operation returns on failure.
class TANDRY_CONFIGURATION_EXPORT ProductConfigManager : public sync::interf::IProductConfigManager,
                                                         public DatabaseConfigurationManager
{
    Q_OBJECT

public:
    /// Keeps a share of the factory, which must not be null, and makes no call on it.
    explicit ProductConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    ~ProductConfigManager() override;

    // Clients use the names of the parameters, so their spelling stays.
    Q_INVOKABLE sync::config::ProductConfiguration GetProductConfigurationById(int id) override;
    Q_INVOKABLE sync::config::ProductConfiguration
    GetProductConfigurationByServerIdAndConsumerKey(int serverId, QString consumerKey) override;
    Q_INVOKABLE QVector<sync::config::ProductConfiguration> GetAll() override;
    Q_INVOKABLE bool Update(sync::config::ProductConfiguration ProductConfiguration) override;
    Q_INVOKABLE bool Add(sync::config::ProductConfiguration& ProductConfiguration) override;
    Q_INVOKABLE bool Remove(int ProductConfigurationId) override;

private:
    auto _Rows();

    void _PopulateProductConfiguration(sync::interf::IQSqlQueryWrapper* query,
                                       ProductConfiguration& productConfiguration);
    void _PopulateProductConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                        QVector<ProductConfiguration>& productConfigurations);
};

} // namespace sync::config
