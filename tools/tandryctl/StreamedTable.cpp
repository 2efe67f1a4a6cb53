#include "StreamedTable.h"

namespace tandryctl {

namespace {

/// The rows that decide how wide the columns are.
constexpr std::size_t RowsMeasured = 200;

QString WithLineEnd(QString const& line)
{
    return line + QLatin1Char('\n');
}

} // namespace

StreamedTable::StreamedTable(QVector<TableLayout::Column> const& columns, PlainForm const& form)
    : _layout(columns, form.width)
    , _headingStyle(form.headingStyle())
{}

QString StreamedTable::Add(TableRow const& row)
{
    if (_hasBegun)
        return WithLineEnd(_layout.Line(row));
    _layout.Measure(row);
    _waiting.push_back(row);
    return _waiting.size() < RowsMeasured ? QString() : _Release();
}

QString StreamedTable::End()
{
    return _waiting.empty() ? QString() : _Release();
}

QString StreamedTable::_Release()
{
    _hasBegun = true;
    _layout.Fit();
    QString lines = WithLineEnd(_layout.Header(_headingStyle));
    for (TableRow const& row : _waiting)
        lines += WithLineEnd(_layout.Line(row));
    _waiting.clear();
    return lines;
}

} // namespace tandryctl
