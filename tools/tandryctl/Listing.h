#pragma once

#include "CommandLine.h"
#include "Failure.h"
#include "Session.h"
#include "StoreQueries.h"

#include "tools/findings/FileRows.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <optional>

namespace tandryctl {

/// The options that listings have in common, as they were given.
struct ListOptions
{
    std::optional<QString> columns;
    std::optional<QString> sort;
    std::optional<int> limit;
    std::optional<QString> name;
    /// The column that `name` is a pattern for; null if the records have no name.
    char const* nameColumn = nullptr;
};

/// Adds the options to a command. Without a column that holds a name, there is no --name.
Command& AddListOptions(Command& command, ListOptions& options, char const* nameColumn = "name");

/// A column and a direction, as --sort names them.
struct SortedBy
{
    int column;
    Qt::SortOrder order;
};

/// Returns the positions of the columns that --columns names, separated by commas. Throws if there is no such column.
QVector<int> ColumnsNamed(QString const& list, QStringList const& known);
/// Returns the column that --sort names. Throws if there is no such column.
SortedBy SortedByNamed(QString const& column, QStringList const& known);

/// Returns the pattern of SQLite's GLOB for a pattern of the shell, which may negate a set by "!" too.
QString GlobOf(QString const& shellPattern);

/// Tells on standard error how many records a limit has left out.
void NoteMore(qint64 count);

template <class Record>
QStringList NamesOf(Columns<Record> const& columns)
{
    QStringList names;
    for (Column<Record> const& column : columns)
        names.append(column.name);
    return names;
}

/// Returns the columns that a listing prints: those of --columns in that order, or the usual ones of the format.
template <class Record>
Columns<Record> PrintedColumns(Columns<Record> const& columns, ListOptions const& options, OutputFormat format)
{
    Columns<Record> printed;
    if (options.columns) {
        for (int const position : ColumnsNamed(*options.columns, NamesOf(columns))) {
            printed.append(columns.at(position));
            printed.last().shown = Shown::Always;
            printed.last().mayBeLeftOut = false;
        }
        return printed;
    }
    std::copy_if(columns.begin(), columns.end(), std::back_inserter(printed), [format](Column<Record> const& column) {
        return format == OutputFormat::Json || column.shown == Shown::Always;
    });
    return printed;
}

[[noreturn]] void ThrowNothingListed(char const* plural, char const* hint, ListOptions const& options);

/// Prints records that are in memory, as the options say. If there are none, throws with `plural` as their name and
/// this hint.
template <class Record, class Range>
ExitStatus List(Session& session,
                Columns<Record> const& columns,
                Range const& records,
                char const* plural,
                char const* hint,
                ListOptions const& options = {})
{
    QVector<Record> listed(records.begin(), records.end());
    QStringList const names = NamesOf(columns);
    if (options.name) {
        auto const& name = columns.at(names.indexOf(QLatin1String(options.nameColumn))).value;
        QString const pattern = GlobOf(*options.name);
        auto const isOther = [&](Record const& record) {
            return !session.Checked(session.queries().Matches(name(record).toString(), pattern));
        };
        listed.erase(std::remove_if(listed.begin(), listed.end(), isOther), listed.end());
    }
    if (options.sort) {
        SortedBy const by = SortedByNamed(*options.sort, names);
        auto const& value = columns.at(by.column).value;
        std::stable_sort(listed.begin(), listed.end(), [&](Record const& left, Record const& right) {
            return by.order == Qt::AscendingOrder ? tandry::findings::IsValueLess(value(left), value(right))
                                                  : tandry::findings::IsValueLess(value(right), value(left));
        });
    }
    if (listed.isEmpty())
        ThrowNothingListed(plural, hint, options);
    int const more = options.limit ? std::max(0, int(listed.size()) - *options.limit) : 0;
    listed.erase(listed.end() - more, listed.end());
    session.output().List(PrintedColumns(columns, options, session.output().format()), listed);
    NoteMore(more);
    return ExitStatus::Done;
}

} // namespace tandryctl
