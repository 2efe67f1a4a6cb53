#include "StoreDiff.h"

#include "Failure.h"
#include "ServerStore.h"
#include "Session.h"
#include "StreamedTable.h"
#include "TableWords.h"
#include "Text.h"

#include "database/StoreFactory.h"
#include "tools/findings/JsonText.h"
#include "tools/findings/StoreComparison.h"
#include "tools/findings/TableNames.h"

namespace tandryctl {

using sync::database::StoreError;
using tandry::findings::ColumnDifference;
using tandry::findings::RecordDifference;
using tandry::findings::StoreComparison;

namespace {

QString WordOf(RecordDifference::Change change)
{
    switch (change) {
    case RecordDifference::Change::Added:
        return QStringLiteral("added");
    case RecordDifference::Change::Removed:
        return QStringLiteral("removed");
    case RecordDifference::Change::Changed:
        break;
    }
    return QStringLiteral("changed");
}

QVector<TableLayout::Column> TableColumns()
{
    QString const longestChange = WordOf(RecordDifference::Change::Changed);
    QString const longestKind = WordForRecordOf(QLatin1String(tandry::findings::GeneratedFiles));
    return {{QStringLiteral("change"), CellWidth::Full, int(longestChange.size())},
            {QStringLiteral("kind"), CellWidth::Full, int(longestKind.size())},
            {QStringLiteral("name"), CellWidth::MayBeShortened},
            {QStringLiteral("columns"), CellWidth::MayBeShortened, 0, true}};
}

TableRow RowOf(RecordDifference const& difference)
{
    QStringList columns;
    for (ColumnDifference const& column : difference.columns)
        columns.append(column.column);
    return {{WordOf(difference.change)},
            {WordForRecordOf(difference.table)},
            {Printable(difference.name)},
            {columns.join(QStringLiteral(", "))}};
}

QByteArray JsonLine(RecordDifference const& difference)
{
    QVariantList columns;
    for (ColumnDifference const& column : difference.columns) {
        QVariantMap values{{QStringLiteral("name"), column.column}};
        if (!column.isPrivate) {
            values.insert(QStringLiteral("before"), column.before);
            values.insert(QStringLiteral("after"), column.after);
        }
        columns.append(values);
    }
    QVariantMap const object{{QStringLiteral("change"), WordOf(difference.change)},
                             {QStringLiteral("kind"), WordForRecordOf(difference.table)},
                             {QStringLiteral("name"), difference.name},
                             {QStringLiteral("columns"), columns}};
    QByteArray json;
    tandry::findings::AppendJsonValue(json, object);
    return json;
}

} // namespace

ExitStatus DiffStores(Session& session, QString const& otherStore)
{
    constexpr qint64 differencesBetweenFlushes = 1000;
    if (session.isOnServer() || IsOnServer(otherStore))
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("stores are compared as files, and one of these is on a server"),
                      QLatin1String(CopyToAFile));
    auto const other = session.OpenOther(otherStore, StoreAccess::Read, true);
    auto const state = session.State();

    Output& output = session.output();
    bool const isJson = output.format() == OutputFormat::Json;
    qint64 count = 0;
    StreamedTable table(TableColumns(), output.plainForm());
    StoreComparison comparison(state, other->store());
    bool const worked = comparison.Compare([&](RecordDifference const& difference) {
        if (isJson)
            output.PrintText(QString::fromUtf8((count == 0 ? "[\n" : ",\n") + JsonLine(difference)));
        else
            output.PrintText(table.Add(RowOf(difference)));
        if (++count % differencesBetweenFlushes == 0)
            session.Flush(); // ends the command when its output cannot be written
    });
    if (!worked) {
        auto const storeError = state->LastError();
        throw session.FailureOf(storeError ? *storeError : other->store()->LastError().value_or(StoreError()));
    }
    if (isJson)
        output.PrintText(QLatin1String(count == 0 ? "[]\n" : "\n]\n"));
    else
        output.PrintText(table.End());
    output.SetLeftOut(table.LeftOut());
    if (count > 0)
        return ExitStatus::NothingFound;
    output.PrintLine(QStringLiteral("the stores have the same records"));
    return ExitStatus::Done;
}

} // namespace tandryctl
