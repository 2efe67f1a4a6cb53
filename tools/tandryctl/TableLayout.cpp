#include "TableLayout.h"

#include "Text.h"

#include <algorithm>

namespace tandryctl {

namespace {

constexpr int Gap = 2;
/// Texts are shortened to this width, then the names of the other columns, then texts once more.
constexpr int ReadableWidth = 24;
constexpr int LeastHeadingWidth = 8;
/// A text that is shortened further says nothing any more.
constexpr int LeastShortenedWidth = 12;

} // namespace

TableLayout::TableLayout(QVector<Column> const& columns, std::optional<int> width)
    : _width(width)
{
    for (Column const& column : columns)
        _columns.append({column.name, column.cellWidth, column.expected, column.expected});
}

void TableLayout::Measure(TableRow const& row)
{
    for (int i = 0; i < row.size(); ++i) {
        TableCell const& cell = row.at(i);
        MeasuredColumn& column = _columns[i];
        int const width = DisplayWidth(cell.text);
        column.widest = std::max(column.widest, width);
        if (width <= MostPadding)
            column.aligned = std::max(column.aligned, width);
        column.hasNumbers = column.hasNumbers || cell.isNumber;
        column.hasTexts = column.hasTexts || (!cell.isNumber && !cell.text.isEmpty());
    }
}

void TableLayout::Fit()
{
    for (MeasuredColumn& column : _columns)
        column.width = std::max(column.aligned, DisplayWidth(column.name));
    if (!_width)
        return;
    for (MeasuredColumn& column : _columns) {
        if (column.mayBeShortened())
            column.width = std::min(std::max(column.widest, DisplayWidth(column.name)), *_width);
    }

    auto const isTooWide = [&] {
        int total = Gap * (_columns.size() - 1);
        for (MeasuredColumn const& column : qAsConst(_columns))
            total += column.width;
        return total > *_width;
    };
    // The widest columns give way first.
    auto const shortenTexts = [&](int least) {
        for (int most = *_width - 1; most >= least && isTooWide(); --most) {
            for (MeasuredColumn& column : _columns) {
                if (column.mayBeShortened())
                    column.width = std::min(column.width, most);
            }
        }
    };
    shortenTexts(ReadableWidth);
    for (int most = *_width - 1; most >= LeastHeadingWidth && isTooWide(); --most) {
        for (MeasuredColumn& column : _columns) {
            if (!column.mayBeShortened())
                column.width = std::min(column.width, std::max(column.aligned, most));
        }
    }
    shortenTexts(LeastShortenedWidth);
}

QString TableLayout::Header(Style style) const
{
    TableRow names;
    for (MeasuredColumn const& column : _columns)
        names.append({_width ? Shortened(column.name, column.width) : column.name, false, style});
    return Line(names);
}

QString TableLayout::Line(TableRow const& row) const
{
    QString line;
    for (int i = 0; i < row.size(); ++i) {
        if (i > 0)
            line += QString(Gap, QLatin1Char(' '));
        line += _Cell(_columns.at(i), row.at(i));
    }
    return WithoutTrailingBlanks(line);
}

QString TableLayout::_Cell(MeasuredColumn const& column, TableCell const& cell) const
{
    bool const isShortened = _width && column.cellWidth == CellWidth::MayBeShortened && !cell.isNumber;
    QString const text = isShortened ? Shortened(cell.text, column.width) : cell.text;
    QString const blanks(std::max(0, column.width - DisplayWidth(text)), QLatin1Char(' '));
    QString const styled = Styled(text, cell.style);
    return column.isNumeric() ? blanks + styled : styled + blanks;
}

} // namespace tandryctl
