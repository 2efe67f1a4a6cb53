#include "tools/carry/PathMaps.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace tandry::carry {

namespace {

constexpr QChar Slash = QLatin1Char('/');

/// In the form in which the library writes the values of attributes.
QString Escaped(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&amp;"))
        .replace(QLatin1Char('<'), QStringLiteral("&lt;"))
        .replace(QLatin1Char('"'), QStringLiteral("&quot;"));
}

QString WithSlash(QString const& folder)
{
    return folder.endsWith(Slash) ? folder : folder + Slash;
}

} // namespace

PathMaps::PathMaps(std::vector<PathMap> maps)
    : _maps(std::move(maps))
{
    for (PathMap& map : _maps)
        map = {QDir::cleanPath(map.from), QDir::cleanPath(map.to)};
    std::stable_sort(_maps.begin(), _maps.end(), [](PathMap const& left, PathMap const& right) {
        return left.from.size() > right.from.size();
    });
}

QString PathMaps::Moved(QString const& path) const
{
    for (PathMap const& map : _maps) {
        if (path == map.from)
            return map.to;
        QString const prefix = WithSlash(map.from);
        if (path.startsWith(prefix))
            return WithSlash(map.to) + path.mid(prefix.size());
    }
    return path;
}

QString PathMaps::MovedInLinks(QString const& links) const
{
    static QRegularExpression const attribute(QStringLiteral("\\sPath=\"([^\"]*)\""));
    if (_maps.empty() || links.isEmpty())
        return links;
    std::vector<PathMap> escaped;
    for (PathMap const& map : _maps)
        escaped.push_back({Escaped(map.from), Escaped(map.to)});
    PathMaps const maps(std::move(escaped));
    QString moved;
    int done = 0;
    auto found = attribute.globalMatch(links);
    while (found.hasNext()) {
        QRegularExpressionMatch const match = found.next();
        moved += links.mid(done, match.capturedStart(1) - done);
        moved += maps.Moved(match.captured(1));
        done = match.capturedEnd(1);
    }
    return moved + links.mid(done);
}

} // namespace tandry::carry
