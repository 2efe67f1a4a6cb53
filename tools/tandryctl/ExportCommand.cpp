#include "CarrySummary.h"
#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "NewFile.h"
#include "RecordTransfer.h"
#include "StandardOutput.h"
#include "Text.h"

#include "tools/carry/CarriedTables.h"

namespace tandryctl {

using tandry::carry::ChosenRecords;
using tandry::carry::RecordCounts;

namespace {

struct Arguments
{
    std::optional<QString> file;
    std::optional<QString> only;
    bool withSecrets = false;
};

struct Exported
{
    QString file;
    RecordCounts counts;
};

/// Returns the words of a list such as "servers,roots"; none for the whole store.
QStringList RecordsOf(Arguments const& arguments)
{
    if (!arguments.only)
        return {};
    QStringList records = arguments.only->split(QLatin1Char(','));
    for (QString const& word : qAsConst(records)) {
        if (!ChosenRecords().contains(word))
            throw Failure(FailureCode::WrongUsage,
                          QStringLiteral("an export cannot be limited to %1").arg(Quoted(word)),
                          QStringLiteral("--only takes %1, with commas between").arg(JoinWithAnd(ChosenRecords())));
    }
    return records;
}

/// Prints a summary, unless the export itself is the output.
void Report(Session& session, Exported const& exported)
{
    static Columns<Exported> const columns{
        {"file", Shown::Always, [](Exported const& e) { return e.file; }},
        {"records", Shown::Always, [](Exported const& e) { return ToMap(e.counts); }},
    };
    session.output().Report(QStringLiteral("exported %1 to %2")
                                .arg(Counted(SumOf(exported.counts), "record", "records"), Quoted(exported.file)),
                            columns,
                            exported);
}

ExitStatus RunExport(Session& session, Arguments const& arguments)
{
    QStringList const records = RecordsOf(arguments);
    std::unique_ptr<NewFile> file;
    StandardOutput standardOutput;
    if (arguments.file && *arguments.file != QLatin1String("-"))
        file = std::make_unique<NewFile>(*arguments.file);

    QIODevice& device = file ? file->device() : standardOutput;
    RecordCounts const counts = ExportRecords(session, {records, arguments.withSecrets}, device, [&] {
        return file ? file->failure() : standardOutput.failure();
    });
    if (file) {
        file->Finish();
        Report(session, {*arguments.file, counts});
    }
    else if (!standardOutput.Settle()) {
        throw standardOutput.failure();
    }
    return ExitStatus::Done;
}

} // namespace

void AddExportCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("export", "Write the records to a file that another store can import")
        .OptionalArgument("FILE", arguments->file, "The new file; standard output without it, or for -")
        .Option("--only",
                arguments->only,
                "KINDS",
                "Only these, with commas between: servers, accounts, products, roots, schedules")
        .Flag("--with-secrets", arguments->withSecrets, "With the secrets of products, which anyone can then read")
        .Remark("Writes one line of JSON for each record, in the same order each time. Records are numbered, and name "
                "each\n"
                "other by these numbers. FILE is readable by its owner only and never replaces a file. The page\n"
                "docs/export-format.md describes the format. Whoever gets the file sees all names and paths in it.")
        .Example("export ~/stick/tandry.jsonl", "carry the store to another computer")
        .Example("export --only servers,accounts,products", "see what leads to the servers")
        .Run(StoreAccess::Read, [arguments](Session& session) { return RunExport(session, *arguments); });
}

} // namespace tandryctl
