#pragma once

#include "Failure.h"

#include <QString>

#include <utility>

namespace tandryctl {

/// An entry on disk that a scan could not read or record.
struct ScanProblem
{
    ScanProblem(QString entry, QString const& message, QString const& hint)
        : path(std::move(entry))
        , failure(FailureCode::Incomplete, message, hint)
    {}

    /// The entry's path; bytes that are not valid UTF-8 are replaced. The message has them all.
    QString path;
    Failure failure;
};

} // namespace tandryctl
