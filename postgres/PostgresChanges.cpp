#include "postgres/PostgresChanges.h"

#include "database/store/StoreTables.h"
#include "postgres/PostgresSchema.h"
#include "postgres/PostgresStore.h"

#include <utility>

#include <sys/epoll.h>
#include <unistd.h>

namespace sync::database {

PostgresChanges::PostgresChanges(std::shared_ptr<PostgresStore> store)
    : _store(std::move(store))
{}

PostgresChanges::~PostgresChanges()
{
    if (_descriptor >= 0)
        ::close(_descriptor);
}

Failure PostgresChanges::Open(bool& tells)
{
    _descriptor = ::epoll_create1(EPOLL_CLOEXEC);
    if (_descriptor < 0)
        return MakeServerError(ServerState::CannotConnect,
                               _store->address().name + QStringLiteral(": the process has no file descriptor left"));
    return Connect(tells);
}

Failure PostgresChanges::Connect(bool& tells)
{
    auto handle = std::make_unique<ServerHandle>(_store->address(), _store->options());
    Failure failure = handle->Open();
    if (!failure)
        failure = _store->CheckHandle(*handle);
    // In this order: a notice that is switched on later is not missed.
    if (!failure)
        failure = handle->Execute("LISTEN " + ServerHandle::Quoted(_store->address().schema));
    if (!failure)
        failure = PostgresSchema(*handle, _store->address()).FindNotices(tells);
    if (failure || !tells)
        return failure;
    epoll_event event = {};
    event.events = EPOLLIN;
    if (::epoll_ctl(_descriptor, EPOLL_CTL_ADD, handle->socket(), &event) != 0)
        return MakeServerError(ServerState::CannotConnect,
                               _store->address().name + QStringLiteral(": the connection can't be watched"));
    _handle = std::move(handle); // closes the earlier one, which thereby leaves the descriptor
    return {};
}

/// After the connection was lost, all tables may have changed.
Failure PostgresChanges::LookAtNotices(QSet<QByteArray>& tables)
{
    if (!_handle->TakeNotices(tables))
        return {};
    bool tells = false;
    if (Failure failure = Connect(tells))
        return failure;
    if (!tells)
        return MakeServerError(ServerState::Misuse,
                               _store->address().name + QStringLiteral(": the profile does not send notices any more"));
    for (Table const& table : ManagerTables())
        tables.insert(QByteArray(table.name).toLower());
    return {};
}

StoreChanges::Sight PostgresChanges::Look()
{
    Sight sight;
    QSet<QByteArray> changed;
    if (!_error) {
        if (Failure failure = LookAtNotices(changed))
            _error = *failure;
    }
    if (_error) {
        sight.error = _error;
        return sight;
    }
    for (Table const& table : ManagerTables()) {
        if (changed.contains(QByteArray(table.name).toLower()))
            sight.tables.append(QString::fromLatin1(table.name));
    }
    return sight;
}

} // namespace sync::database
