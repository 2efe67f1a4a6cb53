#pragma once

#include "tools/tandryctl/ServerStore.h"

#include <QtGlobal>

namespace tandryctl {

/// What tandryctl calls for stores on a server. It is in a module, which is loaded for such a store alone, so that
/// nobody else needs or loads PostgreSQL.
struct ServerModule
{
    bool (*hasPassword)(QString const& uri);
    ServerStore (*open)(QString const& uri,
                        sync::database::OpenOptions const& options,
                        sync::database::StoreError& error);
    ServerStore (*openState)(QString const& uri, sync::database::StoreError& error);
    bool (*setNotices)(sync::database::StoreFactory& profile, bool on);
};

} // namespace tandryctl

/// The module's only symbol, by which it is found.
extern "C" Q_DECL_EXPORT tandryctl::ServerModule TandryctlServerModule();
