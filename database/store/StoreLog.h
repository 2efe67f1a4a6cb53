#pragma once

#include <QLoggingCategory>

namespace sync::database {

/// "tandry.database": the reasons of failed operations, and the changes that an opening makes to a store's file.
Q_DECLARE_LOGGING_CATEGORY(StoreLog)

} // namespace sync::database
