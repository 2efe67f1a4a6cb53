#pragma once

#include "database/StoreChanges.h"
#include "database/store/Failure.h"
#include "postgres/ServerHandle.h"

#include <QSet>

#include <memory>
#include <optional>

namespace sync::database {

class PostgresStore;

/// The commits to a profile, as the server tells a connection that listens.
class PostgresChanges final : public StoreChanges
{
public:
    explicit PostgresChanges(std::shared_ptr<PostgresStore> store);
    ~PostgresChanges() override;

    /// Call once. Sets `tells` to whether the profile sends notices; the object is of no use if it does not.
    Failure Open(bool& tells);

    int descriptor() const override { return _descriptor; }
    Sight Look() override;

private:
    Failure Connect(bool& tells);
    Failure LookAtNotices(QSet<QByteArray>& tables);

    std::shared_ptr<PostgresStore> const _store;
    /// Readable when the connection is; stays the same when another connection takes its place.
    int _descriptor = -1;
    std::unique_ptr<ServerHandle> _handle;
    std::optional<StoreError> _error;
};

} // namespace sync::database
