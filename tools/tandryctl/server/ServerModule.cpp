#include "tools/tandryctl/server/ServerModule.h"

#include "postgres/PostgresDatabaseFactory.h"

using sync::database::OpenOptions;
using sync::database::PostgresDatabaseFactory;
using sync::database::StoreError;

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

} // namespace

} // namespace tandryctl

tandryctl::ServerModule TandryctlServerModule()
{
    return {PostgresDatabaseFactory::HasPassword, tandryctl::Open, tandryctl::OpenState};
}
