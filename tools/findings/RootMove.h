#pragma once

#include "tools/findings/StoreStatements.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tandry::findings {

/// The paths of a root's records, or those of them that were given new ones.
struct RootPaths
{
    qint64 folders = 0;
    qint64 files = 0;
    qint64 generatedFiles = 0;
    qint64 baseFiles = 0;
    /// Files of any root, whose links name a path in the root.
    qint64 filesWithLinks = 0;
};

/// A comparison of the records with the folder at the new place.
struct TreeCheck
{
    qint64 checked = 0;
    /// Entries that are missing there, or have another kind or size.
    qint64 different = 0;
    /// Sentences about the first of them.
    QStringList first;
};

/// Gives the records of a root the paths that they have after the root's folder was moved on disk.
///
/// A path is changed as `ReplacePathPrefix` does it, and left as it is if it does not lie in the root's old path. Paths
/// on the server do not change. Reads the rows in portions, so that neither memory nor a log grows with them.
class RootMove
{
public:
    /// Both paths are absolute and clean.
    RootMove(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store,
             int rootId,
             QString const& oldPath,
             QString const& newPath);

    /// Compares records of folders and files with the disk at the new place: all of them, or up to `most` that are
    /// spread evenly.
    TreeCheck Check(std::optional<qint64> most);

    /// Writes the new paths. The caller has begun a client transaction.
    RootPaths Write();

    /// Returns the path after the move; null if the path does not lie in the root.
    QString Moved(QString const& path) const;

    /// Returns false after a failure of the store.
    bool works() const { return _statements.works(); }

private:
    using TakeRow = std::function<void(int id, sync::interf::IQSqlQueryWrapper& row)>;
    /// Texts to be written, by the ids of their rows.
    using Texts = std::vector<std::pair<int, QString>>;

    /// Calls `afterPortion` between two portions and at the end, when no statement reads: then rows may be written.
    void _ReadInPortions(QString const& select,
                         StoreStatements::Values const& values,
                         TakeRow const& take,
                         std::function<void()> const& afterPortion = {});
    void _ReadRows(char const* table,
                   char const* rootColumn,
                   char const* columns,
                   TakeRow const& take,
                   std::function<void()> const& afterPortion = {});
    // Return the number of rows.
    qint64 _WriteTexts(char const* table, char const* column, Texts& texts);
    qint64 _WritePaths(char const* table, char const* rootColumn);
    qint64 _WriteLinks();
    /// Returns a document of links with new paths; null if none changes.
    QString _MovedLinks(QString const& text) const;

    StoreStatements _statements;
    int const _rootId;
    QString const _oldPath;
    QString const _newPath;
};

} // namespace tandry::findings
