#pragma once

#include "TandryConfigurationExport.h"
#include "ValueNames.h"

#include <QString>
#include <QVariant>
#include <QVector>

#include <utility>

namespace sync::config {

class AuthenticationConfiguration;
class FileConfiguration;
class FolderConfiguration;
class ProductConfiguration;
class ScheduleEntry;
class ServerConfiguration;

/// The kind of value in a column: the type that `RecordColumn::Get` returns, and the types that `Set` takes.
enum class ColumnKind
{
    /// A 32-bit number, such as a row id. `Get`: `int`. `Set`: any whole number in range, or its decimal text.
    Integer,
    /// A 64-bit number. `Get`: `qlonglong`. `Set`: as for `Integer`.
    LongInteger,
    /// A value of an enumeration, which may be one without a name. `Get` and `Set`: as for `Integer`.
    Enumeration,
    /// A set of bits, some of which may have no name. `Get` and `Set`: as for `Integer`.
    BitField,
    /// `Get`: `QString`. `Set`: a `QString`, or an invalid value for a null text.
    Text,
    /// `Get`: `QDateTime`, invalid if there is no time. `Set`: a `QDateTime` or its ISO 8601 text; an invalid value and
    /// an empty text mean no time. Only the clock reading counts: the record gets the time as a store would return it,
    /// in UTC for folders and files and in local time for schedules.
    Time,
    /// Name-value properties. `Get`: a `QVariantMap` of texts. `Set`: the same, or an invalid value for none. Keys must
    /// be XML names.
    Properties,
    /// The links of a file and their date. `Get`: a `QVariantMap` with "fileDate" (`QDateTime`) and "fileLinks" (a
    /// `QVariantList` of maps with "fileId", "path", "refId" and "serverFileId"). `Set`: the same, where missing
    /// entries get their defaults, or an invalid value for neither links nor date.
    Links,
};

/// A column of a record's table, with access to its value in a record.
///
/// Accesses the record's member directly, and not through accessors that return something else: `Get` returns the
/// server's id for a product's "serverId", and an empty text for a server's "alias" where `getAlias` derives one. Works
/// for records with and without a row, and does not access a store.
///
/// A value that any thread may use. The record belongs to the caller.
template <class Record>
class RecordColumn
{
public:
    /// Reads the column's value from a record.
    using Getter = QVariant (*)(Record const& record);
    /// Writes a value to a record; returns false and leaves the record unchanged if the column does not take it.
    using Setter = bool (*)(Record& record, QVariant const& value);

    /// The results of the functions of the same names.
    struct Traits
    {
        bool isReadOnly = false; ///< See `isReadOnly()`.
        bool isReceived = true;  ///< See `isReceived()`.
        bool isSecret = false;   ///< See `isSecret()`.
        ValueNames valueNames;   ///< See `valueNames()`.
    };

    /// For the library, which creates the columns of each record.
    RecordColumn(QString name, ColumnKind kind, Traits traits, Getter get, Setter set)
        : _name(std::move(name))
        , _kind(kind)
        , _traits(traits)
        , _get(get)
        , _set(set)
    {}

    /// The column's name as spelled in the table. Stores ignore the case of names.
    QString const& name() const { return _name; }
    /// The kind of value, which says what `Get` returns and what `Set` takes.
    ColumnKind kind() const { return _kind; }
    /// Whether `Set` always fails: for "id", which the store assigns, and for the account's "encryptedPassword".
    bool isReadOnly() const { return _traits.isReadOnly; }
    /// Whether a record that a manager returns has the row's value. A product's properties and an account's password
    /// are never received, so `Get` does not return the row's value.
    bool isReceived() const { return _traits.isReceived; }
    /// Whether the value is a secret, which must not be shown or logged.
    bool isSecret() const { return _traits.isSecret; }
    /// The names of the values of an enumeration or a bit field. Empty for other kinds, and if the client defines the
    /// meaning of all values.
    ValueNames const& valueNames() const { return _traits.valueNames; }

    /// Returns the record's value in the type of the column's kind; an invalid value for the account's
    /// "encryptedPassword".
    QVariant Get(Record const& record) const { return _get(record); }
    /// Sets the record's value. Returns false and leaves the record unchanged if the column is read-only or its kind
    /// does not take the value. Setting "syncStatus" counts as a change of it, as with `setSyncStatus`.
    [[nodiscard]] bool Set(Record& record, QVariant const& value) const
    {
        return !_traits.isReadOnly && _set(record, value);
    }

private:
    QString _name;
    ColumnKind _kind;
    Traits _traits;
    Getter _get;
    Setter _set;
};

/// Returns the columns of a kind of record, in table order. Created at the first call and kept; any thread may call
/// this.
template <class Record>
QVector<RecordColumn<Record>> const& RecordColumns();

template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<AuthenticationConfiguration>> const& RecordColumns();
template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<FileConfiguration>> const& RecordColumns();
template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<FolderConfiguration>> const& RecordColumns();
template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<ProductConfiguration>> const& RecordColumns();
template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<ScheduleEntry>> const& RecordColumns();
template <>
TANDRY_CONFIGURATION_EXPORT QVector<RecordColumn<ServerConfiguration>> const& RecordColumns();

/// Returns the column with this name, ignoring case; null if the table has none.
template <class Record>
RecordColumn<Record> const* FindRecordColumn(QString const& name)
{
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        if (column.name().compare(name, Qt::CaseInsensitive) == 0)
            return &column;
    }
    return nullptr;
}

} // namespace sync::config
