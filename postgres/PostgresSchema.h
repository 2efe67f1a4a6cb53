#pragma once

#include "database/OpenOptions.h"
#include "database/store/Failure.h"

#include <libpq-fe.h>

#include <utility>
#include <vector>

namespace sync::database {

class ServerHandle;
struct ServerAddress;

/// A column as the server names it in results: the number of its table, and its position there.
using ServerColumn = std::pair<Oid, int>;

/// The schema of a profile: the managers' tables, their indices, the default schedule and the version.
class PostgresSchema
{
public:
    /// A change of the schema raises it.
    static constexpr int Version = 1;

    PostgresSchema(ServerHandle& handle, ServerAddress const& address);

    /// Creates what is missing where `mode` says so, in one transaction. Fails for a schema that is not ours, of
    /// another version, not complete or altered.
    Failure Open(OpenMode mode);

    /// Switches on or off that each commit sends a notice with the names of the tables that it has changed, on the
    /// channel that has the schema's name. Call it in a transaction.
    Failure SetNotices(bool on);
    /// Sets `on` to whether they are switched on.
    Failure FindNotices(bool& on);

    /// The columns of date-times, in ascending order.
    Failure FindDateTimes(std::vector<ServerColumn>& columns);

private:
    Failure CountObjects(int& objects);
    Failure Create();
    Failure CreateInTransaction();
    Failure CheckVersion();
    Failure Check();
    Failure CheckOwner();
    StoreError Refuse(QString const& words) const;

    ServerHandle& _handle;
    ServerAddress const& _address;
};

} // namespace sync::database
