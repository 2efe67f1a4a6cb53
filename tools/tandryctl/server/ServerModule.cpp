#include "tools/tandryctl/server/ServerModule.h"

#include "postgres/PostgresDatabaseFactory.h"

using sync::database::OpenOptions;
using sync::database::PostgresDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreFactory;

namespace tandryctl {

namespace {

ServerStore Named(std::shared_ptr<PostgresDatabaseFactory> const& factory)
{
    return {factory, factory != nullptr ? factory->name() : QString()};
}

ServerStore Open(QString const& uri, OpenOptions const& options, StoreError& error)
{
    return Named(PostgresDatabaseFactory::Open(uri, error, options));
}

ServerStore OpenState(QString const& uri, StoreError& error)
{
    return Named(PostgresDatabaseFactory::OpenState(uri, error));
}

/// All stores of the module have this factory.
bool SetNotices(StoreFactory& profile, bool on)
{
    return static_cast<PostgresDatabaseFactory&>(profile).SetNotices(on);
}

} // namespace

} // namespace tandryctl

tandryctl::ServerModule TandryctlServerModule()
{
    return {PostgresDatabaseFactory::HasPassword, tandryctl::Open, tandryctl::OpenState, tandryctl::SetNotices};
}
