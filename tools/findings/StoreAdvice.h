#pragma once

#include "database/StoreError.h"

#include <QString>

namespace tandry::findings {

/// Returns what a user can do about a failure of a store, with the command of tandryctl that helps: part of a sentence,
/// without a capital and without a full stop.
QString AdviceOn(sync::database::StoreErrorKind kind);

/// Returns what a user can do where there is no store.
QString AdviceOnMissingStore();

} // namespace tandry::findings
