#pragma once

#include <QtGlobal>

namespace sync::database {

/// Returns the statements that turn a store of this older version into one of the next version, but for the version
/// number itself.
char const* UpgradeStep(qint64 version);

} // namespace sync::database
