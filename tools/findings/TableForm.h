#pragma once

#include <QString>
#include <QVariant>
#include <QtGlobal>

#include <vector>

namespace tandry::findings {

/// A column of a table, and the kind of values that SQLite keeps in it.
struct ColumnForm
{
    QString name;
    bool isText = false;
    /// Whether the column is the row's id, which is not part of the record.
    bool isId = false;
};

/// A table of a store as far as it tells its rows from those of other tables.
struct TableForm
{
    QString name;
    std::vector<ColumnForm> columns;

    /// Whether the values can be a row of this table: as many as it has columns, each of a kind that its column keeps.
    bool Fits(std::vector<QVariant> const& values) const;
    /// The part of the columns for numbers that hold one, from 0 to 1: tables whose columns fit alike differ in it.
    double PartOfNumbers(std::vector<QVariant> const& values) const;
    /// The index of a column; -1 if there is none of this name.
    int IndexOf(QString const& column) const;
};

} // namespace tandry::findings
