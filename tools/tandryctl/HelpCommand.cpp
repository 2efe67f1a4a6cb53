#include "CommandLine.h"
#include "Commands.h"
#include "Text.h"

#include "tools/findings/ColumnReference.h"

#include <algorithm>
#include <vector>

namespace tandryctl {

using sync::config::ColumnKind;
using tandry::findings::ColumnReference;
using tandry::findings::DescribedColumn;
using tandry::findings::DescribedTables;
using tandry::findings::NamedValue;

namespace {

constexpr char const* ColumnsTopic = "columns";

constexpr char const* AboutColumns =
    "The columns of a store, by table. Listings name a value of an enumeration beside its number, and the bits of a\n"
    "bit field by their names; values without a name are the client's own. A store has times as the milliseconds of\n"
    "their clock reading since 1970-01-01; that of a schedule is wall-clock time, all others are UTC.\n";

char const* KindName(ColumnKind kind)
{
    switch (kind) {
    case ColumnKind::Integer:
    case ColumnKind::LongInteger:
        return "number";
    case ColumnKind::Enumeration:
        return "value";
    case ColumnKind::BitField:
        return "bits";
    case ColumnKind::Text:
        return "text";
    case ColumnKind::Time:
        return "time";
    case ColumnKind::Properties:
        return "properties";
    case ColumnKind::Links:
        return "links";
    }
    return "";
}

std::vector<NamedValue> ValuesOf(DescribedColumn const& column)
{
    return column.names ? column.names->values() : std::vector<NamedValue>();
}

QString Cell(QString const& text, int width)
{
    return text.leftJustified(width, QLatin1Char(' '));
}

/// Returns the columns as text for people.
QString ColumnsText()
{
    constexpr int NameWidth = 24;
    constexpr int KindWidth = 12;
    constexpr int ValueWidth = 22;
    QString const indent(2, QLatin1Char(' '));
    QString const valueIndent(NameWidth + KindWidth + 4, QLatin1Char(' '));
    QString text = QLatin1String(AboutColumns);
    for (DescribedTables const& tables : ColumnReference()) {
        text += QLatin1Char('\n') + JoinWithAnd(tables.tables) + QLatin1Char('\n');
        for (DescribedColumn const& column : tables.columns) {
            text += indent + Cell(column.name, NameWidth) + Cell(QLatin1String(KindName(column.kind)), KindWidth) +
                    column.meaning + QLatin1Char('\n');
            for (NamedValue const& value : ValuesOf(column)) {
                QString const name = QStringLiteral("%1 %2").arg(value.value).arg(QLatin1String(value.name));
                text += valueIndent + Cell(name, ValueWidth) + QLatin1String(value.meaning) + QLatin1Char('\n');
            }
        }
    }
    return text;
}

struct TableColumn
{
    QString table;
    DescribedColumn const* column;
};

void ListColumns(Session& session)
{
    static Columns<TableColumn> const columns{
        {"table", Shown::Always, [](TableColumn const& c) { return c.table; }},
        {"column", Shown::Always, [](TableColumn const& c) { return c.column->name; }},
        {"kind", Shown::Always, [](TableColumn const& c) { return QString(QLatin1String(KindName(c.column->kind))); }},
        {"meaning", Shown::Always, [](TableColumn const& c) { return c.column->meaning; }},
        {"values",
         Shown::Always,
         [](TableColumn const& c) {
             QVariantList values;
             for (NamedValue const& value : ValuesOf(*c.column))
                 values.append(QVariantMap{{QStringLiteral("value"), value.value},
                                           {QStringLiteral("name"), QString(QLatin1String(value.name))},
                                           {QStringLiteral("meaning"), QString(QLatin1String(value.meaning))}});
             return values;
         }},
    };
    QVector<TableColumn> rows;
    for (DescribedTables const& tables : ColumnReference()) {
        for (QString const& table : tables.tables) {
            for (DescribedColumn const& column : tables.columns)
                rows.append({table, &column});
        }
    }
    session.output().List(columns, rows);
}

ExitStatus Help(Session& session, Command const& top, QStringList const& names)
{
    bool const isOnColumns = names == QStringList{QLatin1String(ColumnsTopic)};
    if (isOnColumns && session.output().format() == OutputFormat::Json)
        ListColumns(session);
    else
        session.output().PrintText(isOnColumns ? ColumnsText() : top.HelpOn(names));
    return ExitStatus::Done;
}

} // namespace

void AddHelpCommand(Command& top)
{
    auto const names = std::make_shared<QStringList>();
    top.Add("help", "Show help on a command, or list all columns and their values")
        .Argument("TOPIC", *names, "A command, such as root add, or columns; nothing for the program")
        .Remark("'help COMMAND' prints what 'COMMAND --help' does. 'help columns' lists the tables and columns of a\n"
                "store with what they hold, in which unit, and the names of their values; with --json as objects.")
        .Example("help root add", "show help on a command")
        .Example("help columns", "look up what a column or a number in it means")
        .Run(StoreAccess::None, [top, names](Session& session) { return Help(session, top, *names); });
}

} // namespace tandryctl
