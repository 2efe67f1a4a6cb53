#pragma once

#include <QDateTime>
#include <QString>

namespace sync::config {

/// Returns the clock reading of a date-time in ISO 8601 as a time in UTC, whatever its zone is; an invalid one in UTC
/// if the text is none.
///
/// Reads what `QDateTime::fromString` with `Qt::ISODate` reads in Qt 5.15. That of Qt 6 accepts an hour without
/// minutes, rounds a fraction up to the next second, and refuses a text with something behind the seconds: a client
/// with it would find other dates in the same store.
QDateTime ReadIsoDate(QString const& text);

} // namespace sync::config
