#pragma once

#include "config/FolderConfiguration.h"

#include <QString>
#include <QVector>

#include <optional>

namespace tandry::findings {

/// Which root a path lies in, and why, by the rule of `FolderConfigManager::IsInExistingClientFolder`: the first root
/// counts whose path is the beginning of the path, in any case, up to a slash.
struct RootRule
{
    RootRule(QString const& path, QVector<sync::config::FolderConfiguration> const& roots);

    /// The root that counts; nothing if the path lies in none.
    std::optional<sync::config::FolderConfiguration> root;
    /// The rule that decided, as a sentence.
    QString sentence;
    /// Whether the path is that of a temporary file, which lies in no root.
    bool isTemporary = false;
    /// Whether the path begins with the root's path only if case is ignored. Records are found by their exact path.
    bool hasOtherCase = false;

private:
    bool _Matches(QString const& path, sync::config::FolderConfiguration const& candidate);
};

/// Returns "root 3 '/home/ada'".
QString NameOfRoot(sync::config::FolderConfiguration const& root);

} // namespace tandry::findings
