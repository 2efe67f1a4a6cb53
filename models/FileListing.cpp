#include "models/FileListing.h"

#include <QStringList>

namespace sync::models {

QString FileListing::Clauses() const
{
    QStringList conditions;
    for (auto column = equal.cbegin(); column != equal.cend(); ++column)
        conditions.append(QStringLiteral("%1 = :%1").arg(column.key()));
    // Unlike LIKE, this has no special characters and no limit of length, and all databases have it.
    if (!nameText.isValidUtf16())
        conditions.append(QStringLiteral("1 = 0")); // no store has such a name
    else if (!nameText.isEmpty())
        conditions.append(QStringLiteral("replace(lower(name), lower(:nameText), '') <> lower(name)"));
    QString const direction = order == Qt::DescendingOrder ? QStringLiteral(" DESC") : QString();
    // The id makes the order of equal values one.
    QStringList terms{sortColumn + direction};
    if (sortColumn != QLatin1String("id"))
        terms.append(QStringLiteral("id") + direction);
    return QStringLiteral("WHERE %1 ORDER BY %2")
        .arg(conditions.join(QStringLiteral(" AND ")), terms.join(QStringLiteral(", ")));
}

RecordRows::Bindings FileListing::Values() const
{
    RecordRows::Bindings values;
    for (auto column = equal.cbegin(); column != equal.cend(); ++column)
        values.insert(QStringLiteral(":") + column.key(), column.value());
    if (!nameText.isEmpty() && nameText.isValidUtf16())
        values.insert(QStringLiteral(":nameText"), nameText);
    return values;
}

bool operator==(FileListing const& left, FileListing const& right)
{
    return left.equal == right.equal && left.nameText == right.nameText && left.sortColumn == right.sortColumn &&
           left.order == right.order;
}

} // namespace sync::models
