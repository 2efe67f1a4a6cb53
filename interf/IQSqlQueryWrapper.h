#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVariant>

namespace sync::interf {

/// One statement on its way through a store: prepare, bind, exec, then walk the rows.
///
/// Managers make a query for one operation on the caller's thread and release it before the operation's scope ends.
class TANDRY_INTERFACES_EXPORT IQSqlQueryWrapper : public QObject
{
    Q_OBJECT

public:
    IQSqlQueryWrapper();
    ~IQSqlQueryWrapper() override;

    /// Column of the current row, counted from 0 in the order of the SELECT list; an invalid or null value where the
    /// store holds NULL, where there is no such column and where there is no row.
    virtual QVariant value(int column) = 0;

    /// Moves to the next row: true for the first row after `exec`, false after the last one.
    virtual bool next() = 0;

    /// True while the query stands on a row.
    virtual bool isValid() = 0;

    /// Takes a statement with named placeholders. Managers don't look at the result, so a failure must show at `exec`
    /// as well.
    virtual bool prepare(QString const& statement) = 0;

    /// Binds a placeholder such as ":id". A null or default-constructed value binds NULL, and so does leaving a
    /// placeholder out.
    virtual void bindValue(QString const& placeholder, QVariant const& value) = 0;

    /// Runs the prepared statement; false on any failure, and then nothing of the statement has happened.
    virtual bool exec() = 0;

    /// Why the last `prepare`, `exec` or `next` failed; a null text when it didn't. Never holds a bound value. The
    /// default knows nothing.
    virtual QString lastError();

    /// Gives up the rows not yet read and whatever the store holds for them; the query can be run again. The default
    /// does nothing.
    virtual void finish();

    /// Id given to the row that the last `exec` inserted.
    virtual QVariant lastInsertId() = 0;

    /// Rows changed by the last `exec`.
    virtual int numRowsAffected() = 0;
};

} // namespace sync::interf
