#include <tandry/config/ServerConfigManager.h>
#include <tandry/postgres/PostgresDatabaseFactory.h>

#include <QTextStream>

using sync::database::PostgresDatabaseFactory;
using sync::database::StoreError;

namespace {

int Fail(QString const& what)
{
    QTextStream(stderr) << what << '\n';
    return 1;
}

/// Adds a record to the profile that the URI names, and reads it with another factory.
int UseProfile(QString const& uri)
{
    QString error;
    sync::config::ServerConfiguration server;
    server.setAlias(QStringLiteral("Office"));
    {
        auto const store = PostgresDatabaseFactory::Open(uri, &error);
        if (!store || !sync::config::ServerConfigManager(store).Add(server))
            return Fail(QStringLiteral("the profile cannot be written to: ") + error);
    }
    auto const store = PostgresDatabaseFactory::Open(uri, &error);
    if (!store)
        return Fail(error);
    if (sync::config::ServerConfigManager(store).GetServerConfigById(server.getId()).getAlias() != server.getAlias())
        return Fail(QStringLiteral("the record is not there"));
    return 0;
}

} // namespace

/// With the URI of a profile, uses it. Without one, shows that the libraries are found and name a missing server.
int main(int argc, char** argv)
{
    if (argc == 2)
        return UseProfile(QString::fromLocal8Bit(argv[1]));
    StoreError error;
    if (PostgresDatabaseFactory::Open(QStringLiteral("postgresql:///tandry?host=/nowhere"), error) != nullptr ||
        !error.text.contains(QLatin1String("/nowhere")))
        return Fail(QStringLiteral("a server in /nowhere was found, or the error is another one: ") + error.text);
    return 0;
}
