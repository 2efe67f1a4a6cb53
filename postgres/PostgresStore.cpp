#include "postgres/PostgresStore.h"

#include "postgres/PostgresConnection.h"
#include "postgres/ServerErrors.h"

#include <algorithm>
#include <utility>

namespace sync::database {

PostgresStore::PostgresStore(ServerAddress address, OpenOptions const& options, bool holdsState)
    : _address(std::move(address))
    , _options(options)
    , _holdsState(holdsState)
{}

Failure PostgresStore::Open()
{
    std::shared_ptr<PostgresConnection> const connection = Connection();
    if (connection == nullptr)
        return NoConnection();
    if (Failure failure = connection->Open())
        return failure;
    ServerHandle& handle = connection->handle();
    PostgresSchema schema(handle, _address);
    if (Failure failure = schema.Open(_options.mode))
        return failure;
    if (Failure failure = handle.ReadServer()) // the schema may be new
        return failure;
    if (Failure failure = schema.FindDateTimes(_dateTimes))
        return failure;
    _schema = handle.schema();
    return _holdsState ? handle.HoldState() : Failure();
}

StoreError PostgresStore::Refuse(Refusal refusal, QString const& words) const
{
    QString const text = _address.name + QStringLiteral(": ") + words;
    switch (refusal) {
    case Refusal::RolledBack:
        return MakeServerError(ServerState::RolledBack, text);
    case Refusal::ReadOnly:
        return MakeServerError(ServerState::ReadOnly, text);
    case Refusal::Misuse:
        break;
    }
    return MakeServerError(ServerState::Misuse, text);
}

Failure PostgresStore::CheckHandle(ServerHandle const& handle) const
{
    if (!isReadOnly() && !_address.acceptsAsyncCommit && handle.synchronousCommit() == "off")
        return MakeServerError(ServerState::Misuse,
                               _address.name +
                                   QStringLiteral(": the server acknowledges commits before they are on its disk "
                                                  "(synchronous_commit is off), so a crash of the server loses writes "
                                                  "that returned true; switch it on for this database or role, or "
                                                  "accept the loss with tandry_synchronous_commit=any in the URI"));
    if (_schema == InvalidOid) // the first handle
        return {};
    if (_holdsState)
        return MakeServerError(ServerState::ConnectionLost,
                               _address.name +
                                   QStringLiteral(": only the connection that has opened this state of the profile can "
                                                  "read it, and it was lost or belongs to another thread"));
    if (handle.schema() == _schema)
        return {};
    StoreError error = MakeServerError(
        ServerState::WrongSchema,
        _address.name + QStringLiteral(": the profile was removed or replaced while the store was open"));
    error.kind = StoreErrorKind::Moved;
    return error;
}

bool PostgresStore::HoldsDateTime(Oid table, int column) const
{
    return std::binary_search(_dateTimes.begin(), _dateTimes.end(), ServerColumn(table, column));
}

std::shared_ptr<PostgresConnection> PostgresStore::Connection()
{
    return std::static_pointer_cast<PostgresConnection>(Store::Connection());
}

std::shared_ptr<StoreConnection> PostgresStore::MakeConnection()
{
    return std::make_shared<PostgresConnection>(std::static_pointer_cast<PostgresStore>(shared_from_this()));
}

} // namespace sync::database
