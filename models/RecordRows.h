#pragma once

#include "config/DatabaseConfigurationManager.h"
#include "config/RecordColumns.h"
#include "interf/IDatabaseFactory.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace sync::interf {
class IQSqlQueryWrapper;
}

namespace sync::models {

/// A row of a table as a model shows it: its id, and the values of the shown columns.
struct RecordRow
{
    int id = 0;
    QVector<QVariant> values;
};

/// Reads rows of a table for a model, and gives their columns roles. Never reads a secret or a document of links. Any
/// thread may read; it uses its own connection to the store.
class RecordRows
{
public:
    /// The values of a statement's placeholders.
    using Bindings = QMap<QString, QVariant>;

    /// A column that a model shows.
    struct Column
    {
        QString name;
        sync::config::ColumnKind kind;
        sync::config::ValueNames valueNames;
        /// The zone in which a record has the clock reading of a time.
        Qt::TimeSpec timeSpec = Qt::UTC;

        /// Whether the value is a number that may have a name.
        bool hasText() const;
    };

    /// The rows of a record's table.
    template <class Record>
    static RecordRows Of(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QString const& table);

    QVector<Column> const& columns() const { return _columns; }

    /// Adds the roles of the columns to those that a model has: one for each column, with its name, and one with "Text"
    /// appended for each column whose numbers may have names.
    QHash<int, QByteArray> WithRoles(QHash<int, QByteArray> roles) const;
    /// Returns the row's value for one of these roles; an invalid value for another role.
    QVariant Value(RecordRow const& row, int role) const;
    /// Returns a column's value in words.
    QString Text(RecordRow const& row, int column) const;

    /// Returns all rows of a SELECT of the shown columns that ends with these clauses. Returns nothing if the store
    /// fails, also if it fails midway, and then sets `error` to the reason that the store gives.
    std::optional<QVector<RecordRow>>
    Read(QString const& clauses, Bindings const& values = {}, QString* error = nullptr) const;
    /// Calls `take` with the id of each row that these clauses select, until it returns false. Returns false if the
    /// store fails, and then sets `error` to the reason that the store gives.
    [[nodiscard]] bool ReadIds(QString const& clauses,
                               Bindings const& values,
                               std::function<bool(int id)> const& take,
                               QString& error) const;

private:
    RecordRows(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory,
               QString const& table,
               QVector<Column> const& columns);

    /// Calls `take` with the query on each row until it returns false. Returns false if the store fails.
    bool Run(QString const& statement,
             Bindings const& values,
             std::function<bool(sync::interf::IQSqlQueryWrapper&)> const& take,
             QString* error) const;
    QVariant Convert(Column const& column, QVariant const& stored) const;

    std::shared_ptr<sync::interf::factory::IDatabaseFactory> _factory;
    /// Reads the documents of properties.
    sync::config::DatabaseConfigurationManager _documents;
    QVector<Column> _columns;
    QString _select;
    QString _selectIds;
};

template <class Record>
RecordRows RecordRows::Of(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QString const& table)
{
    QVector<Column> columns;
    for (auto const& column : sync::config::RecordColumns<Record>()) {
        if (column.isSecret() || !column.isReceived() || column.kind() == sync::config::ColumnKind::Links)
            continue;
        Record record;
        bool const isTime = column.kind() == sync::config::ColumnKind::Time &&
                            column.Set(record, QDateTime(QDate(2000, 1, 1), QTime(), Qt::UTC));
        Qt::TimeSpec const timeSpec = isTime ? column.Get(record).toDateTime().timeSpec() : Qt::UTC;
        columns.append({column.name(), column.kind(), column.valueNames(), timeSpec});
    }
    return RecordRows(std::move(factory), table, columns);
}

} // namespace sync::models
