#pragma once

#include "config/columns/ColumnList.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QVariant>

namespace sync::config::store {

using sync::interf::IQSqlQueryWrapper;

/// A query's row, for the columns to read.
class QueryRow
{
public:
    explicit QueryRow(IQSqlQueryWrapper& query)
        : _query(query)
    {}

    int Int(int position) const
    {
        QVariant const value = _query.value(position);
        // The same as `toInt`, but faster for the type in which stores return numbers.
        return value.userType() == QMetaType::LongLong
                   ? static_cast<int>(*static_cast<qlonglong const*>(value.constData()))
                   : value.toInt();
    }
    qint64 Long(int position) const { return _query.value(position).toLongLong(); }
    QString Text(int position) const { return _query.value(position).toString(); }
    /// Returns the stored clock reading in this time spec.
    QDateTime Time(int position, Qt::TimeSpec timeSpec) const
    {
        QDateTime time = _query.value(position).toDateTime();
        time.setTimeSpec(timeSpec);
        return time;
    }

private:
    IQSqlQueryWrapper& _query;
};

/// A query's placeholders, for the columns to bind.
class QueryPlaceholders
{
public:
    explicit QueryPlaceholders(IQSqlQueryWrapper& query)
        : _query(query)
    {}

    void Bind(QString const& placeholder, QVariant const& value) { _query.bindValue(placeholder, value); }
    void BindNull(QString const& placeholder) { _query.bindValue(placeholder, QVariant()); }

private:
    IQSqlQueryWrapper& _query;
};

/// Writes and reads the documents in a row's columns with the manager's virtual operations.
template <class Manager>
class Documents
{
public:
    explicit Documents(Manager& manager)
        : _manager(manager)
    {}

    QString Write(QMap<QString, QString> const& properties) const
    {
        return _manager.ToNameValuePropertyString(properties);
    }
    QMap<QString, QString> Read(QString const& text) const { return _manager.ToNameValuePropertyMap(text); }

private:
    Manager& _manager;
};

/// Fills a record from the query's current row, or leaves it unchanged if there is none.
template <class Record, class RowDocuments>
void Populate(IQSqlQueryWrapper& query, Record& record, RowDocuments const& documents)
{
    if (!query.isValid())
        return;
    QueryRow const row(query);
    column::ReadAll(record, row, documents);
}

/// A `bind` for the INSERT of a whole record. Refers to its arguments.
template <class Record, class RowDocuments>
auto ColumnsForInsert(Record& record, RowDocuments const& documents)
{
    return [&](IQSqlQueryWrapper& query) {
        QueryPlaceholders placeholders(query);
        column::BindAll<column::Writing::Insert>(placeholders, record, documents);
    };
}

/// A `bind` for the UPDATE of a whole record. Refers to its arguments.
template <class Record, class RowDocuments>
auto ColumnsForUpdate(Record& record, RowDocuments const& documents)
{
    return [&](IQSqlQueryWrapper& query) {
        QueryPlaceholders placeholders(query);
        column::BindAll<column::Writing::Update>(placeholders, record, documents);
    };
}

} // namespace sync::config::store
