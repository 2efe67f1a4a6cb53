#include "tools/carry/Import.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/carry/CarriedRows.h"
#include "tools/carry/CarriedValues.h"
#include "tools/findings/TableNames.h"

#include <QIODevice>

#include <algorithm>
#include <limits>

namespace tandry::carry {

using findings::StoreStatements;
using sync::config::ColumnKind;
using sync::interf::factory::IDatabaseFactory;

namespace {

constexpr qint64 MostLineBytes = qint64(256) * 1024 * 1024;
constexpr char const* ClientPath = "clientPath";

/// The records of one kind in the file, and where they go.
struct Section
{
    CarriedTable const* table;
    qint64 count;
    /// What is added to a record's number to give its id.
    qint64 idsBefore = 0;
};

JsonValue const* Find(JsonValue const& object, QString const& key)
{
    auto const found = std::find_if(
        object.members.begin(), object.members.end(), [&](JsonMember const& member) { return member.key == key; });
    return found == object.members.end() ? nullptr : &found->value;
}

} // namespace

class Import::Lines
{
public:
    Lines(std::shared_ptr<IDatabaseFactory> store, QIODevice& device, std::vector<PathMap> maps, IdRecord idRecord)
        : _store(std::move(store))
        , _statements(_store)
        , _device(device)
        , _maps(std::move(maps))
        , _idRecord(idRecord)
    {}

    ImportFault const& fault() const { return _fault; }
    qint64 movedPaths() const { return _movedPaths; }

    std::optional<RecordCounts> ReadHeader()
    {
        JsonValue header;
        if (!_ReadLine(header) || !_TakeHeader(header))
            return std::nullopt;
        RecordCounts counts;
        for (Section const& section : _sections)
            counts.emplace_back(section.table->records, section.count);
        return counts;
    }

    bool WriteRecords(CarryProgress const& progress)
    {
        auto const database = _store->CreateDatabase();
        if (!database->transaction())
            return _FailInStore();
        bool const isWritten = _PrepareStore() && _WriteSections(progress) && _IsAtEnd();
        if (!isWritten)
            static_cast<void>(database->rollback()); // the failure is being reported
        else if (!database->commit())
            return _FailInStore();
        return isWritten;
    }

private:
    bool _Fail(QString const& field, QString const& reason)
    {
        _fault = {_lineNumber, field, reason};
        return false;
    }

    bool _FailInStore()
    {
        _fault = {_lineNumber, {}, {}};
        return false;
    }

    bool _ReadLine(JsonValue& object)
    {
        ++_lineNumber;
        QByteArray const line = _device.readLine(MostLineBytes);
        if (line.isEmpty())
            return _Fail({}, QStringLiteral("the file ends before its last record"));
        if (!line.endsWith('\n'))
            return _Fail({}, QStringLiteral("the line is cut off, or longer than %1 bytes").arg(MostLineBytes));
        JsonFault fault;
        auto read = ReadJsonObject(line, fault);
        if (!read)
            return _Fail(fault.key, QStringLiteral("%1 (byte %2 of the line)").arg(fault.reason).arg(fault.column));
        object = std::move(*read);
        return true;
    }

    bool _IsAtEnd()
    {
        ++_lineNumber;
        return _device.readLine(2).isEmpty() || _Fail({}, QStringLiteral("there are more lines than records"));
    }

    bool _TakeHeader(JsonValue const& header)
    {
        QString const format = QStringLiteral("format");
        QString const version = QStringLiteral("version");
        QString const secrets = QStringLiteral("secrets");
        QString const records = QStringLiteral("records");
        JsonValue const* const name = Find(header, format);
        if (name == nullptr || name->text != QLatin1String(FormatName))
            return _Fail(format, QStringLiteral("this is no export of tandryctl"));
        JsonValue const* const number = Find(header, version);
        if (number == nullptr || number->type != JsonValue::Type::Integer || number->integer < 1)
            return _Fail(version, QStringLiteral("a number is expected"));
        if (number->integer > FormatVersion)
            return _Fail(version,
                         QStringLiteral("a newer program has written version %1; this one knows %2")
                             .arg(number->integer)
                             .arg(FormatVersion));
        JsonValue const* const withSecrets = Find(header, secrets);
        if (withSecrets == nullptr || withSecrets->type != JsonValue::Type::Bool)
            return _Fail(secrets, QStringLiteral("true or false is expected"));
        _withSecrets = withSecrets->integer != 0;
        for (JsonMember const& member : header.members) {
            if (!QStringList{format, version, secrets, records}.contains(member.key))
                return _Fail(member.key, QStringLiteral("there is no such key"));
        }
        JsonValue const* const counts = Find(header, records);
        if (counts == nullptr || counts->type != JsonValue::Type::Object)
            return _Fail(records, QStringLiteral("an object is expected"));
        return _TakeCounts(*counts, records);
    }

