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

Output::Output(QIODevice& device, OutputFormat format, Clock clock)
    : _device(device)
    , _format(format)
    , _clock(clock)
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
                                        CellText(line.value, _clock)));
}

void Output::PrintText(QString const& text)
{
    _Write(text.toUtf8());
}

void Output::ListNothing()
{
    _BeginRows({});
    _EndRows();
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

void Output::_BeginRows(QVector<QString> const& names)
{
    _names = names;
    _cells.clear();
    _numeric = QVector<bool>(names.size(), true);
    _firstObject = true;
    if (_format == OutputFormat::Json) {
        _SetKeys();
        _Write("[");
    }
}

void Output::_AddRow(QVector<QVariant> const& values)
{
    if (_format == OutputFormat::Json) {
        _WriteObject(values);
        return;
    }
    QVector<QString> cells;
    cells.reserve(values.size());
    for (int column = 0; column < values.size(); ++column) {
        cells.append(CellText(values.at(column), _clock));
        _numeric[column] = _numeric.at(column) && IsNumber(values.at(column));
    }
    _cells.append(cells);
}

void Output::_EndRows()
{
    if (_format == OutputFormat::Json) {
        _Write(_firstObject ? "]\n" : "\n]\n");
        return;
    }
    if (_cells.isEmpty())
        return;

    _cells.prepend(_names);
    QVector<int> widths(_names.size(), 0);
    for (QVector<QString> const& cells : qAsConst(_cells)) {
        for (int column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths.at(column), DisplayWidth(cells.at(column)));
    }
    for (QVector<QString> const& cells : qAsConst(_cells)) {
        QString line;
        for (int column = 0; column < cells.size(); ++column) {
            if (column > 0)
                line += QStringLiteral("  ");
            line += Padded(cells.at(column), widths.at(column), _numeric.at(column));
        }
        PrintLine(WithoutTrailingBlanks(line));
    }
    _cells.clear();
}

void Output::_ShowRow(QVector<QString> const& names, QVector<QVariant> const& values)
{
    if (_format == OutputFormat::Json) {
        _BeginRows(names);
        _AddRow(values);
        _EndRows();
        return;
    }
    QVector<Line> lines;
    for (int i = 0; i < names.size(); ++i)
        lines.append({names.at(i), values.at(i)});
    PrintLines(lines);
}

void Output::_SetKeys()
{
    _keys.clear();
    for (int column = 0; column < _names.size(); ++column) {
        Key key{column, {}};
        tandry::findings::AppendJsonString(key.text, _names.at(column));
        key.text += ':';
        _keys.append(key);
    }
    std::sort(_keys.begin(), _keys.end(), [this](Key const& left, Key const& right) {
        return _names.at(left.column) < _names.at(right.column);
    });
}

void Output::_WriteObject(QVector<QVariant> const& values)
{
    _Write(_firstObject ? "\n{" : ",\n{");
    _firstObject = false;
    bool isFirstKey = true;
    for (Key const& key : qAsConst(_keys)) {
        QVariant const& value = values.at(key.column);
        if (IsHidden(value))
            continue;
        if (!isFirstKey)
            _buffer += ',';
        isFirstKey = false;
        _buffer += key.text;
        tandry::findings::AppendJsonValue(_buffer, value);
    }
    _Write("}");
}

} // namespace tandryctl
