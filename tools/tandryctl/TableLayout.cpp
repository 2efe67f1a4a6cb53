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
        _columns.append({column.name, column.cellWidth, 0, 0});
}

void TableLayout::Measure(int column, QString const& cell, bool isNumber)
{
    MeasuredColumn& measured = _columns[column];
    int const width = DisplayWidth(cell);
    measured.widest = std::max(measured.widest, width);
    if (width <= MostPadding)
        measured.aligned = std::max(measured.aligned, width);
    measured.isNumeric = measured.isNumeric && isNumber;
}

void TableLayout::Fit()
{
    for (MeasuredColumn& column : _columns)
        column.width = std::max(column.aligned, DisplayWidth(column.name));
    if (!_width)
        return;
    for (MeasuredColumn& column : _columns) {
        if (column.cellWidth == CellWidth::MayBeShortened)
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
                if (column.cellWidth == CellWidth::MayBeShortened)
                    column.width = std::min(column.width, most);
            }
        }
    };
    shortenTexts(ReadableWidth);
    for (int most = *_width - 1; most >= LeastHeadingWidth && isTooWide(); --most) {
        for (MeasuredColumn& column : _columns) {
            if (column.cellWidth == CellWidth::Full)
                column.width = std::min(column.width, std::max(column.aligned, most));
        }
    }
    shortenTexts(LeastShortenedWidth);
}

QString TableLayout::Header(Style style) const
{
    QVector<QString> names;
    for (MeasuredColumn const& column : _columns)
        names.append(_width ? Shortened(column.name, column.width) : column.name);
    return Line(names, QVector<Style>(names.size(), style));
}

QString TableLayout::Line(QVector<QString> const& cells, QVector<Style> const& styles) const
{
    QString line;
    for (int i = 0; i < cells.size(); ++i) {
        if (i > 0)
            line += QString(Gap, QLatin1Char(' '));
        line += _Cell(_columns.at(i), cells.at(i), styles.value(i, Style::None));
    }
    return WithoutTrailingBlanks(line);
}

QString TableLayout::_Cell(MeasuredColumn const& column, QString const& text, Style style) const
{
    bool const isShortened = _width && column.cellWidth == CellWidth::MayBeShortened;
    QString const cell = isShortened ? Shortened(text, column.width) : text;
    QString const blanks(std::max(0, column.width - DisplayWidth(cell)), QLatin1Char(' '));
    QString const styled = Styled(cell, style);
    return column.isNumeric ? blanks + styled : styled + blanks;
}

} // namespace tandryctl
