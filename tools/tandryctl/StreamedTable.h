#pragma once

#include "Output.h"
#include "TableLayout.h"

#include <QString>
#include <QVector>

#include <vector>

namespace tandryctl {

/// A table whose rows come only once. The first ones decide how wide the columns are, and memory does not grow with the
/// others. A later cell that is wider is shortened, or moves the rest of its line.
class StreamedTable
{
public:
    StreamedTable(QVector<TableLayout::Column> const& columns, PlainForm const& form);

    /// Takes a row. Returns the lines that can be printed now: none before the widths are known.
    QString Add(TableRow const& row);
    /// Returns the lines that are left; nothing if there was no row.
    QString End();
    /// Returns the names of the columns that do not fit, once the widths are known.
    QStringList LeftOut() const { return _layout.LeftOut(); }

private:
    QString _Release();

    TableLayout _layout;
    Style const _headingStyle;
    /// The first rows, until the widths are known.
    std::vector<TableRow> _waiting;
    bool _hasBegun = false;
};

} // namespace tandryctl
