#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>

#include <memory>

namespace sync::interf {

class IQSqlDatabaseWrapper;
class IQSqlQueryWrapper;

namespace factory {

/// Hands out the objects through which the managers reach one store.
///
/// A client passes a shared factory to every manager; it must outlive none of them, since each keeps a share. Whether
/// operations may be called from several threads is the store's to say.
class TANDRY_INTERFACES_EXPORT IDatabaseFactory : public QObject
{
    Q_OBJECT

public:
    IDatabaseFactory();
    ~IDatabaseFactory() override;

    /// The object for a client's own transaction bracket. Never null.
    virtual std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() = 0;

    /// A new query object on each call. Never null: a store that can't be reached shows at the query's `exec`.
    virtual std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() = 0;
};

} // namespace factory
} // namespace sync::interf
