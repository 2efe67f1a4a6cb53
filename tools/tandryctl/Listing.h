#pragma once

#include "Session.h"
#include "Terminal.h"

namespace tandryctl {

/// Prints records and says on standard error when there are none; `plural` is what they are called.
template <class Record, class Range>
ExitStatus List(Session& session, Columns<Record> const& columns, Range const& records, char const* plural)
{
    session.output().List(columns, records);
    if (!records.empty())
        return ExitStatus::Done;
    Complain(QStringLiteral("no %1 on record").arg(QLatin1String(plural)));
    return ExitStatus::NothingFound;
}

} // namespace tandryctl
