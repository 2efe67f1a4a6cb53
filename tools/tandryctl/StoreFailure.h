#pragma once

#include "Failure.h"

namespace sync::database {
struct StoreError;
}

namespace tandryctl {

/// Returns the failure of a command whose store failed, with what to do about this kind of error. `hintForOther`
/// replaces the hint for errors of the kind `Other` where the command knows more.
Failure StoreFailure(sync::database::StoreError const& error, QString const& hintForOther = {});

} // namespace tandryctl
