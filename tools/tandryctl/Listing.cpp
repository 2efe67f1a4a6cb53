#include "Listing.h"

#include "NearestWord.h"
#include "Terminal.h"
#include "Text.h"

namespace tandryctl {

namespace {

constexpr char const* Descending = "-desc";

int PositionOf(QString const& column, QStringList const& known)
{
    for (int position = 0; position < known.size(); ++position) {
        if (known.at(position).compare(column, Qt::CaseInsensitive) == 0) // as the store compares names
            return position;
    }
    throw Failure(FailureCode::WrongUsage,
                  QStringLiteral("this listing has no column %1%2").arg(Quoted(column), DidYouMean(column, known)),
                  QStringLiteral("its columns are ") + JoinWithAnd(known));
}

} // namespace

Command& AddListOptions(Command& command, ListOptions& options, char const* nameColumn)
{
    options.nameColumn = nameColumn;
    if (nameColumn != nullptr)
        command.Option("--name", options.name, "GLOB", "Only those whose name matches a pattern, such as '*.txt'");
    return command
        .Option("--columns", options.columns, "COLUMN,...", "Print these columns; 'help columns' says what they hold")
        .Option("--sort", options.sort, "COLUMN", "Sort by this column; COLUMN-desc for descending order")
        .Count("--limit", options.limit, "Print the first N only, and how many more there are");
}

QVector<int> ColumnsNamed(QString const& list, QStringList const& known)
{
    QVector<int> positions;
    for (QString const& column : list.split(QLatin1Char(',')))
        positions.append(PositionOf(column.trimmed(), known));
    return positions;
}

SortedBy SortedByNamed(QString const& column, QStringList const& known)
{
    bool const isDescending = column.endsWith(QLatin1String(Descending), Qt::CaseInsensitive);
    QString const name = isDescending ? column.chopped(int(qstrlen(Descending))) : column;
    return {PositionOf(name, known), isDescending ? Qt::DescendingOrder : Qt::AscendingOrder};
}

QString GlobOf(QString const& shellPattern)
{
    QString glob = shellPattern;
    for (int i = 0; i < glob.size(); ++i) {
        if (glob.at(i) != QLatin1Char('['))
            continue;
        int inside = i + 1;
        if (inside < glob.size() && glob.at(inside) == QLatin1Char('!'))
            glob[inside] = QLatin1Char('^');
        if (inside < glob.size() && glob.at(inside) == QLatin1Char('^'))
            ++inside;
        int const end = glob.indexOf(QLatin1Char(']'), inside + 1); // a bracket at the beginning is part of the set
        if (end == -1)
            break;
        i = end;
    }
    return glob;
}

void NoteMore(qint64 count)
{
    if (count > 0)
        PrintNote(QStringLiteral("%1 more; give a higher --limit to see them").arg(count));
}

void ThrowNothingListed(char const* plural, char const* hint, ListOptions const& options)
{
    if (options.name)
        throw Failure(FailureCode::NotFound,
                      QStringLiteral("no %1 on record match %2").arg(QLatin1String(plural), Quoted(*options.name)),
                      QStringLiteral("the pattern must match the whole name, and case counts"));
    throw Failure(
        FailureCode::NotFound, QStringLiteral("no %1 on record").arg(QLatin1String(plural)), QLatin1String(hint));
}

} // namespace tandryctl
