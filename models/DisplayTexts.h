#pragma once

#include "config/ValueNames.h"

#include <QString>

namespace sync::models {

/// The words for a value of an enumeration or a set of bits, in the user's language. A value without a name is the
/// client's own, and shown as a number.
QString DisplayText(sync::config::ValueNames const& names, int value);

} // namespace sync::models
