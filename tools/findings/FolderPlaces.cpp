#include "tools/findings/FolderPlaces.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/Examination.h"
#include "tools/findings/PathText.h"

#include <QDir>

#include <algorithm>

namespace tandry::findings {

using sync::config::FolderConfiguration;

namespace {

bool LiesIn(QString const& path, QString const& folder)
{
    if (folder.isEmpty())
        return false;
    return path.startsWith(EndingInSlash(folder));
}

} // namespace

FolderPlaces::FolderPlaces(Examination& examination)
    : _examination(examination)
    , _managers(examination.store())
{
    for (FolderConfiguration const& root : _managers.folders->GetAllRootFolders())
        _roots.emplace(root.getId(), root);
}

std::optional<int> FolderPlaces::FolderFor(QString const& path, int rootId, int moved)
{
    auto const found = _roots.find(rootId);
    if (found == _roots.end())
        return std::nullopt;
    FolderConfiguration const& root = found->second;
    QString const cleaned = QDir::cleanPath(path);
    if (!cleaned.startsWith(QLatin1Char('/')) || !LiesIn(cleaned, root.getClientPath()))
        return rootId;
    FolderConfiguration const folder = _managers.folders->AddFolderAndParent(FolderOf(cleaned), root);
    if (folder.getId() == -1 || (folder.getRootId() != rootId && folder.getId() != rootId))
        return rootId;
    std::vector<int> const up = _Up(folder.getId());
    return std::find(up.begin(), up.end(), moved) == up.end() ? folder.getId() : rootId;
}

std::optional<int> FolderPlaces::RootAbove(int folderId)
{
    int const top = _Up(folderId).back();
    return IsRoot(top) ? std::optional<int>(top) : std::nullopt;
}

std::optional<int> FolderPlaces::RootContaining(QString const& path, std::optional<int> accountId) const
{
    QString const cleaned = QDir::cleanPath(path);
    std::optional<int> innermost;
    int size = 0;
    for (auto const& [id, root] : _roots) {
        QString const rootPath = root.getClientPath();
        if ((accountId && root.getAuthenticationId() != *accountId) || rootPath.size() < size ||
            !LiesIn(cleaned, rootPath))
            continue;
        innermost = rootPath.size() > size ? std::optional<int>(id) : std::nullopt;
        size = rootPath.size();
    }
    return innermost;
}

std::vector<int> FolderPlaces::_Up(int folderId)
{
    std::vector<int> up{folderId};
    for (;;) {
        QVariant const parent = _examination.statements().Value(
            QStringLiteral("SELECT parentId FROM FolderConfiguration WHERE id = :id"), {{":id", up.back()}});
        if (parent.isNull() || parent.toInt() == 0 || std::find(up.begin(), up.end(), parent.toInt()) != up.end())
            return up;
        up.push_back(parent.toInt());
    }
}

} // namespace tandry::findings
