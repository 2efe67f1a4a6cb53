#pragma once

#include "config/columns/Column.h"

#include <QString>

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

/// Goes over the columns of a record in table order. The columns are known at compile time, so the code is the same as
/// if it were written out column by column.
namespace sync::config::column {

template <class Record>
inline constexpr std::size_t count = std::tuple_size_v<decltype(TableColumns<Record>::list)>;

template <class Record, std::size_t Position>
using At = std::tuple_element_t<Position, std::remove_const_t<decltype(TableColumns<Record>::list)>>;

template <class Record, std::size_t Position>
inline constexpr unsigned marksAt = std::get<Position>(TableColumns<Record>::list).marks;

template <class Record>
using Positions = std::make_index_sequence<count<Record>>;

template <class Record, std::size_t... Position>
std::array<QString, count<Record>> MakePlaceholders(std::index_sequence<Position...>)
{
    return {(QLatin1Char(':') + QLatin1String(std::get<Position>(TableColumns<Record>::list).name))...};
}

/// The placeholders of the columns, by their positions.
template <class Record>
inline std::array<QString, count<Record>> const placeholders = MakePlaceholders<Record>(Positions<Record>());

/// The statements that write a whole record.
enum class Writing
{
    /// Binds all columns except "id".
    Insert,
    /// Binds "id" and then all columns that an update may change.
    Update,
};

constexpr bool IsBoundBy(Writing writing, unsigned marks)
{
    return (marks & (writing == Writing::Insert ? GivenByStore : NotUpdated)) == 0;
}

template <Writing How, class Record, std::size_t Position, class BoundRecord, class To, class Documents>
inline void BindOne(To& to, BoundRecord& record, Documents& documents)
{
    if constexpr (IsBoundBy(How, marksAt<Record, Position>))
        At<Record, Position>::Bind(to, placeholders<Record>[Position], record, documents);
}

template <Writing How, class To, class BoundRecord, class Documents, std::size_t... Position>
void BindEach(To& to, BoundRecord& record, Documents& documents, std::index_sequence<Position...>)
{
    (BindOne<How, std::remove_const_t<BoundRecord>, Position>(to, record, documents), ...);
}

/// Binds the placeholders of an INSERT or UPDATE of a whole record.
template <Writing How, class To, class BoundRecord, class Documents>
void BindAll(To& to, BoundRecord& record, Documents& documents)
{
    BindEach<How>(to, record, documents, Positions<std::remove_const_t<BoundRecord>>());
}

template <class Record, class From, class Documents, std::size_t... Position>
void ReadEach(Record& record, From& from, Documents& documents, std::index_sequence<Position...>)
{
    (At<Record, Position>::Read(record, from, static_cast<int>(Position), documents), ...);
}

/// Fills a record from a row whose columns are in table order.
template <class Record, class From, class Documents>
void ReadAll(Record& record, From& from, Documents& documents)
{
    ReadEach(record, from, documents, Positions<Record>());
}

template <class Record, std::size_t Position>
inline void CopyOne(Record& to, Record const& from)
{
    if constexpr ((marksAt<Record, Position> & NotCopied) == 0)
        At<Record, Position>::Copy(to, from);
}

template <class Record, std::size_t... Position>
void CopyEach(Record& to, Record const& from, std::index_sequence<Position...>)
{
    (CopyOne<Record, Position>(to, from), ...);
}

/// Copies the members of all columns except those marked `NotCopied`.
template <class Record>
void CopyAll(Record& to, Record const& from)
{
    CopyEach(to, from, Positions<Record>());
}

template <class Record, std::size_t... Position>
constexpr bool AreAllCopied(std::index_sequence<Position...>)
{
    return ((marksAt<Record, Position> & NotCopied) | ...) == 0;
}

/// Whether a copy of a record has the members of all columns.
template <class Record>
inline constexpr bool copiesAreWhole = AreAllCopied<Record>(Positions<Record>());

} // namespace sync::config::column
