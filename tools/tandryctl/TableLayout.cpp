#include "TableLayout.h"

#include "Text.h"

#include <algorithm>
#include <limits>

namespace tandryctl {

namespace {

constexpr int Gap = 2;
/// Texts are shortened to this width, then the names of the other columns, then texts once more.
constexpr int ReadableWidth = 24;
constexpr int LeastHeadingWidth = 6;
/// A text that is shortened further says nothing any more.
constexpr int LeastShortenedWidth = 12;
/// The first characters of a time in ISO 8601.
constexpr int WidthToTheMinute = 16;
constexpr int WidthToTheDay = 10;

} // namespace

TableLayout::TableLayout(QVector<Column> const& columns, std::optional<int> width)
    : _width(width)
{
    _shown = int(columns.size());
    for (Column const& column : columns)
        _columns.append({column.name, column.cellWidth, column.mayBeLeftOut, column.expected, column.expected});
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
        column.hasTimes = column.hasTimes || cell.isTime;
    }
}

void TableLayout::Fit()
{
    _Narrow();
    while (_IsTooWide() && _shown > 1 && _columns.at(_shown - 1).mayBeLeftOut) {
        --_shown;
        _Narrow();
    }
}

QStringList TableLayout::LeftOut() const
{
    QStringList names;
    for (int i = _shown; i < _columns.size(); ++i)
        names.append(_columns.at(i).name);
    return names;
}

void TableLayout::_Narrow()
{
    // The widest columns give way first.
    auto const shortenTexts = [&](int least) {
        for (int most = *_width - 1; most >= least && _IsTooWide(); --most) {
            for (MeasuredColumn& column : _columns) {
                if (column.mayBeShortened())
                    column.width = std::min(column.width, most);
            }
        }
    };
    auto const narrow = [&](int mostForTimes) {
        for (MeasuredColumn& column : _columns) {
            column.width = std::max(column.aligned, DisplayWidth(column.name));
            if (_width && column.mayBeShortened())
                column.width = std::min(std::max(column.widest, DisplayWidth(column.name)), *_width);
            if (column.hasTimes)
                column.width = std::min(column.width, mostForTimes);
        }
        if (!_width)
            return;
        shortenTexts(ReadableWidth);
        for (int most = *_width - 1; most >= LeastHeadingWidth && _IsTooWide(); --most) {
            for (MeasuredColumn& column : _columns) {
                if (!column.mayBeShortened())
                    column.width = std::min(column.width, std::max(column.aligned, most));
            }
        }
        shortenTexts(LeastShortenedWidth);
    };
    for (int const mostForTimes : {std::numeric_limits<int>::max(), WidthToTheMinute, WidthToTheDay}) {
        narrow(mostForTimes);
        if (!_IsTooWide())
            return;
    }
}

bool TableLayout::_IsTooWide() const
{
    int total = Gap * (_shown - 1);
    for (int i = 0; i < _shown; ++i)
        total += _columns.at(i).width;
    return _width && total > *_width;
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
    for (int i = 0; i < _shown; ++i) {
        if (i > 0)
            line += QString(Gap, QLatin1Char(' '));
        line += _Cell(_columns.at(i), row.at(i));
    }
    return WithoutTrailingBlanks(line);
}

QString TableLayout::_Cell(MeasuredColumn const& column, TableCell const& cell) const
{
    bool const isShortened = _width && column.cellWidth == CellWidth::MayBeShortened && !cell.isNumber;
    QString const text = isShortened   ? Shortened(cell.text, column.width)
                         : cell.isTime ? cell.text.left(column.width)
                                       : cell.text;
    QString const blanks(std::max(0, column.width - DisplayWidth(text)), QLatin1Char(' '));
    QString const styled = Styled(text, cell.style);
    return column.isNumeric() ? blanks + styled : styled + blanks;
}

} // namespace tandryctl
