#pragma once

#include "database/store/Failure.h"

namespace sync::database {

class StoreHandle;

/// Whether a transaction that was rolled back has left its journal: SQLite lacked the memory to delete it.
///
/// SQLite reports success for the rollback all the same, but takes the changed pages for written ones: what goes into
/// them next is lost. Other connections see the journal and roll back correctly. So the handle must not be used any
/// more.
[[nodiscard]] bool LeftJournalBehind(StoreHandle const& store) noexcept;

/// Finds out what became of a transaction whose COMMIT failed with this error. Returns success if it is durable all the
/// same. Otherwise nothing of it is there, nor will be, unless the failure is of the kind `OutcomeUnknown`; the
/// `advice` then says what settles it.
///
/// REQUIRES: the transaction was rolled back where that was still possible.
[[nodiscard]] Failure SettleStoreCommit(StoreHandle const& store, StoreError error, QString const& advice);

} // namespace sync::database
