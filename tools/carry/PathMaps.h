#pragma once

#include <QString>

#include <vector>

namespace tandry::carry {

/// A folder of one computer and the one that has its place on another.
struct PathMap
{
    QString from;
    QString to;
};

/// Moves local paths from one computer's folders to another's. Compares whole names, with case.
class PathMaps
{
public:
    /// Of folders that lie in each other, the deepest counts.
    explicit PathMaps(std::vector<PathMap> maps);

    /// Returns the path in its new place; the path itself if none of the folders holds it.
    [[nodiscard]] QString Moved(QString const& path) const;

    /// Returns a document of links with the absolute paths in it moved; the rest of the text stays as it is.
    [[nodiscard]] QString MovedInLinks(QString const& links) const;

private:
    std::vector<PathMap> _maps;
};

} // namespace tandry::carry
