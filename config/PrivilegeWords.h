#pragma once

#include "config/FolderConfiguration.h"
#include "config/ValueNames.h"

#include <QtGlobal>

class QString;

namespace sync::config {

/// The rights to folders and files, which have the same bits. Clients write the names in texts of rights.
inline constexpr NamedValue PrivilegeNames[] = {
    {0, QT_TRANSLATE_NOOP("sync::config::ValueNames", "none")},
    {FolderPrivilegeView, QT_TRANSLATE_NOOP("sync::config::ValueNames", "view")},
    {FolderPrivilegeDownload, QT_TRANSLATE_NOOP("sync::config::ValueNames", "download")},
    {FolderPrivilegeUpdate, QT_TRANSLATE_NOOP("sync::config::ValueNames", "update")},
    {FolderPrivilegeDelete, QT_TRANSLATE_NOOP("sync::config::ValueNames", "delete")},
    {FolderPrivilegeShare, QT_TRANSLATE_NOOP("sync::config::ValueNames", "share")},
};

/// Returns the rights that the words of a text name, in any case, separated by spaces. Ignores unknown words.
int PrivilegesFromWords(QString const& text);

} // namespace sync::config
