#pragma once

#include "Style.h"
#include "TableLayout.h"

#include "tools/findings/ValueNames.h"

#include <QIODevice>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>
#include <optional>
#include <utility>

namespace tandryctl {

/// Plain text for people, JSON for programs.
enum class OutputFormat
{
    Plain,
    Json
};

/// How plain text shows times that are stored in UTC. JSON has them in UTC.
enum class Clock
{
    Local,
    Utc
};

/// The form of plain text.
struct PlainForm
{
    Clock clock = Clock::Local;
    /// The number of terminal columns that tables fit into; nothing for any number.
    std::optional<int> width;
    bool hasColours = false;

    Style headingStyle() const { return hasColours ? Style::Heading : Style::None; }
};

/// Whether a column is part of plain listings, or only of JSON and of a record that is shown in full.
enum class Shown
{
    Always,
    InFull
};

/// The value of a column that is not shown: "(hidden)" in plain format, a missing key in JSON.
struct Hidden
{};

/// One column of a record: its name in the store and the function that reads it. Values are texts, integers, dates, and
/// lists and maps of these, or `Hidden`; an invalid value is NULL.
template <class Record>
struct Column
{
    using Value = std::function<QVariant(Record const&)>;

    Column(QString columnName, Shown columnShown, Value columnValue)
        : name(std::move(columnName))
        , shown(columnShown)
        , value(std::move(columnValue))
    {}
    Column(char const* columnName, Shown columnShown, Value columnValue)
        : Column(QLatin1String(columnName), columnShown, std::move(columnValue))
    {}

    /// Returns the value as plain text shows it, with the name that the library has for it.
    QVariant InWords(Record const& record) const
    {
        QVariant const plain = value(record);
        return names == nullptr ? plain : names->InWords(plain.toInt());
    }

    Style StyleOf(Record const& record) const { return style == nullptr ? Style::None : style(value(record)); }

    QString name;
    Shown shown;
    Value value;
    /// The names of an enumeration's values, or of a bit field's bits; null if there are none.
    tandry::findings::ValueNames const* names = nullptr;
    /// What a value stands out for; null if none does.
    Style (*style)(QVariant const& value) = nullptr;
    CellWidth cellWidth = CellWidth::Full;
    /// Whether a table that is too wide may leave the column out, if it is the last one.
    bool mayBeLeftOut = false;
};

template <class Record>
using Columns = QVector<Column<Record>>;

/// An additional line of a record that is shown in full.
struct Extra
{
    char const* name;
    QVariant value;
};

/// A name and a value that are printed on a line of their own.
struct Line
{
    QString name;
    QVariant value;
};

/// Prints a command's results to a device in one of the two formats.
///
/// A plain listing is a table with aligned columns and one row per line, as `TableLayout` lays it out; names are made
/// printable. JSON is an array of objects, one per line, whose keys are the column names in alphabetical order; texts
/// are unchanged.
class Output
{
public:
    /// The device must outlive this object.
    Output(QIODevice& device, OutputFormat format, PlainForm const& plain = {});

    OutputFormat format() const { return _format; }
    PlainForm const& plainForm() const { return _plain; }

    /// Calls its argument with each record.
    template <class Record>
    using ForEach = std::function<void(std::function<void(Record const&)> const&)>;

    /// Prints one row per record; in plain format with the `Shown::Always` columns only. Returns the number of rows. If
    /// there is none, prints nothing.
    ///
    /// Keeps no row, so that memory does not grow with them. Therefore a plain listing goes over the records twice: to
    /// measure the columns, and to print.
    template <class Record>
    qint64 ListEach(Columns<Record> const& columns, ForEach<Record> const& forEach)
    {
        Columns<Record> shown;
        QVector<TableLayout::Column> headings;
        for (Column<Record> const& column : columns) {
            if (_format == OutputFormat::Json || column.shown == Shown::Always) {
                shown.append(column);
                headings.append({column.name, column.cellWidth, 0, column.mayBeLeftOut});
            }
        }
        QVector<QVariant> values(shown.size());
        QVector<Style> styles(shown.size(), Style::None);
        auto const read = [&](Record const& record) {
            for (int i = 0; i < shown.size(); ++i)
                values[i] = _ValueOf(shown.at(i), record);
        };

        _BeginRows(headings);
        if (_format == OutputFormat::Plain)
            forEach([&](Record const& record) {
                read(record);
                _MeasureRow(values);
            });
        forEach([&](Record const& record) {
            read(record);
            if (_plain.hasColours) {
                for (int i = 0; i < shown.size(); ++i)
                    styles[i] = shown.at(i).StyleOf(record);
            }
            _AddRow(values, styles);
        });
        return _EndRows();
    }

