#include "tools/findings/StoreComparison.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileLinksDocument.h"
#include "config/ProductConfiguration.h"
#include "database/StatementDetails.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/ColumnReference.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace tandry::findings {

using sync::config::AuthenticationConfiguration;
using sync::config::ColumnKind;
using sync::config::FileLink;
using sync::config::ProductConfiguration;
using sync::database::SqliteBlob;
using sync::database::SqliteText;
using sync::database::SqliteValue;
using sync::database::StatementDetails;
using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr char const* FileSystems = "FolderFileSystem";

/// What a table's records are matched by.
struct NaturalKey
{
    char const* table;
    /// The values that match, in SQL, for a row that is called "record".
    QStringList parts;
    /// The index that has the rows in this order; null if there is none.
    char const* index;
};

/// Returns the name of the row of a table to which a column refers, in SQL, or the number if there is no such row.
QString NameOfTarget(QString const& column, char const* table, QString const& name)
{
    return QStringLiteral("coalesce((SELECT coalesce(%1, '') FROM %2 AS target WHERE target.id = %3), %3)")
        .arg(name, QLatin1String(table), column);
}

QString FolderPath(QString const& column)
{
    return NameOfTarget(column, Folders, QStringLiteral("target.clientPath"));
}

QString ServerName(QString const& column)
{
    return NameOfTarget(
        column,
        Servers,
        QStringLiteral("trim(coalesce(target.davUrl, '') || ' ' || coalesce(target.webServiceUrl, ''))"));
}

std::vector<NaturalKey> const& Keys()
{
    static QStringList const path{QStringLiteral("record.clientPath")};
    static QStringList const folder{FolderPath(QStringLiteral("record.folderConfigurationId"))};
    static std::vector<NaturalKey> const keys{
        {Servers,
         {QStringLiteral("record.davUrl"), QStringLiteral("record.webServiceUrl")},
         "ServerConfiguration_urls"},
        {Accounts,
         {QStringLiteral("record.domain"), QStringLiteral("record.userName")},
         "AuthenticationConfiguration_user"},
        {Products, {ServerName(QStringLiteral("record.serverId")), QStringLiteral("record.consumerKey")}, nullptr},
        {Folders, path, "FolderConfiguration_clientPath"},
        {Files, path, "FileConfiguration_clientPath"},
        {GeneratedFiles, path, "GeneratedFileConfiguration_clientPath"},
        {BaseFiles, path, nullptr},
        {Schedules, folder, nullptr},
        {FileSystems, folder, nullptr},
    };
    return keys;
}

/// Returns the value of a column in SQL: of one that refers to another record, that record's name.
QString ValueOf(QString const& column)
{
    QString value = QStringLiteral("record.") + column;
    if (column == QLatin1String("serverId"))
        return ServerName(value);
    if (column == QLatin1String("authenticationId"))
        return NameOfTarget(
            value, Accounts, QStringLiteral("coalesce(target.domain, '') || '\\' || coalesce(target.userName, '')"));
    if (column == QLatin1String("productConfigurationId"))
        return NameOfTarget(value, Products, QStringLiteral("target.consumerKey"));
    if (column == QLatin1String("parentFileId"))
        return NameOfTarget(value, Files, QStringLiteral("target.clientPath"));
    for (char const* reference : {"parentId", "rootId", "folderConfigurationId", "rootFolderId"}) {
        if (column == QLatin1String(reference))
            return FolderPath(value);
    }
    return value;
}

int CompareBytes(QByteArray const& left, QByteArray const& right)
{
    int const order = std::memcmp(left.constData(), right.constData(), size_t(std::min(left.size(), right.size())));
    return order != 0 ? order : left.size() - right.size();
}

template <class Number>
int CompareNumbers(Number left, Number right)
{
    return left < right ? -1 : (right < left ? 1 : 0);
}

