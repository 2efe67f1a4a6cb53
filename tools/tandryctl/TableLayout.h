#pragma once

#include "Style.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace tandryctl {

/// How the cells of a table's column may be shown.
enum class CellWidth
{
    Full,
    /// In a table that is too wide, shortened in the middle: for paths, names and other texts without a sense of their
    /// own in each word.
    MayBeShortened
};

struct TableCell
{
    QString text;
    /// Numbers are never shortened.
    bool isNumber = false;
    Style style = Style::None;
    /// A time in ISO 8601 may be shortened to the minute or the day.
    bool isTime = false;
};

using TableRow = QVector<TableCell>;

/// Lays out a table with aligned columns in constant memory: `Measure` is called for the rows that decide on the
/// widths, then `Fit`, then `Line` for each row.
///
/// A few texts of thousands of characters, such as a path at the limit of the file system, must not fill all other
/// lines with blanks: without a width to fit into, a cell of more than `MostPadding` columns is ignored when columns
/// are aligned, and the rest of its line moves to the right.
class TableLayout
{
public:
    static constexpr int MostPadding = 100;

    struct Column
    {
        QString name;
        CellWidth cellWidth = CellWidth::Full;
        /// The width of the widest cell that is to be expected, for rows that are not measured.
        int expected = 0;
        /// Whether the column may be left out of a table that is too wide, if it is the last one.
        bool mayBeLeftOut = false;
    };

    /// The number of terminal columns to fit into; nothing for any number.
    explicit TableLayout(QVector<Column> const& columns, std::optional<int> width = {});

    /// Takes a row into account. Columns of numbers and empty cells alone are aligned to the right.
    void Measure(TableRow const& row);

    /// Decides on the widths, and on the columns that are left out.
    void Fit();

    /// Returns the names of the columns that do not fit.
    QStringList LeftOut() const;

    /// Returns the names of the columns as a line.
    QString Header(Style style = Style::None) const;
    /// Returns a row as a line without blanks at its end.
    QString Line(TableRow const& row) const;

private:
    struct MeasuredColumn
    {
        QString name;
        CellWidth cellWidth;
        bool mayBeLeftOut;
        /// The width of the widest cell, and of the widest one that others are aligned with.
        int widest = 0;
        int aligned = 0;
        bool hasNumbers = false;
        bool hasTexts = false;
        bool hasTimes = false;
        int width = 0;

        bool isNumeric() const { return hasNumbers && !hasTexts; }
        bool mayBeShortened() const { return cellWidth == CellWidth::MayBeShortened && !isNumeric(); }
    };

    /// Narrows the columns as far as they may be, where the table is too wide.
    void _Narrow();
    bool _IsTooWide() const;
    QString _Cell(MeasuredColumn const& column, TableCell const& cell) const;

    QVector<MeasuredColumn> _columns;
    /// The columns that are not left out.
    int _shown = 0;
    std::optional<int> _width;
};

} // namespace tandryctl
