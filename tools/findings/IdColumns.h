#pragma once

#include "tools/findings/TableNames.h"

namespace tandry::findings {

/// A column that names a row of another table by its id, in whatever table it stands.
struct IdColumn
{
    char const* column;
    char const* target;
};

constexpr IdColumn IdColumns[] = {
    {"serverId", Servers},
    {"authenticationId", Accounts},
    {"productConfigurationId", Products},
    {"folderConfigurationId", Folders},
    {"parentId", Folders},
    {"rootId", Folders},
    {"rootFolderId", Folders},
    {"parentFileId", Files},
};

} // namespace tandry::findings