/// Compares as SQLite sorts, but for integers and floating-point numbers, which differ here even if their values do
/// not.
int Order(SqliteValue const& left, SqliteValue const& right)
{
    if (left.index() != right.index())
        return left.index() < right.index() ? -1 : 1;
    if (auto const* const number = std::get_if<qint64>(&left))
        return CompareNumbers(*number, std::get<qint64>(right));
    if (auto const* const number = std::get_if<double>(&left))
        return CompareNumbers(*number, std::get<double>(right));
    if (auto const* const text = std::get_if<SqliteText>(&left))
        return CompareBytes(text->utf8, std::get<SqliteText>(right).utf8);
    if (auto const* const blob = std::get_if<SqliteBlob>(&left))
        return CompareBytes(blob->bytes, std::get<SqliteBlob>(right).bytes);
    return 0;
}

template <class Record>
bool IsSecret(QString const& column)
{
    auto const* const found = sync::config::FindRecordColumn<Record>(column);
    return found != nullptr && found->isSecret();
}

bool IsPrivate(DescribedColumn const& column)
{
    return IsSecret<ProductConfiguration>(column.name) || IsSecret<AuthenticationConfiguration>(column.name) ||
           column.kind == ColumnKind::Properties || column.kind == ColumnKind::Links;
}

/// The columns of a table that are compared, and the statements that read them.
struct TableReading
{
    TableReading(NaturalKey const& key, DescribedTables const& described)
        : keyParts(key.parts.size())
        , orderedIds(
              QStringLiteral("SELECT record.id FROM %1 AS record%2 ORDER BY %3, record.id")
                  .arg(QLatin1String(key.table),
                       key.index == nullptr ? QString() : QStringLiteral(" INDEXED BY ") + QLatin1String(key.index),
                       key.parts.join(QStringLiteral(", "))))
    {
        QStringList values = key.parts;
        for (DescribedColumn const& column : described.columns) {
            if (column.name == QLatin1String("id"))
                continue;
            columns.push_back(&column);
            values.append(ValueOf(column.name));
        }
        row = QStringLiteral("SELECT %1 FROM %2 AS record WHERE record.id = :id")
                  .arg(values.join(QStringLiteral(", ")), QLatin1String(key.table));
    }

    int keyParts;
    QString orderedIds;
    QString row;
    std::vector<DescribedColumn const*> columns;
};

/// One store's rows of a table in the order of their names. Reads one row at a time: first the ids in order, for which
/// an index suffices, then each row by its id.
class RowsInOrder
{
public:
    RowsInOrder(StoreComparison::Store const& store, TableReading const& reading)
        : _reading(reading)
        , _ids(store->CreateQuery())
        , _row(store->CreateQuery())
        , _target(store->CreateQuery())
        , _details(qobject_cast<StatementDetails*>(_row.get()))
    {
        static_cast<void>(_ids->prepare(reading.orderedIds)); // `exec` fails too
        static_cast<void>(_row->prepare(reading.row));
        static_cast<void>(_target->prepare(QStringLiteral("SELECT clientPath FROM FileConfiguration WHERE id = :id")));
        _works = _details != nullptr && _ids->exec();
        Advance();
    }

    bool works() const { return _works; }
    bool hasRow() const { return _hasRow; }

    void Advance()
    {
        _hasRow = false;
        if (!_works)
            return;
        if (!_ids->next()) {
            _works = _ids->lastError().isEmpty();
            return;
        }
        _row->bindValue(QStringLiteral(":id"), _ids->value(0));
        _hasRow = _row->exec() && _row->next();
        _works = _hasRow;
    }

    SqliteValue Key(int part) const { return _details->storedValue(part); }
    SqliteValue Stored(std::size_t column) const { return _details->storedValue(_Position(column)); }
    QVariant Value(std::size_t column) const { return _row->value(_Position(column)); }

    QString Name() const
    {
        QStringList parts;
        for (int part = 0; part < _reading.keyParts; ++part)
            parts.append(_row->value(part).toString());
        parts.removeAll(QString());
        return parts.join(QLatin1Char(' '));
    }

    /// Returns a document of links with the names of what they lead to, to be compared.
    QStringList Links(std::size_t column, QDateTime& date)
    {
        QStringList names;
        for (FileLink const& link : sync::config::ReadFileLinks(Value(column).toString(), date))
            names << _PathOf(link.fileId) << link.path << link.refId << link.serverFileId;
        return names;
    }

private:
    int _Position(std::size_t column) const { return _reading.keyParts + static_cast<int>(column); }