    /// The same for records in memory; an empty listing is an empty array in JSON.
    template <class Record, class Range>
    void List(Columns<Record> const& columns, Range const& records)
    {
        qint64 const rows = ListEach<Record>(columns, [&](std::function<void(Record const&)> const& take) {
            for (Record const& record : records)
                take(record);
        });
        if (rows == 0)
            ListNothing();
    }

    /// Returns the names of the columns that the last table has left out because it was too wide.
    QStringList const& leftOut() const { return _leftOut; }
    /// Notes such columns of a table that a command has laid out itself.
    void SetLeftOut(QStringList const& columns) { _leftOut = columns; }

    /// Prints a listing without rows: an empty array in JSON, nothing in plain format.
    void ListNothing();

    /// Prints one record in full; in plain format with one line per column.
    template <class Record>
    void Show(Columns<Record> const& columns, Record const& record, QVector<Extra> const& extras = {})
    {
        QVector<QString> names;
        QVector<QVariant> row;
        for (Column<Record> const& column : columns) {
            names.append(column.name);
            row.append(_ValueOf(column, record));
        }
        for (Extra const& extra : extras) {
            names.append(QLatin1String(extra.name));
            row.append(extra.value);
        }
        _ShowRow(names, row);
    }

    /// Prints the sentence in plain format, or the record that was written or removed in JSON.
    template <class Record>
    void Report(QString const& sentence, Columns<Record> const& columns, Record const& record)
    {
        if (_format == OutputFormat::Json)
            Show(columns, record);
        else
            PrintLine(sentence);
    }

    /// Prints one line, unchanged, in plain format; nothing in JSON.
    void PrintLine(QString const& text);

    /// Prints names and values with the values aligned in plain format; nothing in JSON.
    void PrintLines(QVector<Line> const& lines);

    /// Prints a text, unchanged, in both formats.
    void PrintText(QString const& text);

    /// Writes buffered output to the device. Returns false if this or an earlier write has failed.
    [[nodiscard]] bool Flush();

private:
    template <class Record>
    QVariant _ValueOf(Column<Record> const& column, Record const& record) const
    {
        return _format == OutputFormat::Json ? column.value(record) : column.InWords(record);
    }

    void _BeginRows(QVector<TableLayout::Column> const& columns);
    void _MeasureRow(QVector<QVariant> const& values);
    void _AddRow(QVector<QVariant> const& values, QVector<Style> const& styles);
    TableRow _TableRow(QVector<QVariant> const& values, QVector<Style> const& styles = {}) const;
    qint64 _EndRows();
    void _ShowRow(QVector<QString> const& names, QVector<QVariant> const& values);
    void _SetKeys(QVector<QString> const& names);
    void _WriteObject(QVector<QVariant> const& values);
    void _Write(QByteArray const& bytes);

    /// A column's key in an object of JSON.
    struct Key
    {
        int column;
        /// With quotation marks and the colon.
        QByteArray text;
    };

    QIODevice& _device;
    OutputFormat const _format;
    PlainForm const _plain;
    TableLayout _layout;
    QVector<Key> _keys;
    qint64 _rows = 0;
    QStringList _leftOut;
    bool _failed = false;
    QByteArray _buffer;
};

/// Returns a value as one printable line; an empty text for NULL. Times are in ISO 8601 with milliseconds. Those in UTC
/// end in a Z, or are shown in local time with the difference from UTC; those in local time are clock readings, and
/// have neither.
QString CellText(QVariant const& value, Clock clock);

} // namespace tandryctl

Q_DECLARE_METATYPE(tandryctl::Hidden)
