#pragma once

#include "config/columns/ColumnList.h"
#include "config/store/StoreOperations.h"

#include <QString>

#include <utility>

namespace sync::config::store {

/// The manager and the target of a `_Populate...` operation.
template <class Operation>
struct PopulateTraits;

template <class OfManager, class Filled>
struct PopulateTraits<void (OfManager::*)(IQSqlQueryWrapper*, Filled&)>
{
    using Manager = OfManager;
    using Target = Filled;
};

template <class OfManager, class Filled>
struct PopulateTraits<void (OfManager::*)(IQSqlQueryWrapper*, Filled&) const>
{
    using Manager = OfManager const;
    using Target = Filled;
};

/// The lookups and listings of a manager, whose operation `Populate` fills a record from the query's row, and
/// `PopulateAll` a list from all rows.
///
/// Each runs one statement and binds the values in the order given. If the statement fails, the store keeps the reason.
template <auto Populate, auto PopulateAll>
class Rows
{
public:
    using Manager = typename PopulateTraits<decltype(Populate)>::Manager;
    using Record = typename PopulateTraits<decltype(Populate)>::Target;
    using List = typename PopulateTraits<decltype(PopulateAll)>::Target;

    /// For one operation; refers to its arguments.
    Rows(IDatabaseFactory& factory, Manager& manager)
        : _factory(factory)
        , _manager(manager)
    {}

    /// Returns the first row, or a default record if there is none or the statement fails. `Populate` is called even if
    /// there is no row, and finds that out from the query.
    template <class... Bound>
    Record First(QString const& statement, Bound const&... values) const
    {
        return _One(statement, Values(values...), [this](IQSqlQueryWrapper& query, Record& record) {
            static_cast<void>(query.next());
            (_manager.*Populate)(&query, record);
        });
    }

    /// The same, but calls `Populate` only if there is a row.
    template <class... Bound>
    Record FirstIfAny(QString const& statement, Bound const&... values) const
    {
        return FirstOr([](Record&) {}, statement, values...);
    }

    /// The same, but calls `miss` with the default record if there is no row. A failed statement does not call it.
    template <class Miss, class... Bound>
    Record FirstOr(Miss const& miss, QString const& statement, Bound const&... values) const
    {
        return _One(statement, Values(values...), [&](IQSqlQueryWrapper& query, Record& record) {
            if (query.next())
                (_manager.*Populate)(&query, record);
            else
                miss(record);
        });
    }

    /// Returns all rows in the statement's order; none if the statement fails.
    template <class... Bound>
    List All(QString const& statement, Bound const&... values) const
    {
        List records;
        Run(_factory, statement, Values(values...), [&](IQSqlQueryWrapper& query) {
            (_manager.*PopulateAll)(&query, records);
        });
        return records;
    }

private:
    template <class Bind, class Read>
    Record _One(QString const& statement, Bind const& bind, Read const& read) const
    {
        Record record;
        Run(_factory, statement, bind, [&](IQSqlQueryWrapper& query) { read(query, record); });
        if constexpr (column::copiesAreWhole<Record>)
            return record;
        else
            return Record(std::as_const(record)); // what copies go without never reaches the caller
    }

    IDatabaseFactory& _factory;
    Manager& _manager;
};

/// Appends a record for each remaining row; the body of every `PopulateAll`.
template <class List, class Populate>
void AppendRows(IQSqlQueryWrapper& query, List& records, Populate const& populate)
{
    using Record = typename List::value_type;
    while (query.next()) {
        if constexpr (column::copiesAreWhole<Record>) {
            records.resize(records.size() + 1); // grows like an append, and copies no record
            populate(records.back());
        }
        else {
            Record record;
            populate(record);
            records.push_back(std::as_const(record));
        }
    }
}

} // namespace sync::config::store