    QString _PathOf(int fileId)
    {
        _target->bindValue(QStringLiteral(":id"), fileId);
        bool const ran = _target->exec();
        QString path = ran && _target->next() ? _target->value(0).toString() : QString::number(fileId);
        _works = _works && ran;
        _target->finish();
        return path;
    }

    TableReading const& _reading;
    std::shared_ptr<IQSqlQueryWrapper> const _ids;
    std::shared_ptr<IQSqlQueryWrapper> const _row;
    std::shared_ptr<IQSqlQueryWrapper> const _target;
    StatementDetails const* const _details;
    bool _works = false;
    bool _hasRow = false;
};

int OrderOfKeys(RowsInOrder const& before, RowsInOrder const& after, int parts)
{
    for (int part = 0; part < parts; ++part) {
        if (int const order = Order(before.Key(part), after.Key(part)); order != 0)
            return order;
    }
    return 0;
}

bool HasSameLinks(RowsInOrder& before, RowsInOrder& after, std::size_t column)
{
    QDateTime dateBefore;
    QDateTime dateAfter;
    QStringList const linksBefore = before.Links(column, dateBefore);
    QStringList const linksAfter = after.Links(column, dateAfter);
    bool const hasLinks = !linksBefore.isEmpty() && !linksAfter.isEmpty();
    return hasLinks ? linksBefore == linksAfter && dateBefore == dateAfter
                    : Order(before.Stored(column), after.Stored(column)) == 0;
}

/// Passes the differences between the rows of a table to `take`. Returns false if a store has failed.
bool CompareTable(NaturalKey const& key,
                  DescribedTables const& described,
                  StoreComparison::Store const& storeBefore,
                  StoreComparison::Store const& storeAfter,
                  StoreComparison::Take const& take)
{
    using Change = RecordDifference::Change;
    TableReading const reading(key, described);
    QString const table = QLatin1String(key.table);
    RowsInOrder before(storeBefore, reading);
    RowsInOrder after(storeAfter, reading);
    while (before.works() && after.works() && (before.hasRow() || after.hasRow())) {
        int const order = !before.hasRow() ? 1 : (!after.hasRow() ? -1 : OrderOfKeys(before, after, reading.keyParts));
        if (order == 0) {
            std::vector<ColumnDifference> columns;
            for (std::size_t i = 0; i < reading.columns.size(); ++i) {
                DescribedColumn const& column = *reading.columns[i];
                bool const isSame = column.kind == ColumnKind::Links ? HasSameLinks(before, after, i)
                                                                     : Order(before.Stored(i), after.Stored(i)) == 0;
                if (!isSame)
                    columns.push_back({column.name, before.Value(i), after.Value(i), IsPrivate(column)});
            }
            if (!columns.empty())
                take({Change::Changed, table, before.Name(), columns});
        }
        else if (order < 0) {
            take({Change::Removed, table, before.Name(), {}});
        }
        else {
            take({Change::Added, table, after.Name(), {}});
        }
        if (order <= 0)
            before.Advance();
        if (order >= 0)
            after.Advance();
    }
    return before.works() && after.works();
}

DescribedTables const* DescriptionOf(char const* table)
{
    std::vector<DescribedTables> const& tables = ColumnReference();
    auto const found = std::find_if(tables.begin(), tables.end(), [table](DescribedTables const& described) {
        return described.tables.contains(QLatin1String(table));
    });
    return found == tables.end() ? nullptr : &*found;
}

} // namespace

StoreComparison::StoreComparison(Store before, Store after)
    : _before(std::move(before))
    , _after(std::move(after))
{}

bool StoreComparison::Compare(Take const& take)
{
    for (NaturalKey const& key : Keys()) {
        DescribedTables const* const described = DescriptionOf(key.table);
        if (described == nullptr || !CompareTable(key, *described, _before, _after, take))
            return false;
    }
    return true;
}

} // namespace tandry::findings
