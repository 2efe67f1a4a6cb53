#pragma once

#include "tools/findings/PrivateCopy.h"

#include "database/StoreError.h"

#include <memory>

namespace tandryctl {

/// Copies the store and says so in one line on standard error. Throws if it cannot be copied.
std::unique_ptr<tandry::findings::PrivateCopy> CopyPrivately(QString const& storePath,
                                                             sync::database::StoreErrorKind reason);

} // namespace tandryctl