    bool _TakeCounts(JsonValue const& counts, QString const& field)
    {
        for (CarriedTable const& table : CarriedTables()) {
            JsonValue const* const count = Find(counts, table.records);
            if (count == nullptr)
                continue;
            if (count->type != JsonValue::Type::Integer || count->integer < 0 ||
                count->integer > std::numeric_limits<qint32>::max())
                return _Fail(field, QStringLiteral("%1 is no count of records").arg(table.records));
            if (_SectionOf(table.table) != nullptr)
                return _Fail(field, QStringLiteral("roots and folders exclude each other"));
            _sections.push_back({&table, count->integer});
        }
        return _sections.size() == counts.members.size() ||
               _Fail(field, QStringLiteral("there is no such kind of records"));
    }

    Section const* _SectionOf(char const* table) const
    {
        auto const found = std::find_if(_sections.begin(), _sections.end(), [table](Section const& section) {
            return qstrcmp(section.table->table, table) == 0;
        });
        return found == _sections.end() ? nullptr : &*found;
    }

    /// Refuses a store with records, and makes room for the schedules.
    bool _PrepareStore()
    {
        QStringList found;
        for (CarriedTable const* table : SelectTables({})) {
            // Each new store has a default schedule.
            bool const isDefault = qstrcmp(table->table, findings::Schedules) == 0;
            qlonglong const rows =
                _statements
                    .Value(QStringLiteral("SELECT count(*) FROM (SELECT 1 FROM %1 %2 LIMIT 1) AS first")
                               .arg(QLatin1String(table->table),
                                    isDefault ? QStringLiteral("WHERE folderConfigurationId IS DISTINCT FROM 0")
                                              : QString()))
                    .toLongLong();
            if (rows > 0)
                found.append(table->records);
        }
        _lineNumber = 0;
        if (!_statements.works())
            return _FailInStore();
        if (!found.isEmpty())
            return _Fail({}, QStringLiteral("the store has records already: %1").arg(found.join(QStringLiteral(", "))));
        if (_SectionOf(findings::Schedules) != nullptr)
            _statements.Write(QStringLiteral("DELETE FROM Schedules"));
        for (Section& section : _sections)
            _TakeIds(section);
        return _statements.works() || _FailInStore();
    }

    /// Gives the section the ids behind all that its table has given.
    void _TakeIds(Section& section)
    {
        QString const table = QString::fromLatin1(section.table->table);
        if (_idRecord == IdRecord::SqliteSequence) {
            section.idsBefore = _statements
                                    .Value(QStringLiteral("SELECT max(seq) FROM sqlite_sequence WHERE name = :name"),
                                           {{":name", table}})
                                    .toLongLong();
            return;
        }
        QString const sequence = table.toLower() + QStringLiteral("_id_seq");
        section.idsBefore =
            _statements.Value(QStringLiteral("SELECT CASE WHEN is_called THEN last_value ELSE 0 END FROM ") + sequence)
                .toLongLong();
        if (section.count > 0 && section.count <= std::numeric_limits<qint32>::max() - section.idsBefore)
            static_cast<void>(_statements.Value(QStringLiteral("SELECT setval('%1', :last)").arg(sequence),
                                                {{":last", section.idsBefore + section.count}}));
    }

    bool _WriteSections(CarryProgress const& progress)
    {
        _lineNumber = 1;
        for (Section const& section : _sections) {
            RowWriter writer(_store, *section.table);
            std::vector<QVariant> values(section.table->columns.size());
            for (qint64 number = 1; number <= section.count; ++number) {
                JsonValue record;
                if (!_ReadLine(record) || !_TakeRecord(*section.table, number, record, values))
                    return false;
                qint64 const id = section.idsBefore + number;
                if (id > std::numeric_limits<qint32>::max())
                    return _Fail({}, QStringLiteral("the store has no ids left for it"));
                if (!writer.Insert(qint32(id), values))
                    return _FailInStore();
                if (progress)
                    progress();
            }
        }
        return true;
    }

