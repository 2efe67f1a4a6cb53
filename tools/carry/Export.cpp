#include "tools/carry/Export.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/carry/CarriedRows.h"
#include "tools/carry/CarriedValues.h"
#include "tools/carry/RowNumbers.h"
#include "tools/findings/JsonText.h"
#include "tools/findings/TableNames.h"

#include <QIODevice>

#include <map>
#include <string>

namespace tandry::carry {

using findings::StoreStatements;
using sync::config::ColumnKind;
using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr int BufferBytes = 64 * 1024;

void AppendKey(QByteArray& json, QString const& key)
{
    findings::AppendJsonString(json, key);
    json += ':';
}

} // namespace

class Export::Rows
{
public:
    Rows(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store, ExportOptions const& options)
        : _statements(std::move(store))
        , _tables(SelectTables(options.records))
        , _withSecrets(options.withSecrets)
    {}

    std::optional<RecordCounts> Number()
    {
        RecordCounts counts;
        for (CarriedTable const* table : _tables) {
            RowNumbers& numbers = _numbers[table->table];
            ReadIds(_statements, *table, [&](IQSqlQueryWrapper& row) { numbers.Append(row.value(0).toInt()); });
            counts.emplace_back(table->records, numbers.count());
        }
        return _statements.works() ? std::optional<RecordCounts>(counts) : std::nullopt;
    }

    bool Write(QIODevice& device, CarryProgress const& progress)
    {
        _AppendHeader();
        bool isWritten = true;
        auto const flush = [&] {
            isWritten = isWritten && device.write(_json) == _json.size();
            _json.resize(0); // keeps its room
        };
        for (CarriedTable const* table : _tables) {
            qint64 number = 0;
            ReadRows(_statements, *table, [&](IQSqlQueryWrapper& row) {
                if (!isWritten)
                    return;
                _AppendRecord(*table, ++number, row);
                if (_json.size() >= BufferBytes)
                    flush();
                if (progress)
                    progress();
            });
        }
        flush();
        return isWritten && _statements.works();
    }

private:
    void _AppendHeader()
    {
        _json = QByteArray("{\"format\":\"") + FormatName + "\",\"version\":" + QByteArray::number(FormatVersion) +
                ",\"secrets\":" + (_withSecrets ? "true" : "false") + ",\"records\":{";
        for (CarriedTable const* table : _tables) {
            if (table != _tables.front())
                _json += ',';
            AppendKey(_json, table->records);
            _json += QByteArray::number(_numbers[table->table].count());
        }
        _json += "}}\n";
    }

    void _AppendRecord(CarriedTable const& table, qint64 number, IQSqlQueryWrapper& row)
    {
        _json += '{';
        AppendKey(_json, table.record);
        _json += QByteArray::number(number);
        int position = 0;
        for (CarriedColumn const& column : table.columns) {
            ++position; // the id comes first
            if (column.isSecret && !_withSecrets)
                continue;
            _json += ',';
            AppendKey(_json, column.name);
            _AppendColumn(column, row.value(position));
        }
        _json += "}\n";
    }

    void _AppendColumn(CarriedColumn const& column, QVariant const& value)
    {
        if (column.target != nullptr && value.userType() == QMetaType::LongLong) {
            qint64 const id = value.toLongLong();
            reference::Append(_json, id, _NumberOf(column.target, id));
        }
        else if (column.kind == ColumnKind::Links && value.userType() == QMetaType::QString) {
            auto const withNumbers = ReplaceFileIds(value.toString(), [&](qint64 id) -> std::optional<qint64> {
                return _NumberOf(findings::Files, id).value_or(reference::ToMissing(id));
            });
            findings::AppendJsonString(_json, *withNumbers);
        }
        else {
            AppendValue(_json, column.kind, value);
        }
    }

    std::optional<qint64> _NumberOf(char const* table, qint64 id) const
    {
        auto const numbers = _numbers.find(table);
        return numbers == _numbers.end() ? std::nullopt : std::optional<qint64>(numbers->second.Of(id));
    }

    StoreStatements _statements;
    std::vector<CarriedTable const*> const _tables;
    bool const _withSecrets;
    /// By the names of the tables.
    std::map<std::string, RowNumbers> _numbers;
    QByteArray _json;
};

Export::Export(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store, ExportOptions options)
    : _rows(std::make_unique<Rows>(std::move(store), options))
{}

Export::~Export() = default;

std::optional<RecordCounts> Export::Prepare()
{
    return _rows->Number();
}

bool Export::Write(QIODevice& device, CarryProgress const& progress)
{
    return _rows->Write(device, progress);
}

} // namespace tandry::carry
