#pragma once

#include "StoreError.h"
#include "TandryDatabaseExport.h"

#include <QStringList>
#include <QtGlobal>

#include <optional>

namespace sync::database {

/// Tells of the commits to a store, those of all threads and processes. `StoreFactory::WatchChanges` makes one.
///
/// For event loops of any kind; clients with Qt's use `sync::models::StoreWatcher`. An object sleeps until there is
/// something to look at:
///
///     std::unique_ptr<StoreChanges> const changes = factory->WatchChanges();
///     for (;;) {
///         StoreChanges::Sight const sight = changes->Look();
///         if (sight.error)
///             break; // open the store again
///         if (!sight.tables.isEmpty())
///             Read(sight.tables);
///         if (sight.pauseMsec)
///             Sleep(*sight.pauseMsec);
///         else
///             WaitUntilReadable(changes->descriptor());
///     }
///
/// Used by one thread at a time. Destroy it before the thread's own data.
class TANDRY_DATABASE_EXPORT StoreChanges
{
public:
    /// The result of a look at the store.
    struct Sight
    {
        /// The tables that commits have changed since the last look, in the order of the schema; usually none. Exact if
        /// only this process has written; otherwise all tables.
        QStringList tables;
        /// How long to wait before the next look, in milliseconds. Nothing: until the descriptor is readable.
        std::optional<int> pauseMsec;
        /// Set if the store cannot be watched any longer, usually because its file was removed or replaced
        /// (`StoreErrorKind::Moved`). Each later look returns an error too.
        std::optional<StoreError> error;
    };

    StoreChanges();
    virtual ~StoreChanges();
    Q_DISABLE_COPY_MOVE(StoreChanges)

    /// Returns a file descriptor that becomes readable when there may be something to look at. It belongs to this
    /// object, and only `Look` reads from it.
    [[nodiscard]] virtual int descriptor() const = 0;

    /// Returns what has changed since the last look, or since the object was made. Does not wait for locks.
    ///
    /// While another connection is writing, the pauses grow up to 64 milliseconds. A commit that nothing has read yet
    /// is part of this look or of a later one; no commit is missed.
    [[nodiscard]] virtual Sight Look() = 0;
};

} // namespace sync::database
