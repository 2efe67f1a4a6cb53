#include "Output.h"

#include "Padding.h"
#include "Text.h"

#include "tools/findings/JsonText.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>

namespace tandryctl {

namespace {

constexpr int BufferBytes = 64 * 1024;

QString TimeText(QDateTime time, Clock clock)
{
    if (clock == Clock::Local && time.timeSpec() == Qt::UTC) {
        QDateTime const local = time.toLocalTime();
        time = local.toOffsetFromUtc(local.offsetFromUtc());
    }
    return time.toString(Qt::ISODateWithMs);
}

bool IsHidden(QVariant const& value)
{
    return value.userType() == qMetaTypeId<Hidden>();
}

bool IsNumber(QVariant const& value)
{
    return value.userType() == QMetaType::Int || value.userType() == QMetaType::LongLong;
}

bool IsTime(QVariant const& value)
{
    return value.userType() == QMetaType::QDateTime;
}

} // namespace

QString CellText(QVariant const& value, Clock clock)
{
    if (IsHidden(value))
        return QStringLiteral("(hidden)");
    switch (value.userType()) {
    case QMetaType::QDateTime:
        return TimeText(value.toDateTime(), clock);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList:
        return Printable(QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact)));
    default:
        return Printable(value.toString());
    }
}

Output::Output(QIODevice& device, OutputFormat format, PlainForm const& plain)
    : _device(device)
    , _format(format)
    , _plain(plain)
    , _layout({})
{}

void Output::PrintLine(QString const& text)
{
    if (_format == OutputFormat::Plain)
        _Write(text.toUtf8() + '\n');
}

void Output::PrintLines(QVector<Line> const& lines)
{
    int width = 0;
    for (Line const& line : lines)
        width = std::max(width, DisplayWidth(line.name));
    for (Line const& line : lines)
        PrintLine(WithoutTrailingBlanks(Padded(line.name, width, false) + QStringLiteral("  ") +
                                        CellText(line.value, _plain.clock)));
}

void Output::PrintText(QString const& text)
{
    _Write(text.toUtf8());
}

void Output::ListNothing()
{
    if (_format == OutputFormat::Json)
        _Write("[]\n");
}

bool Output::Flush()
{
    if (!_buffer.isEmpty() && _device.write(_buffer) != _buffer.size())
        _failed = true;
    _buffer.clear();
    return !_failed;
}

void Output::_Write(QByteArray const& bytes)
{
    _buffer += bytes;
    if (_buffer.size() >= BufferBytes)
        static_cast<void>(Flush()); // the last call reports a failure
}

void Output::_BeginRows(QVector<TableLayout::Column> const& columns)
{
    _rows = 0;
    if (_format == OutputFormat::Plain) {
        _layout = TableLayout(columns, _plain.width);
        return;
    }
    QVector<QString> names;
    for (TableLayout::Column const& column : columns)
        names.append(column.name);
    _SetKeys(names);
}

void Output::_MeasureRow(QVector<QVariant> const& values)
{
    _layout.Measure(_TableRow(values));
}

void Output::_AddRow(QVector<QVariant> const& values, QVector<Style> const& styles)
{
    bool const isFirst = _rows++ == 0;
    if (_format == OutputFormat::Json) {
        _Write(isFirst ? "[\n" : ",\n");
        _WriteObject(values);
        return;
    }
    if (isFirst) {
        _layout.Fit();
        _leftOut = _layout.LeftOut();
        PrintLine(_layout.Header(_plain.headingStyle()));
    }
    PrintLine(_layout.Line(_TableRow(values, styles)));
}

TableRow Output::_TableRow(QVector<QVariant> const& values, QVector<Style> const& styles) const
{
    TableRow row;
    row.reserve(values.size());
    for (int i = 0; i < values.size(); ++i)
        row.append({CellText(values.at(i), _plain.clock),
                    IsNumber(values.at(i)),
                    styles.value(i, Style::None),
                    IsTime(values.at(i))});
    return row;
}

qint64 Output::_EndRows()
{
    if (_format == OutputFormat::Json && _rows > 0)
        _Write("\n]\n");
    return _rows;
}

void Output::_ShowRow(QVector<QString> const& names, QVector<QVariant> const& values)
{
    if (_format == OutputFormat::Json) {
        _SetKeys(names);
        _Write("[\n");
        _WriteObject(values);
        _Write("\n]\n");
        return;
    }
    QVector<Line> lines;
    for (int i = 0; i < names.size(); ++i)
        lines.append({names.at(i), values.at(i)});
    PrintLines(lines);
}

void Output::_SetKeys(QVector<QString> const& names)
{
    _keys.clear();
    for (int column = 0; column < names.size(); ++column) {
        Key key{column, {}};
        tandry::findings::AppendJsonString(key.text, names.at(column));
        key.text += ':';
        _keys.append(key);
    }
    std::sort(_keys.begin(), _keys.end(), [&](Key const& left, Key const& right) {
        return names.at(left.column) < names.at(right.column);
    });
}

void Output::_WriteObject(QVector<QVariant> const& values)
{
    char separator = '{';
    for (Key const& key : qAsConst(_keys)) {
        QVariant const& value = values.at(key.column);
        if (IsHidden(value))
            continue;
        _buffer += separator;
        separator = ',';
        _buffer += key.text;
        tandry::findings::AppendJsonValue(_buffer, value);
    }
    _Write(separator == '{' ? "{}" : "}");
}

} // namespace tandryctl
