#include "tools/findings/FileRows.h"

#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/JsonText.h"
#include "tools/findings/PagedRows.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace tandry::findings {

using sync::config::ColumnKind;
using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FindRecordColumn;
using sync::interf::IQSqlQueryWrapper;

namespace {

char const* TableOf(FileConfigurationType type)
{
    switch (type) {
    case sync::config::FileConfigurationTypeFile:
        return Files;
    case sync::config::FileConfigurationTypeGenerated:
        return GeneratedFiles;
    case sync::config::FileConfigurationTypeBase:
        return BaseFiles;
    }
    return "";
}

QVariant Links(QString const& document)
{
    static FileColumn const* const column = FindRecordColumn<FileConfiguration>(QStringLiteral("fileLinks"));
    FileConfiguration file;
    file.fileLinks = sync::config::ReadFileLinks(document, file.fileDate);
    return column->Get(file);
}

QVariant Properties(QString const& document)
{
    QVariantMap properties;
    QMap<QString, QString> const read = sync::config::ReadNameValues(document);
    for (auto entry = read.begin(); entry != read.end(); ++entry)
        properties.insert(properties.cend(), entry.key(), entry.value());
    return properties;
}

/// Returns the value of a column as a record has it that was read from the row.
QVariant ValueInRecord(ColumnKind kind, QVariant const& stored)
{
    switch (kind) {
    case ColumnKind::Integer:
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return stored.userType() == QMetaType::LongLong ? static_cast<int>(stored.toLongLong()) : stored.toInt();
    case ColumnKind::LongInteger:
        return stored.toLongLong();
    case ColumnKind::Text:
        return stored.toString();
    case ColumnKind::Time: {
        QDateTime time = stored.toDateTime();
        time.setTimeSpec(Qt::UTC);
        return time;
    }
    case ColumnKind::Properties:
        return Properties(stored.toString());
    case ColumnKind::Links:
        return Links(stored.toString());
    }
    return {};
}

void TakeRow(IQSqlQueryWrapper& query, QVector<FileColumn const*> const& columns, FileRows::Row& row)
{
    row.clear();
    int position = 0; // the row's id, which the columns follow
    for (FileColumn const* column : columns)
        row.push_back(ValueInRecord(column->kind(), query.value(++position)));
}

} // namespace

bool IsValueLess(QVariant const& left, QVariant const& right)
{
    switch (static_cast<QMetaType::Type>(left.userType())) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return left.toLongLong() < right.toLongLong();
    case QMetaType::QDateTime:
        return left.toDateTime() < right.toDateTime();
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList: {
        QByteArray leftJson;
        QByteArray rightJson;
        AppendJsonValue(leftJson, left);
        AppendJsonValue(rightJson, right);
        return leftJson < rightJson;
    }
    default:
        return left.toString() < right.toString();
    }
}

FileRows::FileRows(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store,
                   FileConditions conditions,
                   QVector<FileColumn const*> columns)
    : _statements(std::move(store))
    , _conditions(std::move(conditions))
    , _table(TableOf(_conditions.type))
    , _columns(std::move(columns))
{}

void FileRows::SortBy(FileColumn const& column, Qt::SortOrder order)
{
    struct Sorted
    {
        qint64 id;
        QVariant value;
    };
    std::vector<Sorted> sorted;
    _ReadPages({&column}, [&](qint64 id, Row& row) { sorted.push_back({id, std::move(row.front())}); });
    std::stable_sort(sorted.begin(), sorted.end(), [order](Sorted const& left, Sorted const& right) {
        return order == Qt::AscendingOrder ? IsValueLess(left.value, right.value)
                                           : IsValueLess(right.value, left.value);
    });
    _order.emplace();
    _order->reserve(sorted.size());
    for (Sorted const& file : sorted)
        _order->push_back(file.id);
}

void FileRows::Read(std::function<void(Row const&)> const& take, std::optional<int> limit)
{
    if (!_order) {
        auto const takeRow = [&](qint64, Row& row) { take(row); };
        _ReadPages(_columns, takeRow, limit);
        return;
    }
    QString const statement = _Select(_columns) + QStringLiteral(" WHERE id = :id");
    std::size_t const count = std::min(_order->size(), limit ? static_cast<std::size_t>(*limit) : _order->size());
    Row row;
    for (std::size_t i = 0; i < count; ++i) {
        bool isThere = false; // it may have been removed meanwhile
        _statements.Read(statement, {{":id", _order->at(i)}}, [&](IQSqlQueryWrapper& query) {
            TakeRow(query, _columns, row);
            isThere = true;
        });
        if (isThere)
            take(row);
    }
}

qint64 FileRows::Count()
{
    QString const statement = QStringLiteral("SELECT count(*) FROM %1 WHERE ").arg(QLatin1String(_table)) + _Where();
    StoreStatements::Values values = _Values();
    values.emplace_back(":firstId", PagedRows<Row>::FirstId);
    return _statements.Value(statement, values).toLongLong();
}

QString FileRows::_Where() const
{
    QString where = QStringLiteral("id >= :firstId");
    if (_conditions.folder)
        where += QStringLiteral(" AND folderConfigurationId = :folder");
    if (_conditions.root)
        where += QStringLiteral(" AND rootFolderId = :root");
    if (_conditions.status)
        where += QStringLiteral(" AND coalesce(syncStatus, 0) = :status"); // a record has 0 for NULL
    if (_conditions.name)
        where += QStringLiteral(" AND name GLOB :name");
    return where;
}

StoreStatements::Values FileRows::_Values() const
{
    StoreStatements::Values values;
    if (_conditions.folder)
        values.emplace_back(":folder", *_conditions.folder);
    if (_conditions.root)
        values.emplace_back(":root", *_conditions.root);
    if (_conditions.status)
        values.emplace_back(":status", *_conditions.status);
    if (_conditions.name)
        values.emplace_back(":name", *_conditions.name);
    return values;
}

QString FileRows::_Select(QVector<FileColumn const*> const& columns) const
{
    QString names = QStringLiteral("id");
    for (FileColumn const* column : columns)
        names += QStringLiteral(", ") + column->name();
    return QStringLiteral("SELECT %1 FROM %2").arg(names, QLatin1String(_table));
}

void FileRows::_ReadPages(QVector<FileColumn const*> const& columns,
                          std::function<void(qint64 id, Row& row)> const& take,
                          std::optional<int> limit)
{
    PagedRows<Row> const rows(_Select(columns) + QStringLiteral(" WHERE %1 ORDER BY id LIMIT :limit").arg(_Where()),
                              _Values(),
                              [&](IQSqlQueryWrapper& query, Row& row) { TakeRow(query, columns, row); });
    rows.Read(_statements, take, limit);
}

} // namespace tandry::findings
