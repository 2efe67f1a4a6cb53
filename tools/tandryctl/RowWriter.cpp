#include "RowWriter.h"

#include "StreamedTable.h"
#include "Text.h"

#include "tools/findings/JsonText.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace tandryctl {

using sync::database::SqliteBlob;
using sync::database::SqliteText;
using sync::database::SqliteValue;

namespace {

/// Returns the shortest number that reads back as the same one, with a point or an exponent.
QByteArray RealText(double number)
{
    std::array<char, 32> buffer = {};
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    QByteArray text(buffer.data(), static_cast<int>(end - buffer.data()));
    bool const looksWhole =
        std::all_of(text.begin(), text.end(), [](char c) { return c == '-' || (c >= '0' && c <= '9'); });
    return looksWhole ? text + ".0" : text;
}

QByteArray InfinityText(double number)
{
    return number < 0 ? "-Infinity" : "Infinity";
}

QByteArray BlobLiteral(QByteArray const& bytes)
{
    return "x'" + bytes.toHex() + '\'';
}

QByteArray JsonString(QString const& text)
{
    QByteArray json;
    tandry::findings::AppendJsonString(json, text);
    return json;
}

QByteArray JsonObject(char const* name, QByteArray const& value)
{
    return QByteArray("{\"") + name + "\":\"" + value + "\"}";
}

struct ToJson
{
    QByteArray operator()(std::monostate /*null*/) const { return "null"; }
    QByteArray operator()(qint64 number) const { return QByteArray::number(number); }
    QByteArray operator()(double number) const
    {
        return std::isinf(number) ? JsonObject("real", InfinityText(number)) : RealText(number);
    }
    QByteArray operator()(SqliteText const& text) const
    {
        std::optional<QString> const decoded = DecodeUtf8(text.utf8);
        return decoded ? JsonString(*decoded) : JsonObject("text", text.utf8.toHex());
    }
    QByteArray operator()(SqliteBlob const& blob) const { return JsonObject("blob", blob.bytes.toHex()); }
};

QByteArray CsvField(QByteArray const& text)
{
    bool const isQuoted = text.isEmpty() || std::any_of(text.begin(), text.end(), [](char c) {
                              return c == ',' || c == '"' || c == '\r' || c == '\n';
                          });
    return isQuoted ? '"' + QByteArray(text).replace('"', "\"\"") + '"' : QByteArray(text.constData(), text.size());
}

struct ToCsv
{
    QByteArray operator()(std::monostate /*null*/) const { return {}; }
    QByteArray operator()(qint64 number) const { return QByteArray::number(number); }
    QByteArray operator()(double number) const { return std::isinf(number) ? InfinityText(number) : RealText(number); }
    QByteArray operator()(SqliteText const& text) const { return CsvField(text.utf8); }
    QByteArray operator()(SqliteBlob const& blob) const { return BlobLiteral(blob.bytes); }
};

struct ToPlain
{
    QString operator()(std::monostate /*null*/) const { return {}; }
    QString operator()(qint64 number) const { return QString::number(number); }
    QString operator()(double number) const
    {
        return QString::fromLatin1(std::isinf(number) ? InfinityText(number) : RealText(number));
    }
    QString operator()(SqliteText const& text) const
    {
        std::optional<QString> const decoded = DecodeUtf8(text.utf8);
        return decoded ? Printable(*decoded) : QuotedBytes(text.utf8);
    }
    QString operator()(SqliteBlob const& blob) const { return QString::fromLatin1(BlobLiteral(blob.bytes)); }
};

bool IsNumber(SqliteValue const& value)
{
    return std::holds_alternative<qint64>(value) || std::holds_alternative<double>(value);
}

class JsonRows : public RowWriter
{
public:
    explicit JsonRows(QStringList const& columns)
    {
        QSet<QString> taken;
        for (QString const& column : columns) {
            QString key = column; // a key that comes twice would lose a value
            for (int number = 2; taken.contains(key); ++number)
                key = QStringLiteral("%1:%2").arg(column).arg(number);
            taken.insert(key);
            _keys.push_back(JsonString(key) + ':');
        }
    }

    QByteArray Begin() override { return "["; }
    QByteArray Row(std::vector<SqliteValue> const& values) override
    {
        QByteArray line = _isFirst ? "\n{" : ",\n{";
        for (std::size_t i = 0; i < values.size(); ++i)
            line += (i > 0 ? "," : "") + _keys[i] + std::visit(ToJson(), values[i]);
        _isFirst = false;
        return line + '}';
    }
    QByteArray End() override { return _isFirst ? "]\n" : "\n]\n"; }

private:
    std::vector<QByteArray> _keys;
    bool _isFirst = true;
};

class CsvRows : public RowWriter
{
public:
    explicit CsvRows(QStringList const& columns)
        : _columns(columns)
    {}

    QByteArray Begin() override
    {
        QByteArray line;
        for (QString const& column : _columns)
            line += (line.isEmpty() ? "" : ",") + CsvField(column.toUtf8());
        return line + "\r\n";
    }
    QByteArray Row(std::vector<SqliteValue> const& values) override
    {
        QByteArray line;
        for (std::size_t i = 0; i < values.size(); ++i)
            line += (i > 0 ? "," : "") + std::visit(ToCsv(), values[i]);
        return line + "\r\n";
    }
    QByteArray End() override { return {}; }

private:
    QStringList const _columns;
};

class PlainRows : public RowWriter
{
public:
    PlainRows(QStringList const& columns, PlainForm const& form)
        : _table(LayoutOf(columns), form)
    {}

    QByteArray Begin() override { return {}; }
    QByteArray Row(std::vector<SqliteValue> const& values) override
    {
        TableRow row;
        for (SqliteValue const& value : values)
            row.append({std::visit(ToPlain(), value), IsNumber(value)});
        return _table.Add(row).toUtf8();
    }
    QByteArray End() override { return _table.End().toUtf8(); }

private:
    static QVector<TableLayout::Column> LayoutOf(QStringList const& columns)
    {
        QVector<TableLayout::Column> layout;
        for (QString const& column : columns)
            layout.append({Printable(column), CellWidth::MayBeShortened});
        return layout;
    }

    StreamedTable _table;
};

} // namespace

std::unique_ptr<RowWriter> RowWriter::Make(RowFormat format, QStringList const& columns, PlainForm const& plainForm)
{
    switch (format) {
    case RowFormat::Plain:
        break;
    case RowFormat::Json:
        return std::make_unique<JsonRows>(columns);
    case RowFormat::Csv:
        return std::make_unique<CsvRows>(columns);
    }
    return std::make_unique<PlainRows>(columns, plainForm);
}

} // namespace tandryctl
