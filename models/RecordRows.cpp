#include "models/RecordRows.h"

#include "interf/IQSqlQueryWrapper.h"
#include "models/DisplayTexts.h"

#include <QLocale>
#include <QStringList>
#include <QVariantMap>

namespace sync::models {

using sync::config::ColumnKind;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

bool RecordRows::Column::hasText() const
{
    return kind == ColumnKind::Enumeration || kind == ColumnKind::BitField;
}

RecordRows::RecordRows(std::shared_ptr<IDatabaseFactory> factory, QString const& table, QVector<Column> const& columns)
    : _factory(std::move(factory))
    , _documents(_factory)
    , _columns(columns)
{
    QStringList names;
    for (Column const& column : _columns)
        names.append(column.name);
    _select = QStringLiteral("SELECT %1 FROM %2 ").arg(names.join(QStringLiteral(", ")), table);
    _selectIds = QStringLiteral("SELECT id FROM %1 ").arg(table);
}

QHash<int, QByteArray> RecordRows::WithRoles(QHash<int, QByteArray> roles) const
{
    int role = Qt::UserRole;
    for (Column const& column : _columns)
        roles.insert(++role, column.name.toLatin1());
    for (Column const& column : _columns) {
        ++role;
        if (column.hasText())
            roles.insert(role, column.name.toLatin1() + "Text");
    }
    return roles;
}

QVariant RecordRows::Value(RecordRow const& row, int role) const
{
    int const place = role - Qt::UserRole - 1;
    auto const count = static_cast<int>(_columns.size());
    if (place >= 0 && place < count)
        return row.values.at(place);
    if (place >= count && place < 2 * count && _columns.at(place - count).hasText())
        return Text(row, place - count);
    return {};
}

QString RecordRows::Text(RecordRow const& row, int column) const
{
    Column const& described = _columns.at(column);
    QVariant const& value = row.values.at(column);
    if (described.hasText())
        return DisplayText(described.valueNames, value.toInt());
    if (described.kind == ColumnKind::Time)
        return QLocale().toString(value.toDateTime().toLocalTime(), QLocale::ShortFormat);
    if (described.kind != ColumnKind::Properties)
        return value.toString();
    QStringList entries;
    QVariantMap const properties = value.toMap();
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry)
        entries.append(entry.key() + QStringLiteral("=") + entry.value().toString());
    return entries.join(QStringLiteral(", "));
}

std::optional<QVector<RecordRow>> RecordRows::Read(QString const& clauses, Bindings const& values, QString* error) const
{
    QVector<RecordRow> rows;
    auto const take = [&](IQSqlQueryWrapper& query) {
        RecordRow row;
        row.id = query.value(0).toInt(); // the first column of every table
        row.values.reserve(_columns.size());
        for (int column = 0; column < _columns.size(); ++column)
            row.values.append(Convert(_columns.at(column), query.value(column)));
        rows.append(row);
        return true;
    };
    return Run(_select + clauses, values, take, error) ? std::optional(rows) : std::nullopt;
}

bool RecordRows::ReadIds(QString const& clauses,
                         Bindings const& values,
                         std::function<bool(int id)> const& take,
                         QString& error) const
{
    return Run(
        _selectIds + clauses, values, [&](IQSqlQueryWrapper& query) { return take(query.value(0).toInt()); }, &error);
}

bool RecordRows::Run(QString const& statement,
                     Bindings const& values,
                     std::function<bool(IQSqlQueryWrapper&)> const& take,
                     QString* error) const
{
    std::shared_ptr<IQSqlQueryWrapper> const query = _factory->CreateQuery();
    bool succeeds = query->prepare(statement);
    if (succeeds) {
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            query->bindValue(value.key(), value.value());
        succeeds = query->exec();
    }
    if (succeeds) {
        while (query->next()) {
            if (!take(*query))
                return true;
        }
        succeeds = query->lastError().isEmpty();
    }
    if (!succeeds && error != nullptr)
        *error = query->lastError();
    return succeeds;
}

QVariant RecordRows::Convert(Column const& column, QVariant const& stored) const
{
    switch (column.kind) {
    case ColumnKind::Integer:
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return stored.toInt();
    case ColumnKind::LongInteger:
        return stored.toLongLong();
    case ColumnKind::Time: {
        QDateTime const time = stored.toDateTime();
        return QDateTime(time.date(), time.time(), column.timeSpec);
    }
    case ColumnKind::Properties: {
        QVariantMap properties;
        QMap<QString, QString> const entries = _documents.ToNameValuePropertyMap(stored.toString());
        for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
            properties.insert(entry.key(), entry.value());
        return properties;
    }
    case ColumnKind::Text:
    case ColumnKind::Links:
        break;
    }
    return stored.toString();
}

} // namespace sync::models
