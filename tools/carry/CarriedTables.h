#pragma once

#include "config/RecordColumns.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tandry::carry {

/// A column of the rows that an export holds.
struct CarriedColumn
{
    QString name;
    sync::config::ColumnKind kind;
    /// The table in which the value names a row by its id; null if it is no such value.
    char const* target = nullptr;
    bool isSecret = false;
};

/// The records of one kind.
struct CarriedTable
{
    /// The words for one record and for all of them.
    QString record;
    QString records;
    char const* table;
    /// Which rows of the table are meant: a condition in SQL, true for all.
    char const* condition;
    /// In the order of the table, without "id" and the password, which no store holds.
    std::vector<CarriedColumn> columns;
};

/// Returns all kinds of records, in the order of an export. Folders are there twice, once only the roots. Made at the
/// first call and kept.
std::vector<CarriedTable> const& CarriedTables();

/// Returns the words for the kinds that an export may be limited to: what a person has chosen, not what a scan finds.
QStringList const& ChosenRecords();

/// Returns the kinds with these words, in the order of an export; of a whole store if there are no words.
std::vector<CarriedTable const*> SelectTables(QStringList const& records);

} // namespace tandry::carry
