#include "CommandLine.h"
#include "Commands.h"
#include "Progress.h"
#include "Text.h"

#include "tools/findings/Findings.h"

#include <algorithm>

namespace tandryctl {

using tandry::findings::Finding;
using tandry::findings::FindingKind;
using tandry::findings::FoundRow;
using tandry::findings::Severity;

namespace {

/// Of one kind, in plain output.
constexpr std::size_t MostRows = 20;

QString SeverityName(FindingKind const& kind)
{
    return kind.severity == Severity::Fault ? QStringLiteral("fault") : QStringLiteral("note");
}

QVariant RowsOf(Finding const& finding)
{
    QVariantList rows;
    for (FoundRow const& row : finding.rows)
        rows.append(QVariantMap{{QStringLiteral("table"), row.table},
                                {QStringLiteral("id"), row.id ? QVariant(*row.id) : QVariant()},
                                {QStringLiteral("name"), row.name},
                                {QStringLiteral("detail"), row.detail}});
    return rows;
}

Columns<Finding> const& FindingColumns()
{
    static Columns<Finding> const columns{
        {"code", Shown::Always, [](Finding const& finding) { return QLatin1String(finding.kind->code); }},
        {"severity", Shown::Always, [](Finding const& finding) { return SeverityName(*finding.kind); }},
        {"meaning", Shown::Always, [](Finding const& finding) { return QLatin1String(finding.kind->meaning); }},
        {"rows", Shown::Always, RowsOf},
    };
    return columns;
}

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

void Print(Output& output, Finding const& finding)
{
    output.PrintLine(
        QStringLiteral("%1 %2: %3")
            .arg(SeverityName(*finding.kind), QLatin1String(finding.kind->code), QLatin1String(finding.kind->meaning)));
    std::size_t const shown = std::min(finding.rows.size(), MostRows);
    for (std::size_t i = 0; i < shown; ++i)
        output.PrintLine(QStringLiteral("  ") + LineOf(finding.rows[i]));
    if (finding.rows.size() > shown)
        output.PrintLine(QStringLiteral("  and %1 more; --json lists all").arg(finding.rows.size() - shown));
}

ExitStatus Examine(Session& session)
{
    std::optional<std::vector<Finding>> findings;
    {
        Progress progress(QStringLiteral("looking"), "kinds", qint64(tandry::findings::FindingKinds().size()));
        findings = tandry::findings::FindAll(session.store(), [&progress] { progress.Advance(); });
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

} // namespace

void AddDoctorCommand(Command& top)
{
    top.Add("doctor", "Look for rows that the client cannot use as it should")
        .Remark("Looks for damage as 'check' does, and for rows that do not fit together. Changes nothing. Lists the\n"
                "rows under the code of what is wrong, with what it means for the client. If there is a fault, the\n"
                "exit status is 1; notes do not count.")
        .Example("doctor", "look at the user's own store")
        .Example("doctor --json", "the same for a program, with all rows")
        .Run(StoreAccess::Read, Examine);
}

} // namespace tandryctl
