#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class ProductConfiguration;
}

namespace sync::interf {

/// Keeps the consumer products of the servers.
///
/// A lookup answers with a default record (`id` -1) when nothing matches or the store fails.
class TANDRY_INTERFACES_EXPORT IProductConfigManager : public QObject
{
    Q_OBJECT

public:
    IProductConfigManager();
    ~IProductConfigManager() override;

    virtual sync::config::ProductConfiguration GetProductConfigurationById(int id) = 0;

    /// The first product of this server with this key.
    virtual sync::config::ProductConfiguration GetProductConfigurationByServerIdAndConsumerKey(int serverId,
                                                                                               QString consumerKey) = 0;

    /// All products in the store's order; empty when the store fails.
    virtual QVector<sync::config::ProductConfiguration> GetAll() = 0;

    /// Writes the record's row and clears its consumer secret and name-value properties. False when the store fails; a
    /// missing row is no failure.
    virtual bool Update(sync::config::ProductConfiguration productConfiguration) = 0;

    /// Inserts a row and writes its id into the record. False, and the record untouched, when the store fails.
    virtual bool Add(sync::config::ProductConfiguration& productConfiguration) = 0;

    /// Removes one row; folders and files that name the product stay. False when the store fails; a missing row is no
    /// failure.
    virtual bool Remove(int productConfigurationId) = 0;
};

} // namespace sync::interf
