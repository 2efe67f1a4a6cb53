#pragma once

#include "Output.h"

#include "tools/findings/Findings.h"
#include "tools/findings/Fix.h"

#include <QVariantMap>

#include <vector>

namespace tandryctl {

/// Returns the word for the severity.
QString SeverityName(tandry::findings::FindingKind const& kind);

QVariantMap ToMap(tandry::findings::FoundRow const& row);
QVariantMap ToMap(tandry::findings::FixedRow const& fixed);

/// Returns rows of either kind as values for JSON.
template <class Row>
QVariantList ToList(std::vector<Row> const& rows)
{
    QVariantList list;
    for (Row const& row : rows)
        list.append(ToMap(row));
    return list;
}

/// Returns the columns of findings in JSON.
Columns<tandry::findings::Finding> const& FindingColumns();

} // namespace tandryctl
