#pragma once

#include "database/OpenOptions.h"
#include "database/store/Store.h"
#include "postgres/PostgresSchema.h"
#include "postgres/ServerAddress.h"

#include <memory>
#include <vector>

namespace sync::database {

class PostgresConnection;

/// A profile on a server, with its connections. Any thread may call any operation.
class PostgresStore : public Store
{
public:
    /// With `holdsState`, the store shows the rows that were there when it was opened.
    PostgresStore(ServerAddress address, OpenOptions const& options, bool holdsState);

    /// Creates or opens the profile.
    Failure Open();

    ServerAddress const& address() const { return _address; }
    OpenOptions const& options() const { return _options; }
    bool isReadOnly() const override { return _options.mode == OpenMode::ReadOnly; }
    StoreError Refuse(Refusal refusal, QString const& words) const override;

    /// Fails if commits of the handle may not be durable, if it found another schema of the name than the store's, or
    /// if it cannot show the state that the store holds.
    Failure CheckHandle(ServerHandle const& handle) const;
    /// Whether the column holds date-times.
    bool HoldsDateTime(Oid table, int column) const;

    /// As in the base.
    std::shared_ptr<PostgresConnection> Connection();

private:
    std::shared_ptr<StoreConnection> MakeConnection() override;

    ServerAddress const _address;
    OpenOptions const _options;
    bool const _holdsState;
    Oid _schema = InvalidOid;
    /// In ascending order.
    std::vector<ServerColumn> _dateTimes;
};

} // namespace sync::database