    bool _TakeRecord(CarriedTable const& table, qint64 number, JsonValue const& record, std::vector<QVariant>& values)
    {
        JsonValue const* const own = Find(record, table.record);
        if (own == nullptr || own->type != JsonValue::Type::Integer || own->integer != number)
            return _Fail(table.record,
                         QStringLiteral("the %1 with number %2 is expected").arg(table.record).arg(number));
        std::size_t taken = 1;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            CarriedColumn const& column = table.columns[i];
            if (column.isSecret && !_withSecrets)
                continue;
            // The usual order is that of the table.
            bool const isInPlace = taken < record.members.size() && record.members[taken].key == column.name;
            JsonValue const* const value = isInPlace ? &record.members[taken].value : Find(record, column.name);
            if (value == nullptr)
                return _Fail(column.name, QStringLiteral("the key is missing"));
            if (!_TakeValue(column, *value, values[i]))
                return false;
            ++taken;
        }
        if (taken == record.members.size())
            return true;
        auto const unknown = std::find_if(record.members.begin(), record.members.end(), [&](JsonMember const& member) {
            return member.key != table.record &&
                   std::none_of(table.columns.begin(), table.columns.end(), [&](CarriedColumn const& column) {
                       return member.key == column.name && (_withSecrets || !column.isSecret);
                   });
        });
        return _Fail(unknown->key, QStringLiteral("there is no such key in a record of this kind"));
    }

    bool _TakeValue(CarriedColumn const& column, JsonValue const& value, QVariant& stored)
    {
        if (column.target != nullptr && value.type == JsonValue::Type::Integer)
            return _TakeReference(column, value.integer, stored);
        if (column.target != nullptr) {
            if (auto const id = reference::MissingId(value)) {
                stored = qlonglong(*id);
                return true;
            }
        }
        QString reason;
        auto const plain = ToStored(value, column.kind, reason);
        if (!plain)
            return _Fail(column.name, reason);
        stored = *plain;
        if (value.type != JsonValue::Type::Text)
            return true;
        if (column.kind == ColumnKind::Links)
            return _TakeLinks(column, value.text, stored);
        if (column.name == QLatin1String(ClientPath)) {
            QString const moved = _maps.Moved(value.text);
            _movedPaths += moved == value.text ? 0 : 1;
            stored = moved;
        }
        return true;
    }

    bool _TakeReference(CarriedColumn const& column, qint64 number, QVariant& stored)
    {
        if (reference::NamesNone(number)) {
            stored = qlonglong(number);
            return true;
        }
        auto const id = _IdOf(column.target, number);
        if (!id)
            return _Fail(column.name, QStringLiteral("the file has no record with number %1 there").arg(number));
        stored = qlonglong(*id);
        return true;
    }

    bool _TakeLinks(CarriedColumn const& column, QString const& text, QVariant& stored)
    {
        auto const links = ReplaceFileIds(text, [this](qint64 number) { return _IdOf(findings::Files, number); });
        if (!links)
            return _Fail(column.name, QStringLiteral("a FileId is the number of no file"));
        stored = _maps.MovedInLinks(*links);
        return true;
    }

    std::optional<qint64> _IdOf(char const* table, qint64 number) const
    {
        Section const* const section = _SectionOf(table);
        if (section == nullptr || number < 1 || number > section->count)
            return std::nullopt;
        return section->idsBefore + number;
    }

    std::shared_ptr<IDatabaseFactory> const _store;
    StoreStatements _statements;
    QIODevice& _device;
    PathMaps const _maps;
    IdRecord const _idRecord;
    std::vector<Section> _sections;
    bool _withSecrets = false;
    qint64 _lineNumber = 0;
    qint64 _movedPaths = 0;
    ImportFault _fault;
};

Import::Import(std::shared_ptr<IDatabaseFactory> store, QIODevice& device, std::vector<PathMap> maps, IdRecord idRecord)
    : _lines(std::make_unique<Lines>(std::move(store), device, std::move(maps), idRecord))
{}

Import::~Import() = default;

std::optional<RecordCounts> Import::Prepare(ImportFault& fault)
{
    auto counts = _lines->ReadHeader();
    fault = _lines->fault();
    return counts;
}

bool Import::Write(ImportFault& fault, CarryProgress const& progress)
{
    bool const isWritten = _lines->WriteRecords(progress);
    fault = _lines->fault();
    return isWritten;
}

qint64 Import::movedPaths() const
{
    return _lines->movedPaths();
}

} // namespace tandry::carry
