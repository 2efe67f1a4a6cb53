#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <libpq-fe.h>

#include <optional>

namespace sync::database {

/// Writes a value in the form in which the server reads it; nothing for NULL. Sets `words` to the reason, in which %1
/// stands for the placeholder, if the store cannot keep the value.
std::optional<QByteArray> ToServer(QVariant const& value, QString& words);

/// Reads a value of a result as the store on SQLite gives it. A date-time is returned for a clock reading.
QVariant FromServer(PGresult const* result, int row, int column, bool isClockReading);

} // namespace sync::database
