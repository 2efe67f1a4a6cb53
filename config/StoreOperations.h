#pragma once

#include "config/Placeholders.h"
#include "database/TransactionalScope.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <utility>

/// The five ways in which the managers talk to their store: one row, list, insert, write, count.
///
/// `bind` is called with the prepared query; `Values` makes one from placeholders and values. `populate` fills a record
/// from the query's row and leaves it alone when there is none. A failed statement shows in the result only: the store
/// keeps the reason.
namespace sync::config::store {

using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

/// A `bind` that binds these values in this order. Refers to its arguments, so it goes straight into the operation that
/// it is made for.
template <class... Bound>
auto Values(Bound const&... values)
{
    return [&](IQSqlQueryWrapper& query) { BindAll(query, values...); };
}

/// What `toInt` gives, at once for the kind of number that stores give back.
inline int Int(QVariant const& value)
{
    return value.userType() == QMetaType::LongLong ? static_cast<int>(*static_cast<qlonglong const*>(value.constData()))
                                                   : value.toInt();
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

/// What `read` makes of a query's first row, or a default-constructed record when the statement fails.
template <class Record, class Bind, class Read>
Record FindOneBy(IDatabaseFactory& factory, QString const& statement, Bind const& bind, Read const& read)
{
    Record record;
    Run(factory, statement, bind, [&](IQSqlQueryWrapper& query) { read(query, record); });
    return Record(std::as_const(record)); // a copy, so that a member which isn't copied never reaches the caller
}

/// One row: the first one that matches, or a default-constructed record when none does or the statement fails.
template <class Record, class Bind, class Populate>
Record FindOne(IDatabaseFactory& factory, QString const& statement, Bind const& bind, Populate const& populate)
{
    return FindOneBy<Record>(factory, statement, bind, [&](IQSqlQueryWrapper& query, Record& record) {
        static_cast<void>(query.next()); // populating asks the query by itself
        populate(&query, record);
    });
}

/// One row, for a `populate` that must not be asked unless `next` found one. When none matches, `miss` gets the default
/// record instead.
template <class Record, class Bind, class Populate, class Miss>
Record FindOneIfAny(
    IDatabaseFactory& factory, QString const& statement, Bind const& bind, Populate const& populate, Miss const& miss)
{
    return FindOneBy<Record>(factory, statement, bind, [&](IQSqlQueryWrapper& query, Record& record) {
        if (query.next())
            populate(&query, record);
        else
            miss(record);
    });
}

template <class Record, class Bind, class Populate>
Record FindOneIfAny(IDatabaseFactory& factory, QString const& statement, Bind const& bind, Populate const& populate)
{
    return FindOneIfAny<Record>(factory, statement, bind, populate, [](Record&) {});
}

/// List: `populate` takes all rows into the container. Empty when the statement fails.
template <class List, class Bind, class PopulateAll>
List FindAll(IDatabaseFactory& factory, QString const& statement, Bind const& bind, PopulateAll const& populateAll)
{
    List records;
    Run(factory, statement, bind, [&](IQSqlQueryWrapper& query) { populateAll(&query, records); });
    return records;
}

/// Appends a record for each row that is left; the body of every `populateAll`.
template <class List, class Populate>
void AppendRows(IQSqlQueryWrapper* query, List& records, Populate const& populate)
{
    while (query->next()) {
        typename List::value_type record;
        populate(query, record);
        records.push_back(std::as_const(record));
    }
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
