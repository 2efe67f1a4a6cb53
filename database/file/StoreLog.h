#pragma once

#include <QLoggingCategory>

namespace sync::database {

/// "tandry.database": what the store could not do, and why.
Q_DECLARE_LOGGING_CATEGORY(StoreLog)

} // namespace sync::database
