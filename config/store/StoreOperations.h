#pragma once

#include "config/store/Placeholders.h"
#include "database/TransactionalScope.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QString>

#include <memory>
#include <optional>

/// The ways in which managers access their store: write, insert and count here, look-ups and listings in `Rows.h`.
///
/// `bind` is called with the prepared query; `Values` makes one from placeholders and values. If a
/// statement fails, the store keeps the reason.
namespace sync::config::store {

using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

/// Returns a `bind` for these values in this order. It refers to its arguments, so pass it to the operation directly.
template <class... Bound>
auto Values(Bound const&... values)
{
    return [&](IQSqlQueryWrapper& query) { (query.bindValue(values.placeholder, values.value), ...); };
}

/// Runs a statement on a query of its own and, if it succeeds, calls `then` with the query, which is destroyed before
/// this returns. The result of `prepare` is ignored: a bad statement fails at `exec`.
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

/// Write: runs a statement in a scope of its own and, if it succeeds, calls `then` with the query inside that scope.
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

/// Insert: a write that sets `id` to that of the new row before it calls `then`. On failure `id` is unchanged.
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

/// Count: returns the number in the first column of the first row, or nothing if the statement fails.
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
