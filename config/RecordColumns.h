#pragma once

#include "config/TandryConfigurationExport.h"

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
    /// A number of 32 bits, row ids among them. `Get`: `int`. `Set`: any whole number in range, or its decimal text.
    Integer,
    /// A number of 64 bits. `Get`: `qlonglong`. `Set`: as for `Integer`.
    LongInteger,
    /// A value of an enumeration, which may be none of its names. `Get` and `Set`: as for `Integer`.
    Enumeration,
    /// A set of bits, which may hold bits without a name. `Get` and `Set`: as for `Integer`.
    BitField,
    /// `Get`: `QString`. `Set`: a `QString`, or an invalid value for a null text.
    Text,
    /// `Get`: `QDateTime`, invalid where there is no time. `Set`: a `QDateTime` or its ISO 8601 text, of which the
    /// clock reading counts: the record then holds the time as it comes back from a store, which is in UTC for folders
    /// and files and in local time for schedules. An invalid value and an empty text stand for no time.
    Time,
    /// Open-ended properties. `Get`: a `QVariantMap` of texts. `Set`: the same, or an invalid value for none. Keys must
    /// be XML names.
    Properties,
    /// The links of a file, and the date that travels with them. `Get`: a `QVariantMap` with "fileDate" (`QDateTime`)
    /// and "fileLinks" (a `QVariantList` of maps with "fileId", "path", "refId" and "serverFileId"). `Set`: the same,
    /// where what is left out takes its default, or an invalid value for neither links nor date.
    Links,
};

/// A column of a record's table, and the way to its value in a record.
///
/// It goes to the record's own member, past accessors that answer with something else: `Get` of a product's "serverId"
/// gives the server, and that of a server's "alias" an empty text where `getAlias` derives one. It works for records
/// with and without a row and makes no call on a store.
///
/// A value that any thread may use; the record belongs to whoever calls.
template <class Record>
class RecordColumn
{
public:
    using Getter = QVariant (*)(Record const& record);
    using Setter = bool (*)(Record& record, QVariant const& value);

    struct Traits
    {
        bool isReadOnly = false;
        bool isReceived = true;
        bool isSecret = false;
    };

    /// For the library, which makes the columns of each record.
    RecordColumn(QString name, ColumnKind kind, Traits traits, Getter get, Setter set)
        : _name(std::move(name))
        , _kind(kind)
        , _traits(traits)
        , _get(get)
        , _set(set)
    {}

    /// The column's name as the table spells it. Stores match names in any case.
    QString const& name() const { return _name; }
    ColumnKind kind() const { return _kind; }
    /// Whether `Set` always fails: for "id", which the store gives, and for the account's "encryptedPassword".
    bool isReadOnly() const { return _traits.isReadOnly; }
    /// Whether a record that a manager returns carries what the row holds. A product's properties and an account's
    /// password are never received: `Get` then says nothing about the row.
    bool isReceived() const { return _traits.isReceived; }
    /// Whether the value is a secret, not to be shown or logged.
    bool isSecret() const { return _traits.isSecret; }

    /// The record's value in the type of the column's kind; an invalid value for the account's "encryptedPassword".
    QVariant Get(Record const& record) const { return _get(record); }
    /// Gives the record a value. Returns false, and leaves the record as it was, when the column is read-only or the
    /// value isn't one that its kind takes. Setting "syncStatus" counts as a change of it, as `setSyncStatus` does.
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

/// The columns of a kind of record, in table order. Made at the first call and kept; any thread may call.
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

/// The column of this name, in any case; null when the table has none.
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
