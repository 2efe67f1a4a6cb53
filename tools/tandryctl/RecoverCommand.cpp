#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Text.h"

#include "tools/findings/StoreRecovery.h"

#include <algorithm>
#include <memory>

namespace tandryctl {

using tandry::findings::RecoveredTable;
using tandry::findings::RecoveryMode;
using tandry::findings::RecoveryReport;

namespace {

struct RecoverArguments
{
    QString damaged;
    QString target;
};

ExitStatus Recover(Session& session, RecoverArguments const& arguments)
{
    static Columns<RecoveredTable> const columns{
        {"table", Shown::Always, [](RecoveredTable const& table) { return table.name; }},
        {"recovered", Shown::Always, [](RecoveredTable const& table) { return table.recovered; }},
        {"lost", Shown::Always, [](RecoveredTable const& table) { return table.lost; }},
        {"ambiguous", Shown::InFull, [](RecoveredTable const& table) { return table.ambiguous; }},
        {"doubtful", Shown::InFull, [](RecoveredTable const& table) { return table.doubtful; }},
    };
    QString error;
    auto const report = tandry::findings::RecoverStore(
        arguments.damaged, arguments.target, session.isDryRun() ? RecoveryMode::DryRun : RecoveryMode::Recover, error);
    if (!report)
        throw Failure(FailureCode::StoreFailed,
                      OneLine(error),
                      QStringLiteral("give a name for the new store that is free; if nothing of the damaged one can be "
                                     "read, restore a backup"));

    session.output().List(columns, report->tables);
    for (QString const& remark : report->remarks)
        session.output().PrintLine(remark);
    session.output().PrintLine(
        QStringLiteral("recovered %1 into the new store %2").arg(Quoted(arguments.damaged), Quoted(arguments.target)));
    bool const isComplete = std::all_of(report->tables.begin(), report->tables.end(), [](RecoveredTable const& table) {
        return table.lost == 0 && table.ambiguous == 0 && table.doubtful == 0;
    });
    return isComplete ? ExitStatus::Done : ExitStatus::NothingFound;
}

} // namespace

void AddRecoverCommand(Command& top)
{
    auto const arguments = std::make_shared<RecoverArguments>();
    top.Add("recover", "Copy what can still be read of a damaged store to a new one")
        .Argument("DAMAGED", arguments->damaged, "The damaged store; it is not changed")
        .Required("--to", arguments->target, "NEW", "The new store; an existing file is never replaced")
        .DryRun()
        .Remark("Prints for each table how many rows came back and how many are known to be lost; if there are such,\n"
                "the exit status is 1. Rows keep their ids. Removed rows do not come back; where nothing tells them\n"
                "apart, it says so. Log and journal beside DAMAGED are read too. No program may use DAMAGED\n"
                "meanwhile. --store has no effect.")
        .Example("recover ~/broken.db --to ~/recovered.db", "bring back what can be read")
        .Run(StoreAccess::None, [arguments](Session& session) { return Recover(session, *arguments); });
}

} // namespace tandryctl
