#pragma once

#include <QLoggingCategory>

namespace sync::database {

/// "tandry.database": why the store could not carry out an operation, and what it did to a store's file at its opening.
Q_DECLARE_LOGGING_CATEGORY(StoreLog)

} // namespace sync::database
