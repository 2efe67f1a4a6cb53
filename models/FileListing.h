#pragma once

#include "models/RecordRows.h"

#include <QMap>
#include <QString>
#include <Qt>

namespace sync::models {

/// Which files a list has, and in which order.
struct FileListing
{
    /// The columns that have these values. A list without any has no files.
    QMap<QString, int> equal;
    /// The name has this text in it; empty for all names.
    QString nameText;
    QString sortColumn = QStringLiteral("id");
    Qt::SortOrder order = Qt::AscendingOrder;

    /// The clauses of a SELECT of the table of files. Any store with the interfaces' SQL takes them.
    QString Clauses() const;
    RecordRows::Bindings Values() const;
};

bool operator==(FileListing const& left, FileListing const& right);

} // namespace sync::models
