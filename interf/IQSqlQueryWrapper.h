#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVariant>

namespace sync::interf {

/// One statement and its result: prepare, bind, exec, then read the rows.
///
/// A query belongs to the thread that created it. Managers create one for each operation and release it before the
/// operation's scope ends.
class TANDRY_INTERFACES_EXPORT IQSqlQueryWrapper : public QObject
{
    Q_OBJECT

public:
    IQSqlQueryWrapper();
    ~IQSqlQueryWrapper() override;

    /// Returns a column of the current row, counted from 0 in the order of the SELECT list; an invalid or null value
    /// for NULL, if there is no such column, and if the query is not on a row.
    virtual QVariant value(int column) = 0;

    /// Moves to the next row, after `exec` to the first one. Returns false after the last row and if the store fails;
    /// `lastError` tells which.
    virtual bool next() = 0;

    /// Returns whether the query is on a row.
    virtual bool isValid() = 0;

    /// Prepares one statement with named placeholders. Returns false if the store refuses it; `exec` must then return
    /// false too, because the managers ignore this result.
    virtual bool prepare(QString const& statement) = 0;

    /// Binds a value to a placeholder such as ":id"; a null or invalid value binds NULL, and so does a placeholder that
    /// is never bound. A store takes at least `int`, `qlonglong`, `QString` and `QDateTime`. If it cannot keep a value
    /// exactly, `exec` returns false.
    virtual void bindValue(QString const& placeholder, QVariant const& value) = 0;

    /// Runs the prepared statement. Returns false on any failure; the statement has then changed nothing. Outside of
    /// scopes and client transactions the statement is a transaction of its own, and a failure may be one of its
    /// commit: see `IQSqlDatabaseWrapper::commit`.
    virtual bool exec() = 0;

    /// Returns why the last `prepare`, `exec` or `next` failed, without any bound value; null if it succeeded. The
    /// default implementation returns null.
    virtual QString lastError();

    /// Discards the rows not yet read and releases what the store holds for them; the query can be run again. The
    /// default implementation does nothing.
    virtual void finish();

    /// Returns the id of the row that the last `exec` inserted.
    virtual QVariant lastInsertId() = 0;

    /// Returns the number of rows that the last INSERT, UPDATE or DELETE matched, whether or not their values changed.
    virtual int numRowsAffected() = 0;
};

} // namespace sync::interf
