#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "RowWriter.h"
#include "StandardOutput.h"
#include "StoreFailure.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "database/StatementDetails.h"
#include "interf/IQSqlQueryWrapper.h"

namespace tandryctl {

using sync::database::SqliteValue;
using sync::database::StatementDetails;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::interf::IQSqlQueryWrapper;

namespace {

struct Arguments
{
    QString statement;
    bool csv = false;
};

constexpr char const* SeeColumns = "'tandryctl help columns' lists the tables and columns";

RowFormat RowFormatOf(Arguments const& arguments, OutputFormat format)
{
    if (format == OutputFormat::Plain)
        return arguments.csv ? RowFormat::Csv : RowFormat::Plain;
    if (arguments.csv)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("--csv and --json exclude each other"),
                      QStringLiteral("give one of them"));
    return RowFormat::Json;
}

/// Throws if the store has refused or failed.
void CheckStatement(Session& session, bool worked)
{
    if (worked)
        return;
    std::optional<StoreError> const error = session.store()->LastError();
    if (error && error->kind == StoreErrorKind::Refused)
        throw Failure(FailureCode::WrongUsage, OneLine(error->text), QLatin1String(SeeColumns));
    session.CheckWritten(false);
}

/// Writes to standard output; `Output` takes only texts, and a stored text need not be one.
class Printer
{
public:
    /// Throws if the output cannot be written.
    void Print(QByteArray const& bytes)
    {
        constexpr int bufferBytes = 64 * 1024;
        _buffer += bytes;
        if (_buffer.size() >= bufferBytes)
            Flush();
    }

    void Flush()
    {
        if (_output.write(_buffer) != _buffer.size() || !_output.Settle())
            throw _output.failure();
        _buffer.clear();
    }

private:
    StandardOutput _output;
    QByteArray _buffer;
};

void PrintRows(Session& session, IQSqlQueryWrapper& query, StatementDetails const& details, RowFormat format)
{
    QStringList const columns = details.columnNames();
    std::unique_ptr<RowWriter> const writer = RowWriter::Make(format, columns, session.output().plainForm());
    std::vector<SqliteValue> values(static_cast<std::size_t>(columns.size()));
    Printer printer;
    printer.Print(writer->Begin());
    while (query.next()) {
        for (int column = 0; column < columns.size(); ++column)
            values[static_cast<std::size_t>(column)] = details.storedValue(column);
        printer.Print(writer->Row(values));
    }
    CheckStatement(session, query.lastError().isEmpty());
    printer.Print(writer->End());
    printer.Flush();
}

ExitStatus Sql(Session& session, Arguments const& arguments)
{
    RowFormat const format = RowFormatOf(arguments, session.output().format());
    auto const query = session.store()->CreateQuery();
    auto const* const details = qobject_cast<StatementDetails*>(query.get());
    if (query->prepare(arguments.statement) && !details->isReading())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the statement writes, and 'sql' only reads"),
                      QStringLiteral("change records with the commands for them: see 'tandryctl help'"));
    CheckStatement(session, query->exec());
    PrintRows(session, *query, *details, format);
    return ExitStatus::Done;
}

} // namespace

void AddSqlCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("sql", "Print the rows of a statement in SQL that only reads")
        .Argument("QUERY", arguments->statement, "One statement of SQLite")
        .Flag("--csv", arguments->csv, "Print comma-separated values with a header line")
        .Remark("Prints values as they are stored: enumerations as numbers, times as milliseconds since 1970-01-01.\n"
                "Refuses statements that write, change settings or attach files, and several in one text.\n"
                "'tandryctl help columns' lists the tables and columns.")
        .Example("sql 'SELECT syncStatus, count(*), sum(size) FROM FileConfiguration GROUP BY 1'",
                 "count files by their status")
        .Example("sql --csv 'SELECT clientPath, size FROM FileConfiguration ORDER BY size DESC LIMIT 100'",
                 "print the largest files for a spreadsheet")
        .OnlyOnFiles("use psql, after 'SET search_path TO tandry_NAME'")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Sql(session, *arguments); });
}

} // namespace tandryctl
