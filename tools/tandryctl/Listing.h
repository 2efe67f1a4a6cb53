#pragma once

#include "Failure.h"
#include "Session.h"

namespace tandryctl {

/// Prints records. If there are none, throws with `plural` as their name and this hint.
template <class Record, class Range>
ExitStatus
List(Session& session, Columns<Record> const& columns, Range const& records, char const* plural, char const* hint)
{
    if (records.empty())
        throw Failure(
            FailureCode::NotFound, QStringLiteral("no %1 on record").arg(QLatin1String(plural)), QLatin1String(hint));
    session.output().List(columns, records);
    return ExitStatus::Done;
}

} // namespace tandryctl
