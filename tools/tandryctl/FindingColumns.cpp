#include "FindingColumns.h"

namespace tandryctl {

using tandry::findings::Finding;
using tandry::findings::FindingKind;
using tandry::findings::FixedRow;
using tandry::findings::FoundRow;
using tandry::findings::Severity;

QString SeverityName(FindingKind const& kind)
{
    return kind.severity == Severity::Fault ? QStringLiteral("fault") : QStringLiteral("note");
}

QVariantMap ToMap(FoundRow const& row)
{
    return {{QStringLiteral("table"), row.table},
            {QStringLiteral("id"), row.id ? QVariant(*row.id) : QVariant()},
            {QStringLiteral("name"), row.name},
            {QStringLiteral("detail"), row.detail}};
}

QVariantMap ToMap(FixedRow const& fixed)
{
    QVariantMap map = ToMap(fixed.row);
    map.insert(QStringLiteral("action"), fixed.action);
    return map;
}

Columns<Finding> const& FindingColumns()
{
    static Columns<Finding> const columns{
        {"code", Shown::Always, [](Finding const& finding) { return QLatin1String(finding.kind->code); }},
        {"severity", Shown::Always, [](Finding const& finding) { return SeverityName(*finding.kind); }},
        {"meaning", Shown::Always, [](Finding const& finding) { return QLatin1String(finding.kind->meaning); }},
        {"fixable", Shown::Always, [](Finding const& finding) { return finding.kind->isFixable; }},
        {"remedy", Shown::Always, [](Finding const& finding) { return QLatin1String(finding.kind->remedy); }},
        {"rows", Shown::Always, [](Finding const& finding) { return ToList(finding.rows); }},
    };
    return columns;
}

} // namespace tandryctl
