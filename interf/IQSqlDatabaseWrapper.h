#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>

namespace sync::interf {

/// The client transaction: groups operations of the calling thread into one unit that is committed or rolled back.
///
/// The transaction belongs to the thread's connection and not to this object: any object of the same factory and thread
/// may end it. Scopes that operations open inside it join it and commit nothing.
class TANDRY_INTERFACES_EXPORT IQSqlDatabaseWrapper : public QObject
{
    Q_OBJECT

public:
    IQSqlDatabaseWrapper();
    ~IQSqlDatabaseWrapper() override;

    /// Returns whether the store can be reached. The default implementation returns true.
    virtual bool isOpen();

    /// Returns why the last operation of this object returned false; null if it returned true. The default
    /// implementation returns null.
    virtual QString lastError();

    /// Begins a client transaction. Returns false if the thread has one or a scope open, or if the store refuses.
    virtual bool transaction() = 0;

    /// Commits the client transaction: its writes are durable when this returns true. Returns false if the thread has
    /// none, or if the store fails. A failed transaction is over, and its writes are rolled back as by `rollback`. If
    /// the store cannot find out whether they are, because the disk goes on failing, `lastError` says so: the client
    /// must then read what is in the store, once a later write has succeeded, before it writes anything again.
    virtual bool commit() = 0;

    /// Rolls back the client transaction. Returns false if the thread has none.
    ///
    /// This restores rows, and the cached listings of folder managers are read anew. Files that operations deleted stay
    /// deleted. The store gives the ids of rolled-back rows to later rows, so the client must discard the records that
    /// it added in the transaction.
    virtual bool rollback() = 0;
};

} // namespace sync::interf
