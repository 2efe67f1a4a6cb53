#include "ServerStore.h"

#include "Failure.h"

#include "database/OpenOptions.h"
#include "database/StoreError.h"
#include "database/StoreFactory.h"
#ifdef TANDRYCTL_HAS_POSTGRES
#include "postgres/PostgresDatabaseFactory.h"
#endif

namespace tandryctl {

using sync::database::OpenOptions;
using sync::database::StoreError;

bool IsOnServer(QString const& store)
{
    return store.startsWith(QLatin1String("postgresql://")) || store.startsWith(QLatin1String("postgres://"));
}

#ifdef TANDRYCTL_HAS_POSTGRES

using sync::database::PostgresDatabaseFactory;

namespace {

ServerStore Named(std::shared_ptr<PostgresDatabaseFactory> const& factory)
{
    return {factory, factory != nullptr ? factory->name() : QString()};
}

} // namespace

void RefusePassword(QString const& store)
{
    if (IsOnServer(store) && PostgresDatabaseFactory::HasPassword(store))
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the store's URI contains a password, and every user of this machine can read "
                                     "command lines"),
                      QStringLiteral("keep the password in ~/.pgpass or in a service file, or give the URI in the "
                                     "environment variable TANDRY_STORE; then change the password"));
}

ServerStore OpenOnServer(QString const& uri, OpenOptions const& options, StoreError& error)
{
    return Named(PostgresDatabaseFactory::Open(uri, error, options));
}

ServerStore OpenStateOnServer(QString const& uri, StoreError& error)
{
    return Named(PostgresDatabaseFactory::OpenState(uri, error));
}

#else

namespace {

[[noreturn]] void ThrowWithoutPostgres()
{
    throw Failure(FailureCode::WrongUsage,
                  QStringLiteral("the store is on a server, and this tandryctl was built without PostgreSQL"),
                  QStringLiteral("build it with -DTANDRY_BUILD_POSTGRES=ON, or name a file"));
}

} // namespace

void RefusePassword(QString const& store)
{
    if (IsOnServer(store))
        ThrowWithoutPostgres();
}

ServerStore OpenOnServer(QString const&, OpenOptions const&, StoreError&)
{
    ThrowWithoutPostgres();
}

ServerStore OpenStateOnServer(QString const&, StoreError&)
{
    ThrowWithoutPostgres();
}

#endif

} // namespace tandryctl
