#pragma once

#include "config/store/Placeholders.h"
#include "database/TransactionalScope.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QString>

#include <memory>
#include <optional>

/// How the managers talk to their store: write, insert and count here, lookups and listings in `Rows.h`.
///
/// `bind` is called with the prepared query; `Values` makes one from placeholders and values. A failed statement shows
/// in the result only: the store keeps the reason.
namespace sync::config::store {

using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

/// A `bind` that binds these values in this order. Refers to its arguments, so it goes straight into the operation that
/// it is made for.
template <class... Bound>
auto Values(Bound const&... values)
{
    return [&](IQSqlQueryWrapper& query) { (query.bindValue(values.placeholder, values.value), ...); };
}

/// Runs a statement on a query of its own and calls `then` with the query if it succeeded. The query is gone when this
/// returns. Results of `prepare` aren't looked at anywhere: a bad statement shows at `exec`.
template <class Bind, class Then>
bool Run(IDatabaseFactory& factory, QString const& statement, Bind const& bind, Then const& then)
{
    std::shared_ptr<IQSqlQueryWrapper> const query = factory.CreateQuery();
    static_cast<void>(query->prepare(statement));
    bind(*query);
    if (!query->exec())
        return false;
    then(*query);
    return true;
}

/// Write: runs a statement in a scope of its own, and `then`, with the query, inside that scope if it succeeded.
template <class Bind, class Then>
bool Write(IDatabaseFactory& factory, QString const& statement, Bind const& bind, Then const& then)
{
    sync::database::TransactionalScope const scope; // outlives the query; its end keeps what was written
    return Run(factory, statement, bind, then);
}

template <class Bind>
bool Write(IDatabaseFactory& factory, QString const& statement, Bind const& bind)
{
    return Write(factory, statement, bind, [](IQSqlQueryWrapper&) {});
}

/// Insert: a write that puts the new row's id into `id`, which stays as it was on failure, before it runs `then`.
template <class Bind, class Then>
bool Insert(IDatabaseFactory& factory, QString const& statement, Bind const& bind, int& id, Then const& then)
{
    return Write(factory, statement, bind, [&](IQSqlQueryWrapper& query) {
        id = query.lastInsertId().toInt();
        then();
    });
}

template <class Bind>
bool Insert(IDatabaseFactory& factory, QString const& statement, Bind const& bind, int& id)
{
    return Insert(factory, statement, bind, id, [] {});
}

/// Count: the number in the first column of the first row, or nothing when the statement fails.
template <class Bind>
std::optional<int> Count(IDatabaseFactory& factory, QString const& statement, Bind const& bind)
{
    std::optional<int> count;
    Run(factory, statement, bind, [&](IQSqlQueryWrapper& query) {
        static_cast<void>(query.next());
        count = query.value(0).toInt();
    });
    return count;
}

} // namespace sync::config::store
