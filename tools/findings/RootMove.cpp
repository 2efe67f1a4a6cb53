#include "tools/findings/RootMove.h"

#include "config/PathRules.h"
#include "config/StoredDocument.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/DiskEntry.h"
#include "tools/findings/TableNames.h"

#include <QDir>
#include <QDomDocument>

#include <algorithm>
#include <utility>

namespace tandry::findings {

using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr int FewDifferences = 3;

/// Returns a folder's path as `ReplacePathPrefix` takes it: that of "/" would match nothing below.
QString AsPrefix(QString path)
{
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

/// Returns what tells an entry on disk from its record; null if nothing does.
QString Difference(QString const& path, bool isFolder, qint64 size)
{
    using Kind = DiskEntry::Kind;
    DiskEntry const entry = DiskEntry::At(path);
    bool const isThere = isFolder ? entry.kind == Kind::Folder : entry.kind == Kind::File || entry.kind == Kind::Link;
    if (entry.kind == Kind::Missing || entry.kind == Kind::Unknown)
        return QStringLiteral("%1 is not there").arg(path);
    if (!isThere)
        return QStringLiteral("%1 is not a %2").arg(path, QLatin1String(isFolder ? "folder" : "file"));
    if (!isFolder && entry.size != size)
        return QStringLiteral("%1 has %2 bytes instead of %3").arg(path).arg(entry.size).arg(size);
    return {};
}

} // namespace

RootMove::RootMove(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store,
                   int rootId,
                   QString const& oldPath,
                   QString const& newPath)
    : _statements(std::move(store))
    , _rootId(rootId)
    , _oldPath(AsPrefix(oldPath))
    , _newPath(AsPrefix(newPath))
{}

QString RootMove::Moved(QString const& path) const
{
    QString const moved = sync::config::ReplacePathPrefix(path, _oldPath, _newPath);
    if (path.isEmpty() || moved == QDir::cleanPath(path))
        return {};
    return moved.isEmpty() || moved == _newPath + QLatin1Char('/') ? QDir::cleanPath(_newPath + QLatin1Char('/'))
                                                                   : moved;
}

TreeCheck RootMove::Check(std::optional<qint64> most)
{
    auto const count = [&](char const* statement) {
        return _statements.Value(QLatin1String(statement), {{":root", _rootId}}).toLongLong();
    };
    qint64 const entries = count("SELECT count(*) FROM FolderConfiguration WHERE rootId = :root AND id <> :root") +
                           count("SELECT count(*) FROM FileConfiguration WHERE rootFolderId = :root");
    qint64 const step = most ? std::max<qint64>(1, entries / *most) : 1;
    TreeCheck check;
    qint64 passed = 0;
    auto const compare = [&](QString const& path, bool isFolder, qint64 size) {
        QString const moved = Moved(path);
        if (passed++ % step != 0 || moved.isNull())
            return;
        ++check.checked;
        QString const difference = Difference(moved, isFolder, size);
        if (difference.isNull())
            return;
        if (++check.different <= FewDifferences)
            check.first.append(difference);
    };
    _ReadRows(Folders, "rootId", "clientPath", [&](int id, IQSqlQueryWrapper& row) {
        if (id != _rootId)
            compare(row.value(1).toString(), true, 0);
    });
    _ReadRows(Files, "rootFolderId", "clientPath, size", [&](int /*id*/, IQSqlQueryWrapper& row) {
        compare(row.value(1).toString(), false, row.value(2).toLongLong());
    });
    return check;
}

RootPaths RootMove::Write()
{
    RootPaths paths;
    paths.filesWithLinks = _WriteLinks();
    paths.folders = _WritePaths(Folders, "rootId");
    paths.files = _WritePaths(Files, "rootFolderId");
    paths.generatedFiles = _WritePaths(GeneratedFiles, "rootFolderId");
    paths.baseFiles = _WritePaths(BaseFiles, "rootFolderId");
    return paths;
}

void RootMove::_ReadInPortions(QString const& select,
                               StoreStatements::Values const& values,
                               TakeRow const& take,
                               std::function<void()> const& afterPortion)
{
    constexpr int portion = 1000;
    QString const statement = select + QStringLiteral(" AND id > :last ORDER BY id LIMIT %1").arg(portion);
    int last = 0;
    int count = portion;
    while (count == portion && _statements.works()) {
        StoreStatements::Values all = values;
        all.emplace_back(":last", last);
        count = 0;
        _statements.Read(statement, all, [&](IQSqlQueryWrapper& row) {
            last = row.value(0).toInt();
            ++count;
            take(last, row);
        });
        if (afterPortion)
            afterPortion();
    }
}

void RootMove::_ReadRows(char const* table,
                         char const* rootColumn,
                         char const* columns,
                         TakeRow const& take,
                         std::function<void()> const& afterPortion)
{
    _ReadInPortions(QStringLiteral("SELECT id, %1 FROM %2 WHERE %3 = :root")
                        .arg(QLatin1String(columns), QLatin1String(table), QLatin1String(rootColumn)),
                    {{":root", _rootId}},
                    take,
                    afterPortion);
}

qint64 RootMove::_WriteTexts(char const* table, char const* column, Texts& texts)
{
    QString const update =
        QStringLiteral("UPDATE %1 SET %2 = :text WHERE id = :id").arg(QLatin1String(table), QLatin1String(column));
    for (auto const& [id, text] : texts)
        _statements.Write(update, {{":text", text}, {":id", id}});
    auto const written = qint64(texts.size());
    texts.clear();
    return written;
}

qint64 RootMove::_WritePaths(char const* table, char const* rootColumn)
{
    qint64 written = 0;
    Texts moved;
    _ReadRows(
        table,
        rootColumn,
        "clientPath",
        [&](int id, IQSqlQueryWrapper& row) {
            QString const path = Moved(row.value(1).toString());
            if (!path.isNull())
                moved.emplace_back(id, path);
        },
        [&] { written += _WriteTexts(table, "clientPath", moved); });
    return written;
}

QString RootMove::_MovedLinks(QString const& text) const
{
    QString const attribute = QStringLiteral("Path");
    QDomDocument document;
    if (sync::config::LoadStoredDocument(text, document) != sync::config::LoadedDocument::Whole)
        return {}; // writing it would lose what cannot be read
    bool hasChanged = false;
    for (QDomElement link = document.documentElement().firstChildElement(); !link.isNull();
         link = link.nextSiblingElement()) {
        QString const path = Moved(link.attribute(attribute));
        if (path.isNull())
            continue;
        link.setAttribute(attribute, path);
        hasChanged = true;
    }
    return hasChanged ? document.toString(1) : QString();
}

qint64 RootMove::_WriteLinks()
{
    qint64 written = 0;
    Texts changed;
    _ReadInPortions(
        QStringLiteral("SELECT id, fileLinks FROM FileConfiguration WHERE fileLinks <> ''"),
        {},
        [&](int id, IQSqlQueryWrapper& row) {
            QString const links = _MovedLinks(row.value(1).toString());
            if (!links.isNull())
                changed.emplace_back(id, links);
        },
        [&] { written += _WriteTexts(Files, "fileLinks", changed); });
    return written;
}

} // namespace tandry::findings
