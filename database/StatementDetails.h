#pragma once

#include "database/sqlite/SqliteValue.h"

#include <QObject>
#include <QStringList>

namespace sync::database {

/// What a query of `SqliteDatabaseFactory` can tell beyond `IQSqlQueryWrapper`. Not for clients: the header is not
/// installed.
///
/// `qobject_cast<StatementDetails*>(query.get())` returns it, and null for a query of another store.
class StatementDetails
{
public:
    virtual ~StatementDetails() = default;

    /// Returns whether the prepared statement only reads; false if none is prepared.
    virtual bool isReading() const = 0;
    /// Returns the names of the columns of the prepared statement, as SQLite gives them: two may be the same.
    virtual QStringList columnNames() const = 0;
    /// Returns a column of the current row, counted from 0; NULL if there is no such column or row. The bytes of texts
    /// and BLOBs are SQLite's own, and valid until the next operation of the query.
    virtual SqliteValue storedValue(int column) const = 0;
};

} // namespace sync::database

Q_DECLARE_INTERFACE(sync::database::StatementDetails, "tandry.StatementDetails")
