#pragma once

#include "config/FileLink.h"
#include "config/RecordColumns.h"
#include "config/ValueNames.h"
#include "config/columns/ColumnValues.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <optional>
#include <utility>

namespace sync::config {

/// The columns of a record's table: `TableColumns<Record>::list` is a tuple of the types below, in table order. It
/// is a friend of the record, so the list can name private members.
template <class Record>
struct TableColumns;

/// The types of columns. Each knows its members at compile time and has these static operations:
///
/// - `Bind(to, placeholder, record, documents)` calls `to.Bind(placeholder, value)` or `to.BindNull(placeholder)`;
/// - `Read(record, from, position, documents)` takes the value from `Int`, `Long`, `Text` or `Time` of `from`;
/// - `Copy(to, from)` copies the members of the column;
/// - `Get` and `Set` are those of `RecordColumn`.
///
/// `documents` turns properties and links into the texts of their columns and back.
namespace column {

enum Marks : unsigned
{
    NoMarks = 0,
    /// The store assigns the value: no INSERT contains the column, and clients cannot set it.
    GivenByStore = 1,
    /// Copies of a record, and records that a manager returns, do not have the value.
    NotCopied = 2,
    /// An UPDATE leaves the placeholder unbound, which makes the column NULL.
    NotUpdated = 4,
    /// Not to be shown or logged.
    Secret = 8,
};

/// A column by its name in the table.
struct Named
{
    constexpr explicit Named(char const* columnName, unsigned columnMarks = NoMarks)
        : name(columnName)
        , marks(columnMarks)
    {}
    /// A column with values that have names.
    template <std::size_t Count>
    constexpr Named(char const* columnName, NamedValue const (&values)[Count])
        : name(columnName)
        , firstValue(values)
        , endOfValues(values + Count)
    {}

    char const* name;
    unsigned marks = NoMarks;
    NamedValue const* firstValue = nullptr;
    NamedValue const* endOfValues = nullptr;
};

template <class Record, class Value>
Record RecordOf(Value Record::*);
template <class Record, class Value>
Value ValueOf(Value Record::*);

/// Numbers and enumerations of 32 bits.
template <ColumnKind Kind>
struct NumberForm
{
    static constexpr ColumnKind kind = Kind;

    template <class Value, class Documents>
    static int ToBound(Value value, Documents&)
    {
        return static_cast<int>(value);
    }
    template <class Value, class From, class Documents>
    static void Read(Value& value, From& from, int position, Documents&)
    {
        value = static_cast<Value>(from.Int(position));
    }
    template <class Value>
    static QVariant ToVariant(Value value)
    {
        return static_cast<int>(value);
    }
    template <class Value>
    static std::optional<Value> FromVariant(QVariant const& variant)
    {
        std::optional<int> const number = ToInteger(variant);
        return number ? std::optional(static_cast<Value>(*number)) : std::nullopt;
    }
};

struct LongIntegerForm
{
    static constexpr ColumnKind kind = ColumnKind::LongInteger;

    template <class Documents>
    static qint64 ToBound(qint64 value, Documents&)
    {
        return value;
    }
    template <class From, class Documents>
    static void Read(qint64& value, From& from, int position, Documents&)
    {
        value = from.Long(position);
    }
    static QVariant ToVariant(qint64 value) { return value; }
    template <class>
    static std::optional<qint64> FromVariant(QVariant const& variant)
    {
        return ToLongInteger(variant);
    }
};

struct TextForm
{
    static constexpr ColumnKind kind = ColumnKind::Text;

    template <class Documents>
    static QString const& ToBound(QString const& value, Documents&)
    {
        return value;
    }
    template <class From, class Documents>
    static void Read(QString& value, From& from, int position, Documents&)
    {
        value = from.Text(position);
    }
    static QVariant ToVariant(QString const& value) { return value; }
    template <class>
    static std::optional<QString> FromVariant(QVariant const& variant)
    {
        return ToText(variant);
    }
};

/// A store contains only the clock reading. A time that is read has the same reading in this time spec.
template <Qt::TimeSpec TimeSpec>
struct TimeForm
{
    static constexpr ColumnKind kind = ColumnKind::Time;

    template <class Documents>
    static QDateTime const& ToBound(QDateTime const& value, Documents&)
    {
        return value;
    }
    template <class From, class Documents>
    static void Read(QDateTime& value, From& from, int position, Documents&)
    {
        value = from.Time(position, TimeSpec);
    }
    static QVariant ToVariant(QDateTime const& value) { return value; }
    template <class>
    static std::optional<QDateTime> FromVariant(QVariant const& variant)
    {
        return ToTime(variant, TimeSpec);
    }
};

struct PropertiesForm
{
    using Map = QMap<QString, QString>;
    static constexpr ColumnKind kind = ColumnKind::Properties;

