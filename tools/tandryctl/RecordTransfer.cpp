#include "RecordTransfer.h"

#include "CarrySummary.h"
#include "Progress.h"
#include "Text.h"

#include "database/StoreFactory.h"
#include "tools/carry/Import.h"

namespace tandryctl {

using tandry::carry::CarryProgress;
using tandry::carry::Export;
using tandry::carry::ExportOptions;
using tandry::carry::IdRecord;
using tandry::carry::Import;
using tandry::carry::ImportFault;
using tandry::carry::PathMap;
using tandry::carry::RecordCounts;

namespace {

/// Throws the failure of an import.
[[noreturn]] void ThrowFault(Session& session, QString const& name, ImportFault const& fault)
{
    if (fault.reason.isNull())
        session.CheckWritten(false);
    if (fault.line == 0)
        throw Failure(FailureCode::Conflict,
                      fault.reason,
                      QStringLiteral("import into a new store: name one with --store that does not exist yet"));
    QString place = QStringLiteral("line %1 of %2").arg(QString::number(fault.line), name);
    if (!fault.field.isNull())
        place += QStringLiteral(", key %1").arg(Quoted(fault.field));
    throw Failure(FailureCode::UnusableFile,
                  QStringLiteral("%1: %2; nothing was imported").arg(place, fault.reason),
                  QStringLiteral("mend the line, or export the records again"));
}

} // namespace

RecordCounts ExportRecords(Session& session,
                           ExportOptions const& options,
                           QIODevice& device,
                           std::function<Failure()> const& deviceFailure)
{
    auto const state = session.State();
    auto const check = [&] {
        if (auto const error = state->LastError())
            throw session.FailureOf(*error);
    };
    Export exporting(state, options);
    std::optional<RecordCounts> const counts = exporting.Prepare();
    check();
    Progress progress(QStringLiteral("exporting"), "records", SumOf(*counts));
    bool const isWritten = exporting.Write(device, [&progress] { progress.Advance(); });
    check();
    if (!isWritten)
        throw deviceFailure();
    return *counts;
}

ImportedRecords
ImportRecords(Session& session, QIODevice& device, QString const& name, std::vector<PathMap> const& maps)
{
    Import importing(
        session.store(), device, maps, session.isOnServer() ? IdRecord::ServerSequence : IdRecord::SqliteSequence);
    ImportFault fault;
    std::optional<RecordCounts> const counts = importing.Prepare(fault);
    if (!counts)
        ThrowFault(session, name, fault);
    Progress progress(QStringLiteral("importing"), "records", SumOf(*counts));
    if (!importing.Write(fault, [&progress] { progress.Advance(); }))
        ThrowFault(session, name, fault);
    return {*counts, importing.movedPaths()};
}

} // namespace tandryctl
