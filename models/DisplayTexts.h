#pragma once

#include <QString>

namespace sync::models {

/// The words for a value of an enumeration or a set of bits, in the user's language. A value without a name is the
/// client's own, and shown as a number. `column` is the name of a column in the table.
QString DisplayText(QString const& table, QString const& column, int value);

} // namespace sync::models
