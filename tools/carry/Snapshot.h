#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace sync::database {
class SqliteDatabaseFactory;
struct StoreError;
} // namespace sync::database

namespace tandry::carry {

/// One committed state of an open store, copied to the temporary folder, where its owner alone may read it. Removed
/// with the object. Reading it for long keeps no log of the store from shrinking.
class Snapshot
{
public:
    /// Returns null on failure; `error` then says why. Its kind is `Full` or `ReadOnly` if the temporary folder is the
    /// reason.
    static std::unique_ptr<Snapshot> Take(sync::database::SqliteDatabaseFactory& store,
                                          sync::database::StoreError& error);

    ~Snapshot();

    std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store() const { return _store; }

private:
    Snapshot();

    QTemporaryDir _folder;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> _store; // closed before its folder goes
};

} // namespace tandry::carry
