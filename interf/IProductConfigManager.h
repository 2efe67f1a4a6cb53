#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class ProductConfiguration;
}

namespace sync::interf {

/// Stores the consumer products of the servers.
///
/// Records are copies that belong to the caller. A lookup returns the default record (`id` -1) both if nothing matches
/// and if the store fails; a listing that fails returns the rows read until then, usually none. The store's factory
/// tells a miss from a failure. Operations run on the caller's thread; several threads may share a manager if the store
/// allows it. Each operation runs one statement, `Remove` two; a write is a `sync::database::TransactionalScope` of its
/// own.
class TANDRY_INTERFACES_EXPORT IProductConfigManager : public QObject
{
    Q_OBJECT

public:
    IProductConfigManager();
    ~IProductConfigManager() override;

    /// Returns the product with this id.
    virtual sync::config::ProductConfiguration GetProductConfigurationById(int id) = 0;

    /// Returns the first product of this server with exactly this key. A null key matches no row.
    virtual sync::config::ProductConfiguration GetProductConfigurationByServerIdAndConsumerKey(int serverId,
                                                                                               QString consumerKey) = 0;

    /// Returns all products, in no particular order.
    virtual QVector<sync::config::ProductConfiguration> GetAll() = 0;

    /// Writes the record's row, the consumer secret as NULL and the name-value properties as empty: only `Add` stores a
    /// secret. Returns false if the store fails, and true if there is no such row.
    virtual bool Update(sync::config::ProductConfiguration productConfiguration) = 0;

    /// Inserts a row and sets the record's id. Returns false and leaves the record unchanged if the store fails. Does
    /// not check for duplicates. If the insertion is rolled back, a later row gets the same id.
    virtual bool Add(sync::config::ProductConfiguration& productConfiguration) = 0;

    /// Removes one row; folders and files that refer to the product stay. Returns false if the store fails, and true if
    /// there is no such row.
    virtual bool Remove(int productConfigurationId) = 0;
};

} // namespace sync::interf
