#pragma once

#include <QFileInfo>
#include <QString>

namespace tandry::findings {

/// Returns the path that consists of the two parts or, if it is taken, the first free one with a number between them:
/// "start-2ending".
inline QString FreePath(QString const& start, QString const& ending = {})
{
    QString path = start + ending;
    for (int number = 2; QFileInfo::exists(path) || QFileInfo(path).isSymLink(); ++number)
        path = QStringLiteral("%1-%2").arg(start).arg(number) + ending;
    return path;
}

} // namespace tandry::findings
