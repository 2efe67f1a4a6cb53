#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>

namespace sync::interf {

/// The calling thread's connection to a store, for a bracket of the client's own around several operations.
///
/// Scopes that operations open inside a bracket join it and end nothing.
class TANDRY_INTERFACES_EXPORT IQSqlDatabaseWrapper : public QObject
{
    Q_OBJECT

public:
    IQSqlDatabaseWrapper();
    ~IQSqlDatabaseWrapper() override;

    /// Whether the store can be reached. The default says yes.
    virtual bool isOpen();

    /// Why the last operation of this object returned false; a null text when it didn't. The default knows nothing.
    virtual QString lastError();

    /// Opens a bracket. False when one is open already, inside an open scope, or when the store refuses.
    virtual bool transaction() = 0;

    /// Makes durable what the bracket wrote and ends it. False without a bracket, or when the store could not: what
    /// the bracket wrote is then gone.
    virtual bool commit() = 0;

    /// Takes back what the bracket wrote and ends it. False without a bracket.
    virtual bool rollback() = 0;
};

} // namespace sync::interf
