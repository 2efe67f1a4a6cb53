#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>

#include <memory>

namespace sync::interf {

class IQSqlDatabaseWrapper;
class IQSqlQueryWrapper;

namespace factory {

/// Creates the objects through which the managers access one store.
///
/// The client passes one factory to every manager, and each manager keeps a share of it. The implementation documents
/// whether several threads may call it.
///
/// Managers return no reasons, so the store keeps them: a lookup returns the same record if nothing matches and if the
/// store fails, and a listing that breaks off returns the rows read until then. A write returns true once its statement
/// has succeeded; a commit that fails afterwards, at the end of the scope, is for the store to report. A factory that
/// derives from `sync::database::StoreFactory` keeps each thread's first error (`LastError`) and emits `CommitFailed`.
class TANDRY_INTERFACES_EXPORT IDatabaseFactory : public QObject
{
    Q_OBJECT

public:
    IDatabaseFactory();
    ~IDatabaseFactory() override;

    /// Returns an object for the client transaction of the calling thread. Never null.
    virtual std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() = 0;

    /// Returns a new query on each call. Never null: if the store cannot be reached, the query's `exec` returns false.
    virtual std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() = 0;
};

} // namespace factory
} // namespace sync::interf
