#include "config/ProductConfigManager.h"

#include "config/product/ProductColumns.h"
#include "config/product/ProductStatements.h"
#include "config/store/QueryColumns.h"
#include "config/store/Rows.h"
#include "config/store/StoreOperations.h"

#include <utility>

namespace sync::config {

ProductConfigManager::ProductConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ProductConfigManager::~ProductConfigManager() = default;

auto ProductConfigManager::_Rows()
{
    return store::Rows<&ProductConfigManager::_PopulateProductConfiguration,
                       &ProductConfigManager::_PopulateProductConfigurations>(*_databaseFactory, *this);
}

ProductConfiguration ProductConfigManager::GetProductConfigurationById(int id)
{
    return _Rows().First(product_sql::GetById, bind::id(id));
}

ProductConfiguration ProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey(int serverId,
                                                                                           QString consumerKey)
{
    return _Rows().First(
        product_sql::GetByServerIdAndConsumerKey, bind::serverId(serverId), bind::consumerKey(consumerKey));
}

QVector<ProductConfiguration> ProductConfigManager::GetAll()
{
    return _Rows().All(product_sql::GetAll);
}

bool ProductConfigManager::Update(ProductConfiguration productConfiguration)
{
    return store::Write(
        *_databaseFactory, product_sql::Update, store::ColumnsForUpdate(productConfiguration, store::Documents(*this)));
}

bool ProductConfigManager::Add(ProductConfiguration& productConfiguration)
{
    return store::Insert(*_databaseFactory,
                         product_sql::Add,
                         store::ColumnsForInsert(productConfiguration, store::Documents(*this)),
                         productConfiguration.id);
}

bool ProductConfigManager::Remove(int productConfigurationId)
{
    static_cast<void>(GetProductConfigurationById(productConfigurationId)); // for overrides, which see what goes
    return store::Write(*_databaseFactory, product_sql::Remove, store::Values(bind::id(productConfigurationId)));
}

void ProductConfigManager::_PopulateProductConfiguration(sync::interf::IQSqlQueryWrapper* query,
                                                         ProductConfiguration& productConfiguration)
{
    store::Populate(*query, productConfiguration, store::Documents(*this));
}

void ProductConfigManager::_PopulateProductConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                          QVector<ProductConfiguration>& productConfigurations)
{
    store::AppendRows(
        *query, productConfigurations, [&](auto& record) { _PopulateProductConfiguration(query, record); });
}

} // namespace sync::config
