#pragma once

#include "database/store/Failure.h"

#include <QStringList>

namespace sync::database {

class StoreHandle;

/// Fails if the end of the file is missing and cannot be in the log. SQLite itself overlooks less than a page.
[[nodiscard]] Failure CheckLength(StoreHandle const& store);

/// Reads the whole store and appends what is damaged, one text for each fault, in SQLite's words: pages, rows and
/// indices that do not fit together, and a missing end. In a store of this library's version also missing tables,
/// columns and indices. Fails if the store could not be read to its end.
[[nodiscard]] Failure FindDamage(StoreHandle const& store, QStringList& damage);

} // namespace sync::database
