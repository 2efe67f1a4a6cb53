#pragma once

#include "Output.h"

#include "database/sqlite/SqliteValue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

namespace tandryctl {

/// How the rows of a statement are printed.
enum class RowFormat
{
    /// A table for people.
    Plain,
    /// An array of objects, one per line.
    Json,
    /// RFC 4180, with a header line.
    Csv
};

/// Turns the rows of any statement into text, row by row. Memory does not grow with the number of rows.
///
/// JSON and CSV keep each value as SQLite has it; the manual says in which form.
class RowWriter
{
public:
    virtual ~RowWriter() = default;

    /// A table has the plain form.
    static std::unique_ptr<RowWriter> Make(RowFormat format, QStringList const& columns, PlainForm const& plainForm);

    // Each returns what is to be printed next, which may be nothing.
    virtual QByteArray Begin() = 0;
    virtual QByteArray Row(std::vector<sync::database::SqliteValue> const& values) = 0;
    virtual QByteArray End() = 0;
};

} // namespace tandryctl
