#include "tools/findings/PathNotes.h"

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/Examination.h"
#include "tools/findings/PathText.h"
#include "tools/findings/TableNames.h"

#include <QDir>
#include <QHash>
#include <QMap>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>

namespace tandry::findings {

using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr char const* TablesOfPathsOnDisk[] = {Folders, Files, GeneratedFiles};

std::size_t HashOf(QString const& text)
{
    return std::hash<std::u16string_view>()(
        {reinterpret_cast<char16_t const*>(text.utf16()), static_cast<std::size_t>(text.size())});
}

/// Returns the hashes, sorted, that occur more than once.
std::vector<std::size_t> Repeated(std::vector<std::size_t> hashes)
{
    std::sort(hashes.begin(), hashes.end());
    std::vector<std::size_t> repeated;
    for (std::size_t i = 1; i < hashes.size(); ++i) {
        if (hashes[i] == hashes[i - 1] && (repeated.empty() || repeated.back() != hashes[i]))
            repeated.push_back(hashes[i]);
    }
    return repeated;
}

/// A root with its path in the form in which paths are compared.
struct RootPath
{
    int id;
    QString path;
    QString folded;
    int accountId;
};

std::vector<RootPath> RootPaths(Examination& examination, char const* column)
{
    std::vector<RootPath> roots;
    examination.statements().Read(
        QStringLiteral("SELECT id, %1, authenticationId FROM FolderConfiguration WHERE parentId = 0 AND %1 <> '' "
                       "ORDER BY id")
            .arg(QLatin1String(column)),
        {},
        [&](IQSqlQueryWrapper& row) {
            QString const path = row.value(1).toString();
            roots.push_back({row.value(0).toInt(), path, QDir::cleanPath(path).toCaseFolded(), row.value(2).toInt()});
        });
    return roots;
}

/// Adds each root whose path is that of another one or lies in it. `keyOf` returns what two paths must share to be
/// compared, with the path appended.
template <class KeyOf>
void FindOverlaps(std::vector<RootPath> const& roots, KeyOf const& keyOf, std::vector<FoundRow>& rows)
{
    QHash<QString, RootPath const*> byPath;
    for (RootPath const& root : roots) {
        if (!byPath.contains(keyOf(root, root.folded)))
            byPath.insert(keyOf(root, root.folded), &root);
    }
    for (RootPath const& root : roots) {
        RootPath const* other = byPath.value(keyOf(root, root.folded));
        QString relation = QStringLiteral("same as");
        if (other == &root) {
            relation = QStringLiteral("in");
            other = nullptr;
            for (QString path = FolderOf(root.folded); other == nullptr && !path.isEmpty(); path = FolderOf(path))
                other = byPath.value(keyOf(root, path));
        }
        if (other != nullptr)
            rows.push_back({QLatin1String(Folders),
                            root.id,
                            root.path,
                            QStringLiteral("%1 root %2 '%3'").arg(relation, QString::number(other->id), other->path)});
    }
}

} // namespace

PathSurvey SurveyPaths(StoreStatements& statements)
{
    PathSurvey survey;
    std::vector<std::size_t> hashes;
    for (char const* table : TablesOfPathsOnDisk) {
        // Many paths in a row, since a store that is open for reading looks at its file for each row.
        // The last one by its bytes, since a text that is not valid UTF-8 does not come back as it is stored. It keeps
        // its type: all texts precede all blobs.
        QString const statement =
            QStringLiteral(
                "SELECT group_concat(clientPath, char(0)), CAST(max(clientPath) AS BLOB), typeof(max(clientPath)) = "
                "'text', max(times) FROM (SELECT clientPath, count(*) AS times FROM %1 WHERE clientPath > "
                "CASE WHEN :isText THEN CAST(:last AS TEXT) ELSE :last END GROUP BY clientPath LIMIT 1000)")
                .arg(QLatin1String(table));
        QVariant last = QByteArray("");
        bool isText = true;
        while (!last.isNull()) {
            StoreStatements::Values const values{{":last", last}, {":isText", isText}};
            last.clear();
            statements.Read(statement, values, [&](IQSqlQueryWrapper& row) {
                last = row.value(1);
                isText = row.value(2).toBool();
                survey.hasRepeated = survey.hasRepeated || row.value(3).toInt() > 1;
                if (!last.isNull()) {
                    for (QString const& path : row.value(0).toString().split(QChar(QChar::Null)))
                        hashes.push_back(HashOf(Folded(path)));
                }
            });
        }
    }
    survey.alike = Repeated(std::move(hashes));
    return survey;
}

void FindPathsAlike(Examination& examination, std::vector<FoundRow>& rows)
{
    std::vector<std::size_t> const& hashes = examination.paths().alike;
    if (hashes.empty())
        return;

    QMap<QString, QMap<QString, std::vector<FoundRow>>> rowsByPath;
    for (char const* table : TablesOfPathsOnDisk)
        examination.statements().Read(
            QStringLiteral("SELECT id, clientPath FROM ") + QLatin1String(table), {}, [&](IQSqlQueryWrapper& row) {
                QString const path = row.value(1).toString();
                QString const folded = Folded(path);
                if (std::binary_search(hashes.begin(), hashes.end(), HashOf(folded)))
                    rowsByPath[folded][path].push_back({QLatin1String(table), row.value(0).toInt(), path, QString()});
            });
    for (auto const& alike : qAsConst(rowsByPath)) {
        for (auto path = std::next(alike.begin()); path != alike.end(); ++path) {
            for (FoundRow row : path.value()) {
                row.detail = QStringLiteral("like '%1'").arg(alike.firstKey());
                rows.push_back(row);
            }
        }
    }
}

void FindRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows)
{
    FindOverlaps(
        RootPaths(examination, "clientPath"), [](RootPath const&, QString const& path) { return path; }, rows);
}

void FindServerRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows)
{
    FindOverlaps(
        RootPaths(examination, "serverPath"),
        [](RootPath const& root, QString const& path) {
            return QString::number(root.accountId) + QLatin1Char(' ') + path;
        },
        rows);
}

} // namespace tandry::findings
