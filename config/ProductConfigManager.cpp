#include "config/ProductConfigManager.h"

#include "config/ProductStatements.h"
#include "config/StoreOperations.h"

#include <utility>

namespace sync::config {

namespace sql = product_sql;

ProductConfigManager::ProductConfigManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory)
    : DatabaseConfigurationManager(std::move(databaseFactory))
{}

ProductConfigManager::~ProductConfigManager() = default;

template <class Bind>
ProductConfiguration ProductConfigManager::_FindOne(QString const& statement, Bind const& bind)
{
    return store::FindOne<ProductConfiguration>(*_databaseFactory, statement, bind, [this](auto* query, auto& product) {
        _PopulateProductConfiguration(query, product);
    });
}

ProductConfiguration ProductConfigManager::GetProductConfigurationById(int id)
{
    return _FindOne(sql::GetById, store::Values(bind::id(id)));
}

ProductConfiguration ProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey(int serverId,
                                                                                           QString consumerKey)
{
    return _FindOne(sql::GetByServerIdAndConsumerKey,
                    store::Values(bind::serverId(serverId), bind::consumerKey(consumerKey)));
}

QVector<ProductConfiguration> ProductConfigManager::GetAll()
{
    return store::FindAll<QVector<ProductConfiguration>>(
        *_databaseFactory, sql::GetAll, store::Values(), [this](auto* query, auto& products) {
            _PopulateProductConfigurations(query, products);
        });
}

bool ProductConfigManager::Update(ProductConfiguration productConfiguration)
{
    // The consumer secret stays unbound, which makes it NULL: a secret is written once, by Add.
    return store::Write(
        *_databaseFactory,
        sql::Update,
        store::Values(bind::id(productConfiguration.id),
                      bind::name(productConfiguration.name),
                      bind::consumerKey(productConfiguration.consumerKey),
                      bind::serverId(productConfiguration.serverId),
                      bind::nameValueProperties(ToNameValuePropertyString(productConfiguration.nameValueProperties))));
}

bool ProductConfigManager::Add(ProductConfiguration& productConfiguration)
{
    return store::Insert(
        *_databaseFactory,
        sql::Add,
        store::Values(bind::name(productConfiguration.name),
                      bind::consumerKey(productConfiguration.consumerKey),
                      bind::consumerSecret(productConfiguration.consumerSecret),
                      bind::serverId(productConfiguration.serverId),
                      bind::nameValueProperties(ToNameValuePropertyString(productConfiguration.nameValueProperties))),
        productConfiguration.id);
}

bool ProductConfigManager::Remove(int productConfigurationId)
{
    static_cast<void>(GetProductConfigurationById(productConfigurationId)); // for overrides, which see what goes
    return store::Write(*_databaseFactory, sql::Remove, store::Values(bind::id(productConfigurationId)));
}

void ProductConfigManager::_PopulateProductConfiguration(sync::interf::IQSqlQueryWrapper* query,
                                                         ProductConfiguration& productConfiguration)
{
    if (!query->isValid())
        return;
    productConfiguration.id = store::Int(query->value(0));
    productConfiguration.name = query->value(1).toString();
    productConfiguration.consumerKey = query->value(2).toString();
    productConfiguration.consumerSecret = query->value(3).toString();
    productConfiguration.serverId = store::Int(query->value(4));
    productConfiguration.nameValueProperties = ToNameValuePropertyMap(query->value(5).toString());
}

void ProductConfigManager::_PopulateProductConfigurations(sync::interf::IQSqlQueryWrapper* query,
                                                          QVector<ProductConfiguration>& productConfigurations)
{
    store::AppendRows(query, productConfigurations, [this](auto* row, auto& product) {
        _PopulateProductConfiguration(row, product);
    });
}

} // namespace sync::config
