#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "FindingColumns.h"
#include "Progress.h"
#include "ServerStore.h"
#include "Text.h"

#include "tools/findings/Findings.h"
#include "tools/findings/Fix.h"

#include <algorithm>
#include <memory>

namespace tandryctl {

using tandry::findings::Finding;
using tandry::findings::FindingKind;
using tandry::findings::FindingKinds;
using tandry::findings::FixedRow;
using tandry::findings::FixMode;
using tandry::findings::FixReport;
using tandry::findings::FoundRow;
using tandry::findings::Severity;

namespace {

/// Of one kind, in plain output.
constexpr std::size_t MostRows = 20;

QString LineOf(FoundRow const& row)
{
    QStringList words;
    if (!row.table.isNull())
        words.append(row.table);
    if (row.id)
        words.append(QString::number(*row.id));
    if (!row.name.isNull())
        words.append(Quoted(row.name));
    QString line = words.join(QLatin1Char(' '));
    if (row.detail.isNull())
        return line;
    return line.isEmpty() ? Printable(row.detail) : line + QStringLiteral(": ") + Printable(row.detail);
}

QString LineOf(FixedRow const& fixed)
{
    return LineOf(FoundRow{fixed.row.table, fixed.row.id, fixed.row.name, fixed.action});
}

template <class Row>
void PrintRows(Output& output, std::vector<Row> const& rows)
{
    std::size_t const shown = std::min(rows.size(), MostRows);
    for (std::size_t i = 0; i < shown; ++i)
        output.PrintLine(QStringLiteral("  ") + LineOf(rows[i]));
    if (rows.size() > shown)
        output.PrintLine(QStringLiteral("  and %1 more; --json lists all").arg(rows.size() - shown));
}

void Print(Output& output, Finding const& finding)
{
    output.PrintLine(
        QStringLiteral("%1 %2: %3")
            .arg(SeverityName(*finding.kind), QLatin1String(finding.kind->code), QLatin1String(finding.kind->meaning)));
    PrintRows(output, finding.rows);
    output.PrintLine(finding.kind->isFixable
                         ? QStringLiteral("  --fix %1: %2")
                               .arg(QLatin1String(finding.kind->code), QLatin1String(finding.kind->remedy))
                         : QStringLiteral("  ") + QLatin1String(finding.kind->remedy));
}

ExitStatus Examine(Session& session)
{
    std::optional<std::vector<Finding>> findings;
    {
        Progress progress(QStringLiteral("looking"), "kinds", qint64(FindingKinds().size()));
        findings = tandry::findings::FindAll(session.fileStore(), [&progress] { progress.Advance(); });
    }
    session.CheckWritten(findings.has_value());

    if (session.output().format() == OutputFormat::Json)
        session.output().List(FindingColumns(), *findings);
    for (Finding const& finding : *findings)
        Print(session.output(), finding);
    if (findings->empty())
        session.output().PrintLine(
            QStringLiteral("nothing was found in the store %1").arg(Quoted(session.storePath())));
    bool const hasFault = std::any_of(findings->begin(), findings->end(), [](Finding const& finding) {
        return finding.kind->severity == Severity::Fault;
    });
    return hasFault ? ExitStatus::NothingFound : ExitStatus::Done;
}

void Print(Output& output, FindingKind const& kind, FixReport const& report)
{
    QString const code = QLatin1String(kind.code);
    if (report.fixed.empty() && report.left.empty()) {
        output.PrintLine(QStringLiteral("nothing is to be fixed for %1; no record was changed").arg(code));
        return;
    }
    if (!report.backup.isNull())
        output.PrintLine(QStringLiteral("copied the store to %1 first").arg(Quoted(report.backup)));
    output.PrintLine(
        QStringLiteral("%1 for %2 changed:").arg(Counted(qint64(report.fixed.size()), "row", "rows"), code));
    PrintRows(output, report.fixed);
    if (!report.left.empty()) {
        output.PrintLine(QStringLiteral("%1 left:").arg(Counted(qint64(report.left.size()), "row is", "rows are")));
        PrintRows(output, report.left);
    }
}

ExitStatus Fix(Session& session, FindingKind const& kind)
{
    if (!kind.isFixable)
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 cannot be fixed by this command").arg(QLatin1String(kind.code)),
                      QLatin1String(kind.remedy));
    auto const report =
        tandry::findings::Fix(session.fileStore(), kind, session.isDryRun() ? FixMode::DryRun : FixMode::BackUpAndFix);
    session.CheckWritten(report.has_value());

    static Columns<FixReport> const columns{
        {"backup", Shown::Always, [](FixReport const& fix) { return fix.backup; }},
        {"fixed", Shown::Always, [](FixReport const& fix) { return ToList(fix.fixed); }},
        {"left", Shown::Always, [](FixReport const& fix) { return ToList(fix.left); }},
    };
    if (session.output().format() == OutputFormat::Json)
        session.output().Show(columns, *report);
    Print(session.output(), kind, *report);
    return report->left.empty() ? ExitStatus::Done : ExitStatus::NothingFound;
}

QStringList Codes()
{
    QStringList codes;
    for (FindingKind const& kind : FindingKinds())
        codes.append(QLatin1String(kind.code));
    return codes;
}

/// Returns the codes that can be fixed, in lines.
QString FixableCodes()
{
    QStringList codes;
    for (FindingKind const& kind : FindingKinds()) {
        if (kind.isFixable)
            codes.append(QStringLiteral("  ") + QLatin1String(kind.code));
    }
    return codes.join(QLatin1Char('\n'));
}

} // namespace

void AddDoctorCommand(Command& top)
{
    auto const fix = std::make_shared<std::optional<int>>(); // the index of a kind
    QByteArray const remark =
        QStringLiteral(
            "Looks for damage as 'check' does, and for rows that do not fit together. Lists the rows under the\n"
            "code of what is wrong, with what it means for the client and what can be done. If there is a\n"
            "fault, the exit status is 1; notes do not count.\n\n"
            "With --fix, copies the store to a new file beside it, fixes the rows of this code and nothing\n"
            "else, all or none, and lists them. If some cannot be fixed, the exit status is 1. Without such\n"
            "rows it does nothing. Codes that can be fixed:\n")
            .append(FixableCodes())
            .toUtf8();
    top.Add("doctor", "Look for rows that the client cannot use as it should, and fix them")
        .Choice("--fix", *fix, Codes(), "CODE", "Fix the rows that are listed under this code")
        .DryRun()
        .Remark(remark.constData())
        .Example("doctor", "look at the user's own store")
        .Example("doctor --json", "the same for a program, with all rows")
        .Example("doctor --fix twin", "merge rows that stand twice")
        .OnlyOnFiles(CopyToAFile)
        .Run([fix] { return *fix ? StoreAccess::Write : StoreAccess::Read; },
             [fix](Session& session) {
                 return *fix ? Fix(session, FindingKinds()[std::size_t(**fix)]) : Examine(session);
             });
}

} // namespace tandryctl
