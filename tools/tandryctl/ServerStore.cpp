#include "ServerStore.h"

#include "Failure.h"
#include "server/ServerModule.h"

#include "database/StoreFactory.h"

#include <QCoreApplication>
#include <QLibrary>

namespace tandryctl {

using sync::database::OpenOptions;
using sync::database::StoreError;
using sync::database::StoreFactory;

namespace {

ServerModule LoadModule()
{
    QLibrary library(QCoreApplication::applicationDirPath() + QStringLiteral("/" TANDRYCTL_SERVER_MODULE));
    auto const functions = reinterpret_cast<decltype(&TandryctlServerModule)>(library.resolve("TandryctlServerModule"));
    if (functions == nullptr)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the store is on a server, and the module of tandryctl for such stores cannot be "
                                     "loaded: %1")
                          .arg(library.errorString()),
                      QStringLiteral("install the package tandryctl-postgres, or build Tandry with "
                                     "-DTANDRY_BUILD_POSTGRES=ON; or name a file"));
    return functions();
}

/// The module is loaded at the first call and stays, as stores of it do.
ServerModule const& Module()
{
    static ServerModule const module = LoadModule();
    return module;
}

} // namespace

void RefusePassword(QString const& store)
{
    if (IsOnServer(store) && Module().hasPassword(store))
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the store's URI contains a password, and every user of this machine can read "
                                     "command lines"),
                      QStringLiteral("keep the password in ~/.pgpass or in a service file, or give the URI in the "
                                     "environment variable TANDRY_STORE; then change the password"));
}

ServerStore OpenOnServer(QString const& uri, OpenOptions const& options, StoreError& error)
{
    return Module().open(uri, options, error);
}

ServerStore OpenStateOnServer(QString const& uri, StoreError& error)
{
    return Module().openState(uri, error);
}

bool SetNoticesOnServer(StoreFactory& profile, bool on)
{
    return Module().setNotices(profile, on);
}

} // namespace tandryctl
