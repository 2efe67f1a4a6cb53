#include "tools/findings/RootRule.h"

#include "config/CommonConstants.h"

#include <QDir>

namespace tandry::findings {

using sync::config::FolderConfiguration;

QString NameOfRoot(FolderConfiguration const& root)
{
    return QStringLiteral("root %1 '%2'").arg(QString::number(root.getId()), root.getClientPath());
}

RootRule::RootRule(QString const& path, QVector<FolderConfiguration> const& roots)
{
    QString const absolute = QDir(path).absolutePath();
    isTemporary = absolute.contains(sync::config::SyncTempMarker, Qt::CaseInsensitive);
    if (isTemporary) {
        sentence = QStringLiteral("A path that contains %1 is that of a temporary file and lies in no root.")
                       .arg(sync::config::SyncTempMarker);
        return;
    }
    for (FolderConfiguration const& candidate : roots) {
        if (!_Matches(absolute, candidate))
            continue;
        root = candidate;
        hasOtherCase = !absolute.startsWith(candidate.getClientPath());
        if (hasOtherCase)
            sentence += QStringLiteral(" They differ in case, which does not matter here.");
        return;
    }
    if (sentence.isEmpty())
        sentence = roots.isEmpty() ? QStringLiteral("There are no roots.")
                                   : QStringLiteral("It does not begin with the path of any root.");
}

bool RootRule::_Matches(QString const& path, FolderConfiguration const& candidate)
{
    QString const& rootPath = candidate.getClientPath();
    QString const name = NameOfRoot(candidate);
    if (!path.startsWith(rootPath, Qt::CaseInsensitive))
        return false;
    if (path.size() == rootPath.size()) {
        sentence = QStringLiteral("It is the path of %1.").arg(name);
        return true;
    }
    if (rootPath.endsWith(QLatin1Char('/'))) {
        sentence =
            QStringLiteral("The path of %1 ends in a slash, so all paths that begin with it lie in it.").arg(name);
        return true;
    }
    if (path.at(rootPath.size()) == QLatin1Char('/')) {
        sentence = QStringLiteral("It begins with the path of %1 and a slash.").arg(name);
        return true;
    }
    sentence = QStringLiteral("It begins like the path of %1, but goes on without a slash.").arg(name);
    return false;
}

} // namespace tandry::findings
