#pragma once

#include "benchmarks/Runner.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace sync::benchmarks {

/// What stands below the table: a fact in words, and for programs a name and a number.
struct Note
{
    QString text;
    QString key;
    double value = 0;
};

struct Report
{
    std::vector<Result> results;
    std::vector<Note> notes;
};

/// Machine, date and versions, in one line.
QString Environment();

/// For people: one table, then the notes.
QString ToText(Report const& report);

/// For programs: an object with everything that was measured, single repetitions included.
QString ToJson(Report const& report);

/// The number with so many digits behind the point as are worth reading.
QString Readable(double value);

/// Columns as wide as they need to be; the first one to the left, the others to the right.
QString Table(QStringList const& head, std::vector<QStringList> const& lines);

} // namespace sync::benchmarks
