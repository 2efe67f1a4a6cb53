#pragma once

#include <QIODevice>
#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>

namespace tandryctl {

/// Plain for people, JSON for programs.
enum class Form
{
    Plain,
    Json
};

/// Whether a column stands in plain listings too, or only in JSON and where one record is shown whole.
enum class Shown
{
    Always,
    InFull
};

/// One column of a record: its name in the store, and how a record answers for it. Texts, integers, dates, lists and
/// maps of these; an invalid value is NULL.
template <class Record>
struct Column
{
    char const* name;
    Shown shown;
    std::function<QVariant(Record const&)> value;
};

template <class Record>
using Columns = QVector<Column<Record>>;

/// One more line of a record that is shown whole.
struct Extra
{
    char const* name;
    QVariant value;
};

/// What a command prints to standard output, in one of the two forms.
///
/// A plain listing is a table whose columns stand below each other, one row a line, with names made printable. JSON is
/// an array of objects, one a line, whose keys are the column names; it holds every text as it is.
class Output
{
public:
    /// The device must outlive the object.
    Output(QIODevice& device, Form form);

    Form form() const { return _form; }

    /// One row for each record; in plain form only the columns that are always shown.
    template <class Record, class Range>
    void List(Columns<Record> const& columns, Range const& records)
    {
        Columns<Record> shown;
        for (Column<Record> const& column : columns) {
            if (_form == Form::Json || column.shown == Shown::Always)
                shown.append(column);
        }
        QVector<QString> names;
        for (Column<Record> const& column : shown)
            names.append(QLatin1String(column.name));

        _BeginRows(names);
        for (Record const& record : records) {
            QVector<QVariant> row;
            row.reserve(shown.size());
            for (Column<Record> const& column : shown)
                row.append(column.value(record));
            _Row(row);
        }
        _EndRows();
    }

    /// Everything about one record: in plain form a line for each column.
    template <class Record>
    void Show(Columns<Record> const& columns, Record const& record, QVector<Extra> const& extras = {})
    {
        QVector<QString> names;
        QVector<QVariant> row;
        for (Column<Record> const& column : columns) {
            names.append(QLatin1String(column.name));
            row.append(column.value(record));
        }
        for (Extra const& extra : extras) {
            names.append(QLatin1String(extra.name));
            row.append(extra.value);
        }
        _ShowRow(names, row);
    }

    /// A record that a command wrote or removed: the sentence in plain form, the record in JSON.
    template <class Record>
    void Report(QString const& sentence, Columns<Record> const& columns, Record const& record)
    {
        if (_form == Form::Json)
            Show(columns, record);
        else
            Line(sentence);
    }

    /// One line of plain output; nothing in JSON. The text goes out as it is.
    void Line(QString const& text);

    /// Hands everything over; false when something could not be written.
    [[nodiscard]] bool Finish();

private:
    void _BeginRows(QVector<QString> const& names);
    void _Row(QVector<QVariant> const& values);
    void _EndRows();
    void _ShowRow(QVector<QString> const& names, QVector<QVariant> const& values);
    void _WriteObject(QVector<QVariant> const& values);
    void _Write(QByteArray const& bytes);

    QIODevice& _device;
    Form const _form;
    QVector<QString> _names;
    QVector<QVector<QString>> _cells;
    QVector<bool> _numeric;
    bool _firstObject = true;
    bool _failed = false;
    QByteArray _buffer;
};

/// A value as one printable text: dates as ISO 8601 with milliseconds, UTC ones with a Z; nothing for NULL.
QString CellText(QVariant const& value);

} // namespace tandryctl
