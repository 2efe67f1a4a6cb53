#include "Paths.h"

#include "Text.h"

#include "database/AbsolutePath.h"

#include <QDir>
#include <QFileInfo>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

/// Returns the path with symbolic links resolved, or unchanged if it does not exist.
QString Resolved(QString const& path)
{
    QString const canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

char const* Relation(QString const& directory, QString const& root)
{
    bool const inside = LiesIn(directory, root, Qt::CaseInsensitive);
    bool const encloses = LiesIn(root, directory, Qt::CaseInsensitive);
    if (inside && encloses)
        return "is";
    return inside ? "lies inside" : encloses ? "encloses" : nullptr;
}

} // namespace

QString AbsolutePath(QString const& given)
{
    if (given.isEmpty())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the path is empty"),
                      QStringLiteral("give one, such as . for the working directory"));
    QString error;
    QString const path = sync::database::AbsolutePath(given, &error);
    if (path.isNull())
        throw Failure(FailureCode::WrongUsage, OneLine(error), QStringLiteral("give an absolute path in UTF-8"));
    return QDir::cleanPath(path); // recorded paths have no "..", whatever is a link
}

Failure EmptyServerPath()
{
    return {FailureCode::WrongUsage,
            QStringLiteral("the server path is empty"),
            QStringLiteral("give a path such as /docs")};
}

QString ChildPath(QString const& folder, QString const& name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

bool LiesIn(QString const& path, QString const& folder, Qt::CaseSensitivity caseSensitivity)
{
    if (!path.startsWith(folder, caseSensitivity))
        return false;
    return path.size() == folder.size() || folder.endsWith(QLatin1Char('/')) ||
           path.at(folder.size()) == QLatin1Char('/');
}

QString ServerPathIn(FolderConfiguration const& root, QString const& path)
{
    QString const rootPath = root.getClientPath();
    if (!LiesIn(path, rootPath, Qt::CaseSensitive))
        return {};
    QString const rest = path.mid(rootPath.size());
    return rest.isEmpty() || rest.startsWith(QLatin1Char('/')) ? root.getServerPath() + rest : path;
}

std::optional<RootConflict> FindRootConflict(QString const& directory, QVector<FolderConfiguration> const& roots)
{
    QString const resolved = Resolved(directory);
    for (FolderConfiguration const& root : roots) {
        if (root.getClientPath().isEmpty())
            continue;
        QString const rootPath = QDir::cleanPath(root.getClientPath());
        char const* relation = Relation(directory, rootPath);
        if (relation == nullptr)
            relation = Relation(resolved, Resolved(rootPath));
        if (relation != nullptr)
            return RootConflict{root, relation};
    }
    return std::nullopt;
}

std::optional<FolderConfiguration>
FindRootOf(QString const& path, QVector<FolderConfiguration> const& roots, std::optional<int> accountId)
{
    for (Qt::CaseSensitivity const caseSensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        FolderConfiguration const* longest = nullptr;
        for (FolderConfiguration const& root : roots) {
            if (accountId && root.getAuthenticationId() != *accountId)
                continue;
            if (!LiesIn(path, root.getClientPath(), caseSensitivity))
                continue;
            if (longest == nullptr || root.getClientPath().size() > longest->getClientPath().size())
                longest = &root;
        }
        if (longest != nullptr)
            return *longest;
    }
    return std::nullopt;
}

} // namespace tandryctl
