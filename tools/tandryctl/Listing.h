#pragma once

#include "Session.h"
#include "Terminal.h"

namespace tandryctl {

/// Prints records. If there are none, reports that on standard error, with `plural` as their name.
template <class Record, class Range>
ExitStatus List(Session& session, Columns<Record> const& columns, Range const& records, char const* plural)
{
    session.output().List(columns, records);
    if (!records.empty())
        return ExitStatus::Done;
    PrintError(QStringLiteral("no %1 on record").arg(QLatin1String(plural)));
    return ExitStatus::NothingFound;
}

} // namespace tandryctl
