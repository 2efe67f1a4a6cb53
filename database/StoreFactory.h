#pragma once

#include "../interf/IDatabaseFactory.h"
#include "StoreChanges.h"
#include "StoreError.h"
#include "TandryDatabaseExport.h"

#include <memory>
#include <optional>

namespace sync::database {

/// A factory whose store keeps the reasons of failures, whatever its database.
///
/// The managers return the same for a failure as for a miss. To distinguish them, a client asks the factory on the
/// thread that called the manager:
///
///     factory->ClearError();
///     auto const files = manager.GetFileConfigurationsByFolderId(id, sync::interf::FileConfigOrderByName);
///     bool const isComplete = !factory->LastError();
class TANDRY_DATABASE_EXPORT StoreFactory : public sync::interf::factory::IDatabaseFactory
{
    Q_OBJECT

public:
    StoreFactory();
    ~StoreFactory() override;

    /// Returns the calling thread's first error since it last called `ClearError`, or nothing if there was none.
    [[nodiscard]] virtual std::optional<StoreError> LastError() const = 0;
    /// Clears the calling thread's error.
    virtual void ClearError() = 0;

    /// Returns an object that tells of the commits to the store, of all threads and processes. Returns null on failure,
    /// and sets `LastError`; also null, without an error, if the store does not tell, as this implementation does.
    [[nodiscard]] virtual std::unique_ptr<StoreChanges> WatchChanges();

Q_SIGNALS:
    /// Emitted when writes that returned true are lost: the commit at the end of their scope failed, or a fault rolled
    /// the transaction back before. If the error's kind is `OutcomeUnknown`, they may be lost. Emitted on the scope's
    /// thread.
    ///
    /// The lost rows are gone, the cached listings of folder managers are read anew, and the store gives the ids of
    /// lost rows to later ones: discard the records that were added in the scope, and the ids taken from them.
    ///
    /// A slot may use the store. If its writes are lost too, one further signal reports this once all slots have
    /// returned; losses during that signal are not reported by a third one. In a slot, `TransactionalScope::commit` and
    /// `LastError` report a loss at once. An exception that leaves a slot is caught and logged; the slots that were
    /// connected after it are then not called.
    void CommitFailed(sync::database::StoreError const& error);
};

} // namespace sync::database