    template <class Documents>
    static QString ToBound(Map const& value, Documents& documents)
    {
        return documents.Write(value);
    }
    template <class From, class Documents>
    static void Read(Map& value, From& from, int position, Documents& documents)
    {
        value = documents.Read(from.Text(position));
    }
    static QVariant ToVariant(Map const& value) { return FromProperties(value); }
    template <class>
    static std::optional<Map> FromVariant(QVariant const& variant)
    {
        return ToProperties(variant);
    }
};

/// A column for one member.
template <auto Member, class Form>
struct Single : Named
{
    using Named::Named;
    using Record = decltype(RecordOf(Member));
    using Value = decltype(ValueOf(Member));
    static constexpr ColumnKind kind = Form::kind;
    static constexpr bool isStored = true;

    template <class To, class Documents>
    static void Bind(To& to, QString const& placeholder, Record const& record, Documents& documents)
    {
        to.Bind(placeholder, Form::ToBound(record.*Member, documents));
    }
    template <class From, class Documents>
    static void Read(Record& record, From& from, int position, Documents& documents)
    {
        Form::Read(record.*Member, from, position, documents);
    }
    static void Copy(Record& to, Record const& from) { to.*Member = from.*Member; }
    static QVariant Get(Record const& record) { return Form::ToVariant(record.*Member); }
    static bool Set(Record& record, QVariant const& value)
    {
        std::optional<Value> taken = Form::template FromVariant<Value>(value);
        if (taken)
            record.*Member = std::move(*taken);
        return taken.has_value();
    }
};

template <auto Member>
using Integer = Single<Member, NumberForm<ColumnKind::Integer>>;
template <auto Member>
using LongInteger = Single<Member, LongIntegerForm>;
template <auto Member>
using Enumeration = Single<Member, NumberForm<ColumnKind::Enumeration>>;
template <auto Member>
using BitField = Single<Member, NumberForm<ColumnKind::BitField>>;
template <auto Member>
using Text = Single<Member, TextForm>;
template <auto Member>
using UtcTime = Single<Member, TimeForm<Qt::UTC>>;
template <auto Member>
using LocalTime = Single<Member, TimeForm<Qt::LocalTime>>;
template <auto Member>
using Properties = Single<Member, PropertiesForm>;

/// An enumeration with a flag that tells whether it was set since the record was read.
template <auto Member, auto Changed>
struct Status : Enumeration<Member>
{
    using Enumeration<Member>::Enumeration;
    using typename Enumeration<Member>::Record;

    template <class From, class Documents>
    static void Read(Record& record, From& from, int position, Documents& documents)
    {
        Enumeration<Member>::Read(record, from, position, documents);
        record.*Changed = false;
    }
    static void Copy(Record& to, Record const& from)
    {
        Enumeration<Member>::Copy(to, from);
        to.*Changed = from.*Changed;
    }
    static bool Set(Record& record, QVariant const& value)
    {
        bool const taken = Enumeration<Member>::Set(record, value);
        record.*Changed = record.*Changed || taken;
        return taken;
    }
};

/// A document with a list of links and its date.
template <auto List, auto Date>
struct Links : Named
{
    using Named::Named;
    using Record = decltype(RecordOf(List));
    static constexpr ColumnKind kind = ColumnKind::Links;
    static constexpr bool isStored = true;

    template <class To, class BoundRecord, class Documents>
    static void Bind(To& to, QString const& placeholder, BoundRecord& record, Documents& documents)
    {
        to.Bind(placeholder, documents.WriteLinks(record.*List, record.*Date));
    }
    template <class From, class Documents>
    static void Read(Record& record, From& from, int position, Documents& documents)
    {
        record.*List = documents.ReadLinks(from.Text(position), record.*Date);
    }
    static void Copy(Record& to, Record const& from)
    {
        to.*List = from.*List;
        to.*Date = from.*Date;
    }
    static QVariant Get(Record const& record) { return FromLinks(record.*List, record.*Date); }
    static bool Set(Record& record, QVariant const& value) { return ToLinks(value, record.*List, record.*Date); }
};

/// A column that is always written as NULL and never read. The member stays in memory, and reading a row clears it.
template <auto Member>
struct NeverStored : Named
{
    using Named::Named;
    using Record = decltype(RecordOf(Member));
    static constexpr ColumnKind kind = ColumnKind::Text;
    static constexpr bool isStored = false;

    template <class To, class Documents>
    static void Bind(To& to, QString const& placeholder, Record const&, Documents&)
    {
        to.BindNull(placeholder);
    }
    template <class From, class Documents>
    static void Read(Record& record, From&, int, Documents&)
    {
        (record.*Member).clear();
    }
    static void Copy(Record& to, Record const& from) { to.*Member = from.*Member; }
    static QVariant Get(Record const&) { return {}; }
    static bool Set(Record&, QVariant const&) { return false; }
};

} // namespace column
} // namespace sync::config
